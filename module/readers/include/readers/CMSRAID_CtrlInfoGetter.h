#pragma once

#include "report/CMSRAID_InfoGetter.h"

/// Reads the controller report, "vdkcli -ctrlinfo -a0":
///
///     RAID Controller : 0
///     ### General Information ###
///     Product Name      : RAID 8i
///
/// One tree per controller: the root, its titles, their keys. The controller's number becomes the key
/// "Controller No." below the General Information title; two keys that older tools print get their present
/// names; keys that the firmware and settings sections always carry are supplied where the report lacks them.
class CMSRAID_CtrlInfoGetter final : public CMSRAID_InfoGetter {
  public:
    CMSRAID_CtrlInfoGetter();
    ~CMSRAID_CtrlInfoGetter() override;

    /// Counts the server's controllers. Only the count's low eight bits are stored, and only on success.
    [[nodiscard]] ResultCode GetCtrlNum(char* count);

  protected:
    ResultCode CreateRAIDItem(std::ifstream& in, std::string line) override;
    void AddRootItem() override;

    /// Leaves the cells in place; they become null.
    void FreeItemList() override;

  private:
    static const std::string CTRL_INFO_ROOT_NAME;
    static const std::string CTRL_RECON_RATE_NAME;
    static const std::string CTRL_CC_RATE_NAME;
    static const std::string CTRL_FIRM_PACK_VER_NAME;
    static const std::string CTRL_FIRM_VER_NAME;
    static const std::string CTRL_FIRM_BUILD_TIME_NAME;
    static const std::string CTRL_FIRM_TITLE_NAME;
    static const std::string CTRL_SETINFO_TITLE_NAME;
    static const std::string CTRL_NO_NAME;
    static const std::string CTRL_SUBVEN_ID_OLD_NAME;
    static const std::string CTRL_SUBVEN_ID_NAME;
    static const std::string CTRL_SUBSYS_ID_OLD_NAME;
    static const std::string CTRL_SUBSYS_ID_NAME;

    [[nodiscard]] static bool IsControllerLine(const std::string& line);

    ResultCode ReadKeyLine(std::ifstream& in, std::string line);
    ResultCode ReadTitle(std::ifstream& in, const std::string& line);
    ResultCode ParseCtrlNo(std::ifstream& in, std::string line);
    ResultCode ParseSettingInfo(std::ifstream& in, std::string title);
    ResultCode ParseFirmwareInfo(std::ifstream& in, std::string title);

    /// The "Controller No." item from its line to the General Information title behind which it belongs.
    ItemList m_CtrlNoItemList;
};

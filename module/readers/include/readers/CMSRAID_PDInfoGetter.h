#pragma once

#include "report/CMSRAID_InfoGetter.h"

#include <map>
#include <string>

/// Reads the physical-drive report, "vdkcli -pdinfo -a0", one tree per drive:
///
///     PD3(LD1)                      drive name and membership: LDn, GHS, RLD, DHS RGn or anything else
///     ### General Information ###
///     PD Status : ONLINE            becomes "PD Status" (NO ERROR) and "PD Status(Detail)" (ONLINE)
///
///     ### Slot Information ###      shown as "### Enclosure Properties Information ###"
///     Slot No. : 3
///
///     ### SMART Information ###     dropped up to the next drive
///
/// The RAID group of a drive that belongs to a logical drive comes from the logical-drive report, which is
/// run first.
class CMSRAID_PDInfoGetter : public CMSRAID_InfoGetter {
  public:
    /// For a derived reader with a command of its own.
    CMSRAID_PDInfoGetter();

    /// Takes the tool's version: two parts of which the first is 4 or more ("4.1") can leave SMART data out.
    explicit CMSRAID_PDInfoGetter(std::string version);
    ~CMSRAID_PDInfoGetter() override;

    ResultCode GetInfo(long ctrlNo, CMSRAID_MngLib* lib, ItemList& items) override;

  protected:
    ResultCode CreateRAIDItem(std::ifstream& in, std::string line) override;
    void AddRootItem() override;
    void FreeItemList() override;

    /// What becomes of the SMART section: here it is skipped, title and all.
    virtual ResultCode ParseSMARTInfo(std::ifstream& in, std::string line);

    static const std::string PD_INFO_ROOT_NAME;
    static const std::string PDLD_NO_NAME_HEAD;
    static const std::string PD_STAT_NAME_HEAD;  // the tool's key; the same text as PD_STAT_BASIC_NAME
    static const std::string PD_TEMPERATURE_NAME;
    static const std::string PD_ENCL_ID_NAME;
    static const std::string PD_STAT_BASIC_NAME;
    static const std::string PD_STAT_DETAIL_NAME;
    static const std::string SLOT_INFO_TITLE_NAME;
    static const std::string ENCL_PROP_TITLE_NAME;
    static const std::string SMART_INFO_TITLE_NAME;
    static const std::string PD_STAT_D_ONLINE;
    static const std::string PD_STAT_D_COPYBACK;
    static const std::string PD_STAT_D_UNCONFIG_GOOD;
    static const std::string PD_STAT_D_HOT_SPARE;
    static const std::string PD_STAT_D_OFFLINE;
    static const std::string PD_STAT_D_UNCONFIG_BAD;
    static const std::string PD_STAT_D_FAILED;
    static const std::string PD_STAT_D_REBUILD;
    static const std::string PD_STAT_B_NO_ERROR;
    static const std::string PD_STAT_B_ERROR;
    static const std::string PD_STAT_B_REBUILD;
    static const std::string PD_STAT_B_UNKNOWN;
    static const std::string PD_PD_NO_NAME;
    static const std::string PD_TYPE_LD;
    static const std::string PD_TYPE_GHS;
    static const std::string PD_TYPE_DHS;
    static const std::string PD_TYPE_RLD;
    static const std::string PD_IFTYPE_NAME;
    static const std::string PD_IFTYPE_SAS;
    static const std::string PD_IFTYPE_SATA;
    static const std::string PD_POWER_STAT_NAME;

    std::string m_IFType;  ///< the last "Interface Type" read

  private:
    [[nodiscard]] static const std::string& BasicStatus(const std::string& detail);

    ResultCode ReadTitle(std::ifstream& in, const std::string& line);
    ResultCode ParsePDLDNo(std::ifstream& in, std::string line);
    ResultCode ParseGeneralnfo(std::ifstream& in, std::string line);
    ResultCode ParseSlotInfo(std::ifstream& in, std::string line);
    ResultCode ParsePDStatus(std::ifstream& in, std::string line);

    ResultCode HoldMembership(const std::string& line, const std::string& drive,
                              const std::string& membership);
    ResultCode HoldLDMember(const std::string& line, const std::string& drive, const std::string& membership);
    ResultCode HoldDedicatedSpare(const std::string& line, const std::string& membership);
    ResultCode HoldInGeneral(const std::string& name, const std::string& value);
    void DropSMARTTitle();

    ItemList m_PDNoItemList;  ///< what the drive's header tells, until its General Information title
    std::map<long, std::string> m_MapRGNo;
};

#pragma once

#include "report/CMSRAID_InfoGetter.h"

#include <map>
#include <string>
#include <string_view>

/// Reads the logical-drive report, "vdkcli -ldpdinfo -a0", of RAID groups, their logical drives and their
/// members:
///
///     RG0
///     RG No.            : 0
///     >LD0(system, 558 GB, Optimal)
///     >>PD3(3, Online)
///
///     ### General Information ###
///     # of PD           : 2
///
/// One tree per group. The group's keys and its LD list are printed before the General Information title
/// behind which they belong and are held until it comes; "Access Policy" moves to the LD Settings section the
/// same way.
class CMSRAID_LDInfoGetter final : public CMSRAID_InfoGetter {
  public:
    CMSRAID_LDInfoGetter();
    ~CMSRAID_LDInfoGetter() override;

    /// Runs the same report for its members alone: adds, per physical-drive number as printed behind ">>PD",
    /// the text behind "RG No." of the first group that names the drive.
    [[nodiscard]] ResultCode GetPDRGNo(long controller, std::map<long, std::string>* rgNoMap);

  protected:
    ResultCode CreateRAIDItem(std::ifstream& in, std::string line) override;
    void AddRootItem() override;
    void FreeItemList() override;

  private:
    static const std::string LD_INFO_ROOT_NAME;
    static const std::string LD_LDLIST_NAME_HEAD;
    static const std::string LD_PDLIST_NAME_HEAD;
    static const std::string LD_ASSOC_CACHE_NAME;
    static const std::string PD_NUM_NAME;
    static const std::string LD_STRIPE_SIZE_NAME;
    static const std::string LD_LIST_TITLE_NAME;
    static const std::string LD_PDLIST_TITLE_NAME;
    static const std::string LD_NAME_NAME;
    static const std::string LD_CAPACITY_NAME;
    static const std::string LD_STATE_NAME;
    static const std::string LD_ACCESS_POLICY_NAME;
    static const std::string LD_SET_INFO_TITLE_NAME;

    [[nodiscard]] static bool IsGroupLine(const std::string& line);

    ResultCode ReadBodyLine(std::ifstream& in, std::string line);
    ResultCode ReadTitle(std::ifstream& in, std::string line);

    // The lower-case l and the missing I of two of these names are meant; the trace shows them.
    ResultCode ParseLDList(std::ifstream& in, std::string line);
    ResultCode ParseAssocLD(std::ifstream& in, std::string line);
    ResultCode ParsePDList(std::ifstream& in, std::string line);
    ResultCode ParseRAIDlnfo(std::ifstream& in, std::string line);
    ResultCode ParseGeneralnfo(std::ifstream& in, std::string line);

    ResultCode ReadMemberDrive(std::ifstream& in, const std::string& line);
    ResultCode HoldAccessPolicy();
    ResultCode AddCachePlaceholders(ItemList::const_iterator stripeSizePlace);

    /// Reads "name, capacity, state)" into items below `parentName`, as far as the text goes.
    ResultCode AddLDFields(ItemList& list, const std::string& parentName, std::string_view fields);

    ResultCode AddTrimmed(ItemList& list, const std::string& parentName, const std::string& name,
                          std::string_view value);
    void ReadGroupOfDrive(std::string line, std::string& group, std::map<long, std::string>& rgNoMap);

    ItemList m_RGItemList;      ///< the group's keys, until its General Information title
    ItemList m_LDListItemList;  ///< its LD list, until the same title
    ItemList m_LDSetItemList;   ///< "Access Policy", until its LD Settings title
};

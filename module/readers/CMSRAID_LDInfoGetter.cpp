#include "readers/CMSRAID_LDInfoGetter.h"

#include "report/DecimalDigit.h"

#include "qel/CStringUtil.h"

#include <iterator>
#include <utility>

using msraid::IsDigitAt;
using msraid::kCategory;
using msraid::kFailure;
using msraid::kGeneralFailure;
using msraid::kSuccess;
using msraid::OperationTrace;
using msraid::Validity;

const std::string CMSRAID_LDInfoGetter::LD_INFO_ROOT_NAME = "Logical Drive Information";
const std::string CMSRAID_LDInfoGetter::LD_LDLIST_NAME_HEAD = ">LD";
const std::string CMSRAID_LDInfoGetter::LD_PDLIST_NAME_HEAD = ">>PD";
const std::string CMSRAID_LDInfoGetter::LD_ASSOC_CACHE_NAME = "Associated CacheCade LD";
const std::string CMSRAID_LDInfoGetter::PD_NUM_NAME = "# of PD";
const std::string CMSRAID_LDInfoGetter::LD_STRIPE_SIZE_NAME = "Stripe Size";
const std::string CMSRAID_LDInfoGetter::LD_LIST_TITLE_NAME = "LD List";
const std::string CMSRAID_LDInfoGetter::LD_PDLIST_TITLE_NAME = "PD List";
const std::string CMSRAID_LDInfoGetter::LD_NAME_NAME = "Name";
const std::string CMSRAID_LDInfoGetter::LD_CAPACITY_NAME = "Capacity";
const std::string CMSRAID_LDInfoGetter::LD_STATE_NAME = "State";
const std::string CMSRAID_LDInfoGetter::LD_ACCESS_POLICY_NAME = "Access Policy";
const std::string CMSRAID_LDInfoGetter::LD_SET_INFO_TITLE_NAME = "### LD Settings Information ###";

CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter() {
    const OperationTrace operation("CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter");
    m_CmdFormat = "vdkcli -ldpdinfo -a%s";
}

CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter() {
    const OperationTrace operation("CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter", std::nothrow);
    DropHeldItems(m_RGItemList);
    DropHeldItems(m_LDListItemList);
    DropHeldItems(m_LDSetItemList);
}

bool CMSRAID_LDInfoGetter::IsGroupLine(const std::string& line) {
    return (line.starts_with(RG_NO_HEAD) && IsDigitAt(line, RG_NO_HEAD.size())) ||
           (line.starts_with(CACHE_RG_NO_HEAD) && IsDigitAt(line, CACHE_RG_NO_HEAD.size()));
}

ResultCode CMSRAID_LDInfoGetter::CreateRAIDItem(std::ifstream& in, std::string line) {
    const OperationTrace operation("CMSRAID_LDInfoGetter::CreateRAIDItem");
    if (IsGroupLine(line)) {
        AddRootItem();
        return m_CurrentRoot.IsNull() ? kGeneralFailure : ParseRAIDlnfo(in, line);
    }
    if (line.starts_with(CTRL_NO_NAME_HEAD) && line.find(':') != std::string::npos) {
        return kSuccess;
    }
    return line.starts_with(TITLE_BEGIN_NAME) ? ReadTitle(in, line) : ReadBodyLine(in, std::move(line));
}

ResultCode CMSRAID_LDInfoGetter::ReadBodyLine(std::ifstream& in, std::string line) {
    if (line.find(LD_LDLIST_NAME_HEAD) != std::string::npos) {
        return ParseLDList(in, line);
    }
    if (line.find(LD_PDLIST_NAME_HEAD) != std::string::npos) {
        return ParsePDList(in, line);
    }
    return IsKeyLine(line) ? ParseKeyValue(in, std::move(line), m_ItemList) : kSuccess;
}

ResultCode CMSRAID_LDInfoGetter::ReadTitle(std::ifstream& in, std::string line) {
    CStringUtil::strReplace(line, "\t", " ");
    const ResultCode result = ParseTitle(in, line);
    if (result != kSuccess) {
        return result;
    }
    const std::string& title = m_ItemList.back()->m_Name;
    if (title == GENERAL_INFO_TITLE_NAME) {
        return ParseGeneralnfo(in, title);
    }
    if (title == LD_SET_INFO_TITLE_NAME) {
        ReleaseHeldItems(m_LDSetItemList);
    }
    return kSuccess;
}

void CMSRAID_LDInfoGetter::AddRootItem() {
    const OperationTrace operation("CMSRAID_LDInfoGetter::AddRootItem");
    StartRoot(LD_INFO_ROOT_NAME);
}

void CMSRAID_LDInfoGetter::FreeItemList() {
    const OperationTrace operation("CMSRAID_LDInfoGetter::FreeItemList");
    for (ItemList* const held : {&m_RGItemList, &m_LDListItemList, &m_LDSetItemList}) {
        msraid::DeleteItems(m_pMngLib, *held);
        held->clear();
    }
}

ResultCode CMSRAID_LDInfoGetter::ParseRAIDlnfo(std::ifstream& in, std::string line) {
    const OperationTrace operation("CMSRAID_LDInfoGetter::ParseRAIDlnfo", line);
    if (!in.good()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Invalid Arg.");
        return kGeneralFailure;
    }
    std::string lineAsRead;
    while (std::getline(in, lineAsRead)) {
        line = lineAsRead;
        Trim(line);
        if (line.empty()) {
            break;
        }
        if (!IsKeyLine(line)) {
            PutBack(in, lineAsRead);
            break;
        }
        const ResultCode result = AddKeyItem(in, line, m_RGItemList);
        if (result != kSuccess) {
            return result;
        }
        m_RGItemList.back()->m_ParentName = GENERAL_INFO_TITLE_NAME;
    }
    return kSuccess;
}

ResultCode CMSRAID_LDInfoGetter::ParseLDList(std::ifstream& /*in*/, std::string line) {
    const OperationTrace operation("CMSRAID_LDInfoGetter::ParseLDList", line);
    ResultCode result =
        InsertItem(m_LDListItemList, m_LDListItemList.end(), GENERAL_INFO_TITLE_NAME, LD_LIST_TITLE_NAME, "");
    const std::size_t bracket = line.find('(');
    if (result != kSuccess || bracket == std::string::npos) {
        return result;
    }
    const std::string_view text = line;
    if (bracket > LD_LDLIST_NAME_HEAD.size()) {
        result = AddTrimmed(m_LDListItemList, LD_LIST_TITLE_NAME, LD_NO_NAME, text.substr(1, bracket - 1));
    }
    return result != kSuccess ? result
                              : AddLDFields(m_LDListItemList, LD_LIST_TITLE_NAME, text.substr(bracket + 1));
}

ResultCode CMSRAID_LDInfoGetter::AddLDFields(ItemList& list, const std::string& parentName,
                                             std::string_view fields) {
    for (const std::string* const name : {&LD_NAME_NAME, &LD_CAPACITY_NAME}) {
        const std::size_t comma = fields.find(',');
        if (comma == std::string_view::npos) {
            return kSuccess;
        }
        const ResultCode result = AddTrimmed(list, parentName, *name, fields.substr(0, comma));
        if (result != kSuccess) {
            return result;
        }
        fields.remove_prefix(comma + 1);
    }
    if (fields.empty()) {
        return kSuccess;
    }
    std::size_t end = fields.find(',');
    if (end == std::string_view::npos) {
        end = fields.find(')');
    }
    return AddTrimmed(list, parentName, LD_STATE_NAME, fields.substr(0, end));
}

ResultCode CMSRAID_LDInfoGetter::AddTrimmed(ItemList& list, const std::string& parentName,
                                            const std::string& name, std::string_view value) {
    std::string trimmed(value);
    Trim(trimmed);
    return InsertItem(list, list.end(), parentName, name, trimmed);
}

ResultCode CMSRAID_LDInfoGetter::ParsePDList(std::ifstream& in, std::string line) {
    // Meant: the trace names the reader of the LD list here too.
    const OperationTrace operation("CMSRAID_LDInfoGetter::ParseLDList", line);
    if (!in.good()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Invalid Arg.");
        return kGeneralFailure;
    }
    const ResultCode result =
        InsertItem(m_ItemList, m_ItemList.end(), m_CurrentParent.Name(), LD_PDLIST_TITLE_NAME, "");
    if (result != kSuccess) {
        return result;
    }
    const ItemPosition outerParent = m_CurrentParent;
    m_CurrentParent = ItemPosition(std::prev(m_ItemList.end()));
    const ResultCode memberResult = ReadMemberDrive(in, line);
    m_CurrentParent = outerParent;
    return memberResult;
}

ResultCode CMSRAID_LDInfoGetter::ReadMemberDrive(std::ifstream& in, const std::string& line) {
    const std::size_t bracket = line.find('(');
    if (bracket != std::string::npos && bracket > LD_PDLIST_NAME_HEAD.size()) {
        const std::string_view number = std::string_view(line).substr(2, bracket - 2);
        const ResultCode result = AddTrimmed(m_ItemList, LD_PDLIST_TITLE_NAME, PD_NO_NAME, number);
        if (result != kSuccess) {
            return result;
        }
    }
    return ReadKeyLines(in, [](const CItemDisp& /*item*/) { return kSuccess; });
}

ResultCode CMSRAID_LDInfoGetter::ParseGeneralnfo(std::ifstream& in, std::string line) {
    const OperationTrace operation("CMSRAID_LDInfoGetter::ParseGeneralnfo");
    if (!in.good()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Invalid Arg.");
        return kGeneralFailure;
    }
    ReleaseHeldItems(m_RGItemList);
    ReleaseHeldItems(m_LDListItemList);
    auto stripeSizePlace = m_ItemList.end();
    while (ReadSectionLine(in, line)) {
        if (line.starts_with(LD_ASSOC_CACHE_NAME)) {
            const ResultCode result = ParseAssocLD(in, line);
            if (result != kSuccess) {
                CTraceUtility::WriteDebug(kCategory, kFailure, "ParseAssocLD is FAILED (hr=%08x).", result);
                return result;
            }
            return AddCachePlaceholders(stripeSizePlace);
        }
        if (!IsKeyLine(line)) {
            continue;
        }
        ResultCode result = AddKeyItem(in, line, m_ItemList);
        if (result == kSuccess && m_ItemList.back()->m_Name == PD_NUM_NAME) {
            stripeSizePlace = std::prev(m_ItemList.end());
        } else if (result == kSuccess && m_ItemList.back()->m_Name == LD_ACCESS_POLICY_NAME) {
            result = HoldAccessPolicy();
        }
        if (result != kSuccess) {
            return result;
        }
    }
    return InsertPlaceholder(m_ItemList.end(), LD_ASSOC_CACHE_NAME);
}

// The key belongs to the settings section, whose title the report prints later.
ResultCode CMSRAID_LDInfoGetter::HoldAccessPolicy() {
    CItemDisp* const asRead = m_ItemList.back();
    const ResultCode result = InsertItem(m_LDSetItemList, m_LDSetItemList.end(), LD_SET_INFO_TITLE_NAME,
                                         LD_ACCESS_POLICY_NAME, asRead->m_Value);
    if (result == kSuccess) {
        m_ItemList.pop_back();
        msraid::DeleteItem(m_pMngLib, asRead);
    }
    return result;
}

// A group that is cached has neither key in its report. Meant: in front of "# of PD", not behind it.
ResultCode CMSRAID_LDInfoGetter::AddCachePlaceholders(ItemList::const_iterator stripeSizePlace) {
    const ResultCode result = InsertPlaceholder(stripeSizePlace, LD_STRIPE_SIZE_NAME);
    return result != kSuccess ? result
                              : InsertItem(m_LDSetItemList, m_LDSetItemList.end(), LD_SET_INFO_TITLE_NAME,
                                           LD_ACCESS_POLICY_NAME, "", Validity::Placeholder);
}

ResultCode CMSRAID_LDInfoGetter::ParseAssocLD(std::ifstream& in, std::string line) {
    const OperationTrace operation("CMSRAID_LDInfoGetter::ParseAssocLD");
    if (!in.good()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Invalid Arg.");
        return kGeneralFailure;
    }
    while (ReadSectionLine(in, line)) {
        ResultCode result =
            InsertItem(m_ItemList, m_ItemList.end(), m_CurrentParent.Name(), LD_ASSOC_CACHE_NAME, "");
        const std::size_t bracket = line.find('(');
        if (result == kSuccess && bracket != std::string::npos) {
            const std::string_view text = line;
            result = AddTrimmed(m_ItemList, LD_ASSOC_CACHE_NAME, LD_NO_NAME, text.substr(0, bracket));
            if (result == kSuccess) {
                result = AddLDFields(m_ItemList, LD_ASSOC_CACHE_NAME, text.substr(bracket + 1));
            }
        }
        if (result != kSuccess) {
            return result;
        }
    }
    return kSuccess;
}

ResultCode CMSRAID_LDInfoGetter::GetPDRGNo(long controller, std::map<long, std::string>* rgNoMap) {
    const OperationTrace operation("CMSRAID_LDInfoGetter::GetPDRGNo");
    return ReadReport(CStringUtil::NumberToTString(controller),
                      [this, rgNoMap](std::ifstream& file, const std::string& /*path*/) {
                          std::string group;
                          std::string line;
                          while (std::getline(file, line)) {
                              ReadGroupOfDrive(line, group, *rgNoMap);
                          }
                          return kSuccess;
                      });
}

void CMSRAID_LDInfoGetter::ReadGroupOfDrive(std::string line, std::string& group,
                                            std::map<long, std::string>& rgNoMap) {
    Trim(line);
    const std::size_t colon = line.find(':');
    if (line.starts_with(RG_NO_NAME) && colon != std::string::npos) {
        group = line.substr(colon + 1);
        Trim(group);
        return;
    }
    const std::size_t bracket = line.find('(');
    if (!line.starts_with(LD_PDLIST_NAME_HEAD) || bracket == std::string::npos || group.empty()) {
        return;
    }
    std::string number = line.substr(LD_PDLIST_NAME_HEAD.size(), bracket - LD_PDLIST_NAME_HEAD.size());
    Trim(number);
    rgNoMap.try_emplace(CStringUtil::TStringToNumber(number), group);  // The first group of a drive wins.
}

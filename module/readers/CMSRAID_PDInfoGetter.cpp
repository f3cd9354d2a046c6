#include "readers/CMSRAID_PDInfoGetter.h"

#include "readers/CMSRAID_LDInfoGetter.h"
#include "report/DecimalDigit.h"

#include "qel/CStringUtil.h"

#include <cstdlib>
#include <iterator>
#include <optional>
#include <vector>

using msraid::IsDigitAt;
using msraid::kCategory;
using msraid::kFailure;
using msraid::kGeneralFailure;
using msraid::kResult;
using msraid::kSuccess;
using msraid::OperationTrace;

const std::string CMSRAID_PDInfoGetter::PD_INFO_ROOT_NAME = "Physical Drive Information";
const std::string CMSRAID_PDInfoGetter::PDLD_NO_NAME_HEAD = "PD";
const std::string CMSRAID_PDInfoGetter::PD_STAT_NAME_HEAD = "PD Status";
const std::string CMSRAID_PDInfoGetter::PD_TEMPERATURE_NAME = "Temperature";
const std::string CMSRAID_PDInfoGetter::PD_ENCL_ID_NAME = "Enclosure ID";
const std::string CMSRAID_PDInfoGetter::PD_STAT_BASIC_NAME = "PD Status";
const std::string CMSRAID_PDInfoGetter::PD_STAT_DETAIL_NAME = "PD Status(Detail)";
const std::string CMSRAID_PDInfoGetter::SLOT_INFO_TITLE_NAME = "### Slot Information ###";
const std::string CMSRAID_PDInfoGetter::ENCL_PROP_TITLE_NAME = "### Enclosure Properties Information ###";
const std::string CMSRAID_PDInfoGetter::SMART_INFO_TITLE_NAME = "### SMART Information ###";
const std::string CMSRAID_PDInfoGetter::PD_STAT_D_ONLINE = "ONLINE";
const std::string CMSRAID_PDInfoGetter::PD_STAT_D_COPYBACK = "COPYBACK";
const std::string CMSRAID_PDInfoGetter::PD_STAT_D_UNCONFIG_GOOD = "Unconfig GOOD";
const std::string CMSRAID_PDInfoGetter::PD_STAT_D_HOT_SPARE = "HOT SPARE";
const std::string CMSRAID_PDInfoGetter::PD_STAT_D_OFFLINE = "OFFLINE";
const std::string CMSRAID_PDInfoGetter::PD_STAT_D_UNCONFIG_BAD = "Unconfig BAD";
const std::string CMSRAID_PDInfoGetter::PD_STAT_D_FAILED = "FAILED";
const std::string CMSRAID_PDInfoGetter::PD_STAT_D_REBUILD = "REBUILD";
const std::string CMSRAID_PDInfoGetter::PD_STAT_B_NO_ERROR = "NO ERROR";
const std::string CMSRAID_PDInfoGetter::PD_STAT_B_ERROR = "ERROR";
const std::string CMSRAID_PDInfoGetter::PD_STAT_B_REBUILD = "REBUILD";
const std::string CMSRAID_PDInfoGetter::PD_STAT_B_UNKNOWN = "UNKNOWN";
const std::string CMSRAID_PDInfoGetter::PD_PD_NO_NAME = "PD No.";
const std::string CMSRAID_PDInfoGetter::PD_TYPE_LD = "LD";
const std::string CMSRAID_PDInfoGetter::PD_TYPE_GHS = "GHS";
const std::string CMSRAID_PDInfoGetter::PD_TYPE_DHS = "DHS";
const std::string CMSRAID_PDInfoGetter::PD_TYPE_RLD = "RLD";
const std::string CMSRAID_PDInfoGetter::PD_IFTYPE_NAME = "Interface Type";
const std::string CMSRAID_PDInfoGetter::PD_IFTYPE_SAS = "SAS";
const std::string CMSRAID_PDInfoGetter::PD_IFTYPE_SATA = "SATA";
const std::string CMSRAID_PDInfoGetter::PD_POWER_STAT_NAME = "Power Status";

namespace {

constexpr int kDecimal = 10;
constexpr long kFirstVersionWithoutSMART = 4;
constexpr const char* kNoGroup = "-";
constexpr const char* kNoLogicalDrive = "None";

bool CanLeaveSMARTOut(const std::string& version) {
    std::vector<std::string> parts;
    CStringUtil::SplitByDot(version, parts);
    return parts.size() == 2 &&
           std::strtol(parts.front().c_str(), nullptr, kDecimal) >= kFirstVersionWithoutSMART;
}

}  // namespace

CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter() {
    const OperationTrace operation("CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter");
}

CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter(std::string version) {
    const OperationTrace operation("CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter");
    CTraceUtility::WriteDebug(kCategory, kResult, "VDK Version is %s.", version.c_str());
    m_CmdFormat = CanLeaveSMARTOut(version) ? "vdkcli -pdinfo -nosmart -a%s" : "vdkcli -pdinfo -a%s";
}

CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter() {
    const OperationTrace operation("CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter", std::nothrow);
    DropHeldItems(m_PDNoItemList);
}

ResultCode CMSRAID_PDInfoGetter::GetInfo(long ctrlNo, CMSRAID_MngLib* lib, ItemList& items) {
    std::optional<OperationTrace> operation("CMSRAID_PDInfoGetter::GetInfo");
    m_MapRGNo.clear();
    CMSRAID_LDInfoGetter groups;
    ResultCode result = groups.GetPDRGNo(ctrlNo, &m_MapRGNo);
    if (result == kSuccess) {
        result = CMSRAID_InfoGetter::GetInfo(ctrlNo, lib, items);
    } else {
        CTraceUtility::WriteDebug(kCategory, kFailure, "CMSRAID_LDInfoGetter::GetPDRGNo is FAILED (hr=%08x).",
                                  result);
        m_Reason = groups.GetReason();
    }
    operation.reset();  // The reader outlives the end line.
    return result;
}

ResultCode CMSRAID_PDInfoGetter::CreateRAIDItem(std::ifstream& in, std::string line) {
    if (line.starts_with(PDLD_NO_NAME_HEAD) && IsDigitAt(line, PDLD_NO_NAME_HEAD.size())) {
        AddRootItem();
        return m_CurrentRoot.IsNull() ? kGeneralFailure : ParsePDLDNo(in, line);
    }
    if (line.starts_with(CTRL_NO_NAME_HEAD) && IsKeyLine(line)) {
        return ParseKeyValue(in, line, m_ItemList);
    }
    return line.starts_with(TITLE_BEGIN_NAME) ? ReadTitle(in, line) : kSuccess;
}

ResultCode CMSRAID_PDInfoGetter::ReadTitle(std::ifstream& in, const std::string& line) {
    const ResultCode result = ParseTitle(in, line);
    if (result != kSuccess) {
        return result;
    }
    std::string& title = m_ItemList.back()->m_Name;
    if (title == GENERAL_INFO_TITLE_NAME) {
        return ParseGeneralnfo(in, line);
    }
    if (title == SLOT_INFO_TITLE_NAME) {
        title = ENCL_PROP_TITLE_NAME;
        return ParseSlotInfo(in, line);
    }
    if (title.starts_with(SMART_INFO_TITLE_NAME)) {
        return ParseSMARTInfo(in, line);
    }
    return kSuccess;
}

void CMSRAID_PDInfoGetter::AddRootItem() {
    const OperationTrace operation("CMSRAID_PDInfoGetter::AddRootItem");
    StartRoot(PD_INFO_ROOT_NAME);
}

void CMSRAID_PDInfoGetter::FreeItemList() {
    const OperationTrace operation("CMSRAID_PDInfoGetter::FreeItemList");
    msraid::DeleteItems(m_pMngLib, m_PDNoItemList);
    m_PDNoItemList.clear();
}

ResultCode CMSRAID_PDInfoGetter::ParsePDLDNo(std::ifstream& /*in*/, std::string line) {
    const OperationTrace operation("CMSRAID_PDInfoGetter::ParsePDLDNo", line);
    std::string header = line;
    Trim(header);
    const std::size_t bracket = header.find('(');
    if (bracket == std::string::npos || bracket <= PDLD_NO_NAME_HEAD.size()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "ParsePDLDNo format error.(%s)", line.c_str());
        return kGeneralFailure;
    }
    std::string drive = header.substr(0, bracket);
    Trim(drive);
    const ResultCode result = HoldInGeneral(PD_PD_NO_NAME, drive);
    return result != kSuccess ? result : HoldMembership(line, drive, header.substr(bracket + 1));
}

ResultCode CMSRAID_PDInfoGetter::HoldMembership(const std::string& line, const std::string& drive,
                                                const std::string& membership) {
    if (membership.empty()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "ParsePDLDNo format error.(%s)", line.c_str());
        return kGeneralFailure;
    }
    if (membership.starts_with(PD_TYPE_LD)) {
        return HoldLDMember(line, drive, membership);
    }
    for (const std::string* const type : {&PD_TYPE_GHS, &PD_TYPE_RLD}) {
        if (membership.starts_with(*type)) {
            const ResultCode result = HoldInGeneral(RG_NO_NAME, kNoGroup);
            return result != kSuccess ? result : HoldInGeneral(LD_NO_NAME, *type);
        }
    }
    if (membership.starts_with(PD_TYPE_DHS)) {
        return HoldDedicatedSpare(line, membership);
    }
    // Meant: only here the logical drive comes before the group.
    const ResultCode result = HoldInGeneral(LD_NO_NAME, kNoLogicalDrive);
    return result != kSuccess ? result : HoldInGeneral(RG_NO_NAME, kNoGroup);
}

ResultCode CMSRAID_PDInfoGetter::HoldLDMember(const std::string& line, const std::string& drive,
                                              const std::string& membership) {
    const auto group = m_MapRGNo.find(CStringUtil::TStringToNumber(drive.substr(PDLD_NO_NAME_HEAD.size())));
    if (group == m_MapRGNo.end()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "m_MapRGNo search error.(%s)", line.c_str());
    }
    const ResultCode result = HoldInGeneral(RG_NO_NAME, group == m_MapRGNo.end() ? kNoGroup : group->second);
    if (result != kSuccess) {
        return result;
    }
    const std::size_t bracket = membership.find(')');
    if (bracket == std::string::npos) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "ParsePDLDNo format error.(%s)", line.c_str());
        return kGeneralFailure;
    }
    return HoldInGeneral(LD_NO_NAME, membership.substr(0, bracket));
}

ResultCode CMSRAID_PDInfoGetter::HoldDedicatedSpare(const std::string& line, const std::string& membership) {
    const std::size_t group = membership.find(RG_NO_HEAD);
    if (group == std::string::npos) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "ParsePDLDNo is FAILED.(%s)", line.c_str());
        HoldInGeneral(LD_NO_NAME, PD_TYPE_DHS);  // Failed already; the item only goes where the others go.
        return kGeneralFailure;
    }
    // Meant: the last character is dropped whatever it is; in a whole header it is the bracket.
    std::string groupName = membership.substr(group, membership.size() - 1 - group);
    Trim(groupName);
    const ResultCode result = HoldInGeneral(RG_NO_NAME, groupName);
    return result != kSuccess ? result : HoldInGeneral(LD_NO_NAME, PD_TYPE_DHS);
}

ResultCode CMSRAID_PDInfoGetter::HoldInGeneral(const std::string& name, const std::string& value) {
    return InsertItem(m_PDNoItemList, m_PDNoItemList.end(), GENERAL_INFO_TITLE_NAME, name, value);
}

ResultCode CMSRAID_PDInfoGetter::ParseGeneralnfo(std::ifstream& in, std::string line) {
    const OperationTrace operation("CMSRAID_PDInfoGetter::ParseGeneralnfo");
    if (in.fail()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Invalid Arg.");
        return kGeneralFailure;
    }
    ReleaseHeldItems(m_PDNoItemList);
    bool hasTemperature = false;
    auto temperaturePlace = m_ItemList.end();
    const ResultCode result = ReadKeyLines(in, [&](const CItemDisp& item) {
        if (item.m_Name == PD_TEMPERATURE_NAME) {
            hasTemperature = true;
        } else if (item.m_Name == PD_POWER_STAT_NAME) {
            temperaturePlace = std::prev(m_ItemList.end());
        } else if (item.m_Name == PD_IFTYPE_NAME) {
            m_IFType = item.m_Value;
        } else if (item.m_Name == PD_STAT_NAME_HEAD) {
            const ResultCode statusResult = ParsePDStatus(in, line);
            if (statusResult != kSuccess) {
                CTraceUtility::WriteDebug(kCategory, kFailure, "ParsePDStatus is FAILED (hr=%08x).",
                                          statusResult);
            }
            return statusResult;
        }
        return kSuccess;
    });
    return result != kSuccess || hasTemperature ? result
                                                : InsertPlaceholder(temperaturePlace, PD_TEMPERATURE_NAME);
}

ResultCode CMSRAID_PDInfoGetter::ParsePDStatus(std::ifstream& /*in*/, std::string /*line*/) {
    const OperationTrace operation("CMSRAID_PDInfoGetter::ParsePDStatus");
    CItemDisp& detail = *m_ItemList.back();
    detail.m_Name = PD_STAT_DETAIL_NAME;
    return InsertItem(m_ItemList, std::prev(m_ItemList.end()), m_CurrentParent.Name(), PD_STAT_BASIC_NAME,
                      BasicStatus(detail.m_Value));
}

const std::string& CMSRAID_PDInfoGetter::BasicStatus(const std::string& detail) {
    if (detail == PD_STAT_D_ONLINE || detail == PD_STAT_D_COPYBACK || detail == PD_STAT_D_UNCONFIG_GOOD ||
        detail == PD_STAT_D_HOT_SPARE) {
        return PD_STAT_B_NO_ERROR;
    }
    if (detail == PD_STAT_D_OFFLINE || detail == PD_STAT_D_UNCONFIG_BAD || detail == PD_STAT_D_FAILED) {
        return PD_STAT_B_ERROR;
    }
    return detail == PD_STAT_D_REBUILD ? PD_STAT_B_REBUILD : PD_STAT_B_UNKNOWN;
}

ResultCode CMSRAID_PDInfoGetter::ParseSlotInfo(std::ifstream& in, std::string /*line*/) {
    const OperationTrace operation("CMSRAID_PDInfoGetter::ParseSlotInfo");
    const ResultCode result = InsertPlaceholder(m_ItemList.end(), PD_ENCL_ID_NAME);  // First, and always.
    if (result != kSuccess) {
        return result;
    }
    if (in.fail()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Invalid Arg.");
        return kGeneralFailure;
    }
    return ReadKeyLines(in, [](const CItemDisp& /*item*/) { return kSuccess; });
}

ResultCode CMSRAID_PDInfoGetter::ParseSMARTInfo(std::ifstream& in, std::string line) {
    const OperationTrace operation("CMSRAID_PDInfoGetter::ParseSMARTInfo");
    if (in.fail()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Invalid Arg.");
        return kGeneralFailure;
    }
    DropSMARTTitle();
    std::string lineAsRead;
    while (std::getline(in, lineAsRead)) {
        line = lineAsRead;
        Trim(line);
        if (line.starts_with(PDLD_NO_NAME_HEAD)) {
            PutBack(in, lineAsRead);
            break;
        }
    }
    return kSuccess;
}

void CMSRAID_PDInfoGetter::DropSMARTTitle() {
    if (m_CurrentParent.PointsAt(std::prev(m_ItemList.end()))) {
        m_CurrentParent = m_CurrentRoot;
    }
    CItemDisp* const title = m_ItemList.back();
    m_ItemList.pop_back();
    msraid::DeleteItem(m_pMngLib, title);
}

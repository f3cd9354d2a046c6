#include "readers/CMSRAID_CtrlInfoGetter.h"

#include <iterator>
#include <utility>

using msraid::kCategory;
using msraid::kFailure;
using msraid::kGeneralFailure;
using msraid::kSuccess;
using msraid::OperationTrace;

const std::string CMSRAID_CtrlInfoGetter::CTRL_INFO_ROOT_NAME = "Controller Information";
const std::string CMSRAID_CtrlInfoGetter::CTRL_RECON_RATE_NAME = "Reconstruction Rate";
const std::string CMSRAID_CtrlInfoGetter::CTRL_CC_RATE_NAME = "Consistency Check Rate";
const std::string CMSRAID_CtrlInfoGetter::CTRL_FIRM_PACK_VER_NAME = "Firmware Package Version";
const std::string CMSRAID_CtrlInfoGetter::CTRL_FIRM_VER_NAME = "Firmware Version";
const std::string CMSRAID_CtrlInfoGetter::CTRL_FIRM_BUILD_TIME_NAME = "Firmware Build Time";
const std::string CMSRAID_CtrlInfoGetter::CTRL_FIRM_TITLE_NAME = "### Firmware/BIOS/Driver Information ###";
const std::string CMSRAID_CtrlInfoGetter::CTRL_SETINFO_TITLE_NAME = "### Controller Settings Information ###";
const std::string CMSRAID_CtrlInfoGetter::CTRL_NO_NAME = "Controller No.";
const std::string CMSRAID_CtrlInfoGetter::CTRL_SUBVEN_ID_OLD_NAME = "SubVendor ID";
const std::string CMSRAID_CtrlInfoGetter::CTRL_SUBVEN_ID_NAME = "Subsystem Vendor ID";
const std::string CMSRAID_CtrlInfoGetter::CTRL_SUBSYS_ID_OLD_NAME = "SubDevice ID";
const std::string CMSRAID_CtrlInfoGetter::CTRL_SUBSYS_ID_NAME = "Subsystem ID";

CMSRAID_CtrlInfoGetter::CMSRAID_CtrlInfoGetter() {
    const OperationTrace operation("CMSRAID_CtrlInfoGetter::CMSRAID_CtrlInfoGetter");
    m_CmdFormat = "vdkcli -ctrlinfo -a%s";
}

CMSRAID_CtrlInfoGetter::~CMSRAID_CtrlInfoGetter() {
    const OperationTrace operation("CMSRAID_CtrlInfoGetter::~CMSRAID_CtrlInfoGetter", std::nothrow);
    DropHeldItems(m_CtrlNoItemList);
}

ResultCode CMSRAID_CtrlInfoGetter::GetCtrlNum(char* count) {
    const OperationTrace operation("CMSRAID_CtrlInfoGetter::GetCtrlNum");
    unsigned controllers = 0;
    const ResultCode result =
        ReadReport("All", [&controllers](std::ifstream& file, const std::string& /*path*/) {
            std::string line;
            while (std::getline(file, line)) {
                controllers += IsControllerLine(line) ? 1U : 0U;
            }
            return kSuccess;
        });
    if (result == kSuccess) {
        *count = static_cast<char>(controllers);
    }
    return result;
}

bool CMSRAID_CtrlInfoGetter::IsControllerLine(const std::string& line) {
    return line.starts_with(CTRL_NO_NAME_HEAD) && line.find(':') != std::string::npos;
}

ResultCode CMSRAID_CtrlInfoGetter::CreateRAIDItem(std::ifstream& in, std::string line) {
    const OperationTrace operation("CMSRAID_CtrlInfoGetter::CreateRAIDItem");
    if (IsControllerLine(line)) {
        AddRootItem();
        return m_CurrentRoot.IsNull() ? kGeneralFailure : ParseCtrlNo(in, line);
    }
    return line.starts_with(TITLE_BEGIN_NAME) ? ReadTitle(in, line) : ReadKeyLine(in, std::move(line));
}

ResultCode CMSRAID_CtrlInfoGetter::ReadKeyLine(std::ifstream& in, std::string line) {
    if (!IsKeyLine(line)) {
        return kSuccess;
    }
    const ResultCode result = ParseKeyValue(in, std::move(line), m_ItemList);
    if (result != kSuccess) {
        return result;
    }
    std::string& name = m_ItemList.back()->m_Name;
    if (name == CTRL_SUBVEN_ID_OLD_NAME) {
        name = CTRL_SUBVEN_ID_NAME;
    } else if (name == CTRL_SUBSYS_ID_OLD_NAME) {
        name = CTRL_SUBSYS_ID_NAME;
    }
    return kSuccess;
}

ResultCode CMSRAID_CtrlInfoGetter::ReadTitle(std::ifstream& in, const std::string& line) {
    const ResultCode result = ParseTitle(in, line);
    if (result != kSuccess) {
        return result;
    }
    const std::string& title = m_ItemList.back()->m_Name;
    if (title == GENERAL_INFO_TITLE_NAME) {
        ReleaseHeldItems(m_CtrlNoItemList);
        return kSuccess;
    }
    if (title == CTRL_FIRM_TITLE_NAME) {
        return ParseFirmwareInfo(in, title);
    }
    if (title == CTRL_SETINFO_TITLE_NAME) {
        return ParseSettingInfo(in, title);
    }
    return kSuccess;
}

void CMSRAID_CtrlInfoGetter::AddRootItem() {
    const OperationTrace operation("CMSRAID_CtrlInfoGetter::AddRootItem");
    StartRoot(CTRL_INFO_ROOT_NAME);
}

void CMSRAID_CtrlInfoGetter::FreeItemList() {
    const OperationTrace operation("CMSRAID_CtrlInfoGetter::FreeItemList");
    // Meant: the cells stay, null from now on, until the next General Information title or the destructor.
    msraid::DeleteItems(m_pMngLib, m_CtrlNoItemList);
}

ResultCode CMSRAID_CtrlInfoGetter::ParseCtrlNo(std::ifstream& in, std::string line) {
    const OperationTrace operation("CMSRAID_CtrlInfoGetter::ParseCtrlNo", line);
    const ResultCode result = AddKeyItem(in, line, m_CtrlNoItemList);
    if (result != kSuccess) {
        return result;
    }
    CItemDisp& item = *m_CtrlNoItemList.back();
    item.m_ParentName = GENERAL_INFO_TITLE_NAME;
    item.m_Name = CTRL_NO_NAME;
    return kSuccess;
}

ResultCode CMSRAID_CtrlInfoGetter::ParseSettingInfo(std::ifstream& in, std::string /*title*/) {
    const OperationTrace operation("CMSRAID_CtrlInfoGetter::ParseSettingInfo");
    if (!in.good()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Invalid Arg.");
        return kGeneralFailure;
    }
    bool hasReconstructionRate = false;
    auto placeholderPlace = m_ItemList.end();
    const ResultCode result = ReadKeyLines(in, [&](const CItemDisp& item) {
        // The missing rate goes behind the last of these, else to the section's end.
        if (item.m_Name == CTRL_RECON_RATE_NAME) {
            hasReconstructionRate = true;
        } else if (item.m_Name == CTRL_CC_RATE_NAME) {
            placeholderPlace = std::prev(m_ItemList.end());
        }
        return kSuccess;
    });
    if (result != kSuccess || hasReconstructionRate) {
        return result;
    }
    if (placeholderPlace != m_ItemList.end()) {
        ++placeholderPlace;
    }
    return InsertPlaceholder(placeholderPlace, CTRL_RECON_RATE_NAME);
}

ResultCode CMSRAID_CtrlInfoGetter::ParseFirmwareInfo(std::ifstream& in, std::string /*title*/) {
    const OperationTrace operation("CMSRAID_CtrlInfoGetter::ParseFirmwareInfo");
    if (!in.good()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Invalid Arg.");
        return kGeneralFailure;
    }
    const auto title = std::prev(m_ItemList.end());
    bool hasPackageVersion = false;
    bool hasVersion = false;
    bool hasBuildTime = false;
    ResultCode result = ReadKeyLines(in, [&](const CItemDisp& item) {
        hasPackageVersion |= item.m_Name == CTRL_FIRM_PACK_VER_NAME;
        hasVersion |= item.m_Name == CTRL_FIRM_VER_NAME;
        hasBuildTime |= item.m_Name == CTRL_FIRM_BUILD_TIME_NAME;
        return kSuccess;
    });
    const auto place = std::next(title);
    if (result == kSuccess && !hasPackageVersion) {
        result = InsertPlaceholder(place, CTRL_FIRM_PACK_VER_NAME);
    }
    // Meant: these two are crossed, each key's presence rules the other's placeholder; consumers know the
    // result.
    if (result == kSuccess && !hasBuildTime) {
        result = InsertPlaceholder(place, CTRL_FIRM_VER_NAME);
    }
    if (result == kSuccess && !hasVersion) {
        result = InsertPlaceholder(place, CTRL_FIRM_BUILD_TIME_NAME);
    }
    return result;
}

#include "report/CMSRAID_InfoGetter.h"

#include "ResultFile.h"
#include "report/CMSRAID_VDK.h"

#include "qel/CFileUtility.h"
#include "qel/CStringUtil.h"
#include "qel/QelWindows.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <utility>

using msraid::kCategory;
using msraid::kFailure;
using msraid::kGeneralFailure;
using msraid::kSuccess;
using msraid::kToolOrXmlFailed;
using msraid::OperationTrace;

const std::string CMSRAID_InfoGetter::PROVIDER_TMP_DIR = "tmp";
const std::string CMSRAID_InfoGetter::MSRAID_DIR = "MSRAID";
const std::string CMSRAID_InfoGetter::GENERAL_INFO_TITLE_NAME = "### General Information ###";
const std::string CMSRAID_InfoGetter::TITLE_BEGIN_NAME = "### ";
const std::string CMSRAID_InfoGetter::TITLE_END_NAME = " ###";
const std::string CMSRAID_InfoGetter::RG_NO_HEAD = "RG";
const std::string CMSRAID_InfoGetter::CACHE_RG_NO_HEAD = "scRG";
const std::string CMSRAID_InfoGetter::LD_NO_NAME = "LD No.";
const std::string CMSRAID_InfoGetter::PD_NO_NAME = "PD No.";
const std::string CMSRAID_InfoGetter::RG_NO_NAME = "RG No.";
const std::string CMSRAID_InfoGetter::CTRL_NO_NAME_HEAD = "RAID Controller";
const std::string CMSRAID_InfoGetter::VDK_RSLT_FILE = "MngSrvRaid.txt";

namespace {

constexpr std::size_t kFormatBufferSize = 768;

constexpr const char* kReasonToolFailed = "01";
constexpr const char* kReasonReportNotReadable = "04";
constexpr const char* kReasonReportNotParsable = "06";

// Whatever else ends the reading (a failing disk, a line that memory does not hold) leaves part of a report,
// which must not pass for the whole. False as well for a file that could not be opened.
bool IsReadToEnd(const std::ifstream& file) {
    return file.eof();
}

std::string MakeDirectory(const std::string& parent, const std::string& name) {
    std::string directory = parent + "/" + name;
    _mkdir(directory.c_str());  // Usually there already; where it cannot be made, the tool run fails.
    return directory;
}

}  // namespace

CMSRAID_InfoGetter::CMSRAID_InfoGetter() {
    const OperationTrace operation("CMSRAID_InfoGetter::CMSRAID_InfoGetter");
}

CMSRAID_InfoGetter::~CMSRAID_InfoGetter() {
    const OperationTrace operation("CMSRAID_InfoGetter::~CMSRAID_InfoGetter", std::nothrow);
}

std::string CMSRAID_InfoGetter::GetRsltFilePath() {
    const unsigned long thread = GetCurrentThreadId();
    const std::string root = CFileUtility::GetInstallPath(INSTALLPATH_ROOT);
    if (root.empty()) {
        // Meant: the message names another kind of path than the one asked for.
        CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to get INSTALLPATH_CIM.");
    }
    const std::string directory = MakeDirectory(MakeDirectory(root, PROVIDER_TMP_DIR), MSRAID_DIR);

    static std::atomic<std::uint64_t> count{0};
    std::array<char, kFormatBufferSize> prefix{};
    std::snprintf(prefix.data(), prefix.size(), "%08lx_%08lx_", thread, static_cast<unsigned long>(count++));
    return directory + "/" + prefix.data() + VDK_RSLT_FILE;
}

ResultCode CMSRAID_InfoGetter::GetInfo(long ctrlNo, CMSRAID_MngLib* lib, ItemList& items) {
    const OperationTrace operation("CMSRAID_InfoGetter::GetInfo");
    m_pMngLib = lib;
    ReleaseCells();  // The items of an earlier call are the caller's.
    return ReadReport(
        CStringUtil::NumberToTString(ctrlNo),
        [&](std::ifstream& file, const std::string& path) { return ParseAndHandOver(file, path, items); });
}

ResultCode CMSRAID_InfoGetter::ReadReport(const std::string& argument, const ReportRule& read) {
    ResultFile resultFile(GetRsltFilePath());
    ResultCode result = kSuccess;
    if (!CMSRAID_VDK::ExecCli(FormatCommand(argument), resultFile.Path())) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to execute vdkcli command %08x.",
                                  kToolOrXmlFailed);
        m_Reason.insert(0, kReasonToolFailed);
        result = kToolOrXmlFailed;
    } else {
        std::ifstream file = OpenReport(resultFile.Path());
        if (file.good()) {
            result = read(file, resultFile.Path());
        }
        if (result == kSuccess && !IsReadToEnd(file)) {
            CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to open file output by vdkcli(%s).",
                                      resultFile.Path().c_str());
            m_Reason.insert(0, kReasonReportNotReadable);
            result = kGeneralFailure;
        }
    }
    resultFile.Delete();
    return result;
}

std::string CMSRAID_InfoGetter::FormatCommand(const std::string& argument) const {
    std::array<char, kFormatBufferSize> command{};
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(command.data(), command.size(), m_CmdFormat.c_str(), argument.c_str());
#pragma GCC diagnostic pop
    return command.data();
}

ResultCode CMSRAID_InfoGetter::ParseAndHandOver(std::ifstream& file, const std::string& path,
                                                ItemList& items) {
    try {
        const ResultCode result = Parse(file, path);
        if (result == kSuccess && IsReadToEnd(file)) {
            items.insert(items.end(), m_ItemList.begin(), m_ItemList.end());
            return kSuccess;
        }
        if (result != kSuccess) {
            CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to parse RAID Information %08x.", result);
            m_Reason.insert(0, kReasonReportNotParsable);
        }
        msraid::DeleteItems(m_pMngLib, m_ItemList);
        ReleaseCells();
        return result;
    } catch (...) {
        msraid::DeleteItems(m_pMngLib, m_ItemList);
        ReleaseCells();
        throw;
    }
}

void CMSRAID_InfoGetter::ReleaseCells() {
    m_ItemList.clear();
    m_CurrentRoot = ItemPosition();
    m_CurrentParent = ItemPosition();
}

ResultCode CMSRAID_InfoGetter::Parse(std::ifstream& file, std::string /*path*/) {
    const OperationTrace operation("CMSRAID_InfoGetter::Parse");
    ResultCode result = kSuccess;
    std::string line;
    while (result == kSuccess && std::getline(file, line)) {
        result = CreateRAIDItem(file, line);
        if (result != kSuccess) {
            CTraceUtility::WriteDebug(kCategory, kFailure, "CreateRAIDItem is FAILED (hr=%08x).", result);
        }
    }
    FreeItemList();
    return result;
}

ResultCode CMSRAID_InfoGetter::CreateRAIDItem(std::ifstream& /*file*/, std::string /*line*/) {
    return kGeneralFailure;
}

ResultCode CMSRAID_InfoGetter::ParseTitle(std::ifstream& /*file*/, std::string line) {
    if (!line.starts_with(TITLE_BEGIN_NAME)) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to ParseTitle. (%s)", line.c_str());
        return kGeneralFailure;
    }
    Trim(line);
    const ResultCode result = InsertItem(m_ItemList, m_ItemList.end(), m_CurrentRoot.Name(), line, "");
    if (result == kSuccess) {
        m_CurrentParent = ItemPosition(std::prev(m_ItemList.end()));
    }
    return result;
}

ResultCode CMSRAID_InfoGetter::ParseKeyValue(std::ifstream& /*file*/, std::string line, ItemList& list) {
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || colon == 0) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Failed to parse ParseKeyValue.(%s)", line.c_str());
        return kGeneralFailure;
    }
    std::string value = line.substr(colon + 1);
    Trim(value);
    std::string& key = line;  // What is left of it: a reader lives off these lines.
    key.erase(colon);
    Trim(key);
    return InsertItem(list, list.end(), m_CurrentParent.Name(), key, value);
}

void CMSRAID_InfoGetter::AddRootItem() {}

void CMSRAID_InfoGetter::FreeItemList() {}

void CMSRAID_InfoGetter::Trim(std::string& text) {
    const auto isBlank = [](char character) { return character == ' ' || character == '\t'; };
    const auto isBlankOrLineEnd = [isBlank](char character) {
        return isBlank(character) || character == '\r' || character == '\n';
    };
    const auto end = std::find_if_not(text.rbegin(), text.rend(), isBlankOrLineEnd).base();
    const auto blanks = static_cast<std::size_t>(std::find_if_not(text.begin(), end, isBlank) - text.begin());
    text.erase(end, text.end());
    if (blanks > 0) {
        text.erase(0, blanks);
    }
}

bool CMSRAID_InfoGetter::ReadSectionLine(std::ifstream& file, std::string& line) {
    if (!std::getline(file, line)) {
        return false;
    }
    Trim(line);
    return !line.empty();
}

bool CMSRAID_InfoGetter::IsKeyLine(const std::string& line) {
    const std::size_t colon = line.find(':');
    return colon != std::string::npos && colon != 0;
}

ResultCode CMSRAID_InfoGetter::AddKeyItem(std::ifstream& file, const std::string& line, ItemList& list) {
    const ResultCode result = ParseKeyValue(file, line, list);
    if (result != kSuccess) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "ParseKeyValue is FAILED (hr=%08x).", result);
    }
    return result;
}

ResultCode CMSRAID_InfoGetter::ReadKeyLines(std::ifstream& file,
                                            const std::function<ResultCode(CItemDisp&)>& onItem) {
    ResultCode result = kSuccess;
    std::string line;
    while (result == kSuccess && ReadSectionLine(file, line)) {
        if (IsKeyLine(line)) {
            result = AddKeyItem(file, line, m_ItemList);
            if (result == kSuccess) {
                result = onItem(*m_ItemList.back());
            }
        }
    }
    return result;
}

void CMSRAID_InfoGetter::PutBack(std::ifstream& file, const std::string& line) {
    // The last line of a report may lack its line feed; seekg() clears the end-of-file state.
    const std::size_t length = line.size() + (file.eof() ? 0 : 1);
    file.seekg(-static_cast<std::streamoff>(length), std::ios::cur);
}

ResultCode CMSRAID_InfoGetter::InsertItem(ItemList& list, ItemList::const_iterator place,
                                          const std::string& parentName, const std::string& name,
                                          const std::string& value, msraid::Validity validity) {
    return msraid::InsertItem(m_pMngLib, list, place, parentName, name, value, validity) ? kSuccess
                                                                                         : kGeneralFailure;
}

ResultCode CMSRAID_InfoGetter::InsertPlaceholder(ItemList::const_iterator place, const std::string& name) {
    return InsertItem(m_ItemList, place, m_CurrentParent.Name(), name, "", msraid::Validity::Placeholder);
}

void CMSRAID_InfoGetter::StartRoot(const std::string& name) {
    m_CurrentRoot = ItemPosition();
    if (InsertItem(m_ItemList, m_ItemList.end(), "", name, "") == kSuccess) {
        m_CurrentRoot = ItemPosition(std::prev(m_ItemList.end()));
    }
    m_CurrentParent = m_CurrentRoot;
}

void CMSRAID_InfoGetter::ReleaseHeldItems(ItemList& held) {
    held.remove(nullptr);
    m_ItemList.splice(m_ItemList.end(), held);
}

void CMSRAID_InfoGetter::DropHeldItems(ItemList& held) {
    msraid::DeleteItems(m_pMngLib, held);
}

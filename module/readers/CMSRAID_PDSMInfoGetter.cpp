#include "readers/CMSRAID_PDSMInfoGetter.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <utility>

using msraid::kCategory;
using msraid::kFailure;
using msraid::kGeneralFailure;
using msraid::kSuccess;
using msraid::OperationTrace;

const std::string CMSRAID_PDSMInfoGetter::SMART_TEMPERATURE_NAME = "Temperature";
const std::string CMSRAID_PDSMInfoGetter::SMART_POWER_TIME_NAME = "Power-On Time";
const std::string CMSRAID_PDSMInfoGetter::SMART_ATTRIBUTE_NAME = "Attribute";
const std::string CMSRAID_PDSMInfoGetter::SMART_DETAIL_SAS_NAME = "SMART Detail(SAS)";
const std::string CMSRAID_PDSMInfoGetter::SMART_DETAIL_SATA_NAME = "SMART Detail(SATA)";
const std::string CMSRAID_PDSMInfoGetter::SMART_HEAD_NAME = "[Head";
const std::string CMSRAID_PDSMInfoGetter::SMART_RAW_DATA_NAME = "Raw Data";
const std::string CMSRAID_PDSMInfoGetter::SMART_RAW_DATA_HEAD_NAME = "Raw";

namespace {

constexpr std::size_t kCommandBufferSize = 768;
constexpr std::string_view kSeparators = " \t";
constexpr std::size_t kRawDataSkip = 5;  // " Data"
constexpr std::size_t kAttributeNameWidth = 40;

}  // namespace

// Meant: these two and GetInfo name the base class in the trace.
CMSRAID_PDSMInfoGetter::CMSRAID_PDSMInfoGetter() {
    const OperationTrace operation("CMSRAID_PDSMInfoGetter::CMSRAID_PDInfoGetter");
}

CMSRAID_PDSMInfoGetter::~CMSRAID_PDSMInfoGetter() {
    const OperationTrace operation("CMSRAID_PDSMInfoGetter::~CMSRAID_PDInfoGetter", std::nothrow);
}

ResultCode CMSRAID_PDSMInfoGetter::GetInfo(long ctrlNo, long enclNo, long pdNo, CMSRAID_MngLib* lib,
                                           ItemList& items) {
    const OperationTrace operation("CMSRAID_PDInfoGetter::GetInfo");
    std::array<char, kCommandBufferSize> command{};
    std::snprintf(command.data(), command.size(), "vdkcli -pdinfo -pd[%d:%d]",
                  static_cast<std::int32_t>(enclNo), static_cast<std::int32_t>(pdNo));
    m_CmdFormat = command.data();
    m_CmdFormat += " -a%s";
    return CMSRAID_PDInfoGetter::GetInfo(ctrlNo, lib, items);
}

ResultCode CMSRAID_PDSMInfoGetter::ParseSMARTInfo(std::ifstream& in, std::string /*line*/) {
    const OperationTrace operation("CMSRAID_PDSMInfoGetter::ParseSMARTInfo");
    if (in.fail()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Invalid Arg.");
        return kGeneralFailure;
    }
    const ResultCode result = ReadSMARTKeys(in);
    return result != kSuccess ? result : ReadSMARTTable(in);
}

ResultCode CMSRAID_PDSMInfoGetter::ReadSMARTKeys(std::ifstream& in) {
    bool hasTemperature = false;
    bool hasPowerOnTime = false;
    ResultCode result = ReadKeyLines(in, [&](const CItemDisp& item) {
        hasTemperature |= item.m_Name == SMART_TEMPERATURE_NAME;
        hasPowerOnTime |= item.m_Name == SMART_POWER_TIME_NAME;
        return kSuccess;
    });
    if (result == kSuccess && !hasTemperature) {
        result = InsertPlaceholder(m_ItemList.end(), SMART_TEMPERATURE_NAME);
    }
    if (result == kSuccess && !hasPowerOnTime) {
        result = InsertPlaceholder(m_ItemList.end(), SMART_POWER_TIME_NAME);
    }
    return result;
}

ResultCode CMSRAID_PDSMInfoGetter::ReadSMARTTable(std::ifstream& in) {
    const auto behindKeys = in.tellg();
    std::string header;
    while (header.empty() && std::getline(in, header)) {
        Trim(header);
    }
    if (header.find(SMART_ATTRIBUTE_NAME) == std::string::npos) {
        const ResultCode result = AddMissingTable();
        if (!in.fail()) {  // A report that has ended stays ended, or the line loop would go on for ever.
            in.seekg(behindKeys);
        }
        return result;
    }
    if (m_IFType == PD_IFTYPE_SAS) {
        return ParseSMARTSAS(in, header);
    }
    return m_IFType == PD_IFTYPE_SATA ? ParseSMARTSATA(in, header) : kSuccess;
}

ResultCode CMSRAID_PDSMInfoGetter::AddMissingTable() {
    if (m_IFType == PD_IFTYPE_SAS) {
        return InsertPlaceholder(m_ItemList.end(), SMART_DETAIL_SAS_NAME);
    }
    return m_IFType == PD_IFTYPE_SATA ? InsertPlaceholder(m_ItemList.end(), SMART_DETAIL_SATA_NAME)
                                      : kSuccess;
}

ResultCode CMSRAID_PDSMInfoGetter::ParseSMARTSATA(std::ifstream& in, std::string header) {
    const OperationTrace operation("CMSRAID_PDSMInfoGetter::ParseSMARTSATA");
    const Cells columns = SplitSATAHeader(header);
    std::string row;
    std::getline(in, row);  // The line under the header.
    while (std::getline(in, row)) {
        Trim(row);
        if (row.empty()) {
            continue;
        }
        const ResultCode result = AddTableRow(SMART_DETAIL_SATA_NAME, columns, SplitSATARow(row), row);
        if (result != kSuccess) {
            return result;
        }
    }
    return kSuccess;
}

// Meant, here and in the row: a skip that reaches the end of the line makes the next substr() throw.
CMSRAID_PDSMInfoGetter::Cells CMSRAID_PDSMInfoGetter::SplitSATAHeader(const std::string& header) {
    Cells columns;
    std::size_t at = 0;
    std::size_t end = header.find_first_of(kSeparators, at);
    while (end != std::string::npos) {
        std::string name = Trimmed(header.substr(at, end - at));
        if (name == SMART_RAW_DATA_HEAD_NAME) {
            name = SMART_RAW_DATA_NAME;
            end += kRawDataSkip;
        }
        columns.push_back(std::move(name));
        at = header.find_first_not_of(kSeparators, end);
        end = header.find_first_of(kSeparators, at);
    }
    columns.push_back(Trimmed(header.substr(at)));
    return columns;
}

CMSRAID_PDSMInfoGetter::Cells CMSRAID_PDSMInfoGetter::SplitSATARow(const std::string& row) {
    Cells cells;
    std::size_t at = 0;
    std::size_t end = row.find_first_of(kSeparators, at);
    while (end != std::string::npos) {
        if (cells.size() == 1) {  // The attribute's name, which may hold blanks.
            end = at + kAttributeNameWidth;
        }
        cells.push_back(Trimmed(row.substr(at, end - at)));
        at = row.find_first_not_of(kSeparators, end);
        end = row.find_first_of(kSeparators, at);
    }
    cells.push_back(Trimmed(row.substr(at)));
    return cells;
}

ResultCode CMSRAID_PDSMInfoGetter::ParseSMARTSAS(std::ifstream& in, std::string header) {
    const OperationTrace operation("CMSRAID_PDSMInfoGetter::ParseSMARTSAS");
    Cells columns;
    std::vector<std::size_t> starts;
    std::size_t at = 0;
    while (at != std::string::npos) {
        const std::size_t end = header.find_first_of(kSeparators, at);
        starts.push_back(at);
        columns.push_back(Trimmed(header.substr(at, end - at)));
        at = header.find_first_not_of(kSeparators, end);
    }
    std::string row;
    std::getline(in, row);  // The line under the header.
    std::string head;
    while (std::getline(in, row)) {
        Trim(row);
        if (row.starts_with(SMART_HEAD_NAME)) {
            head = row;
        } else if (!row.empty()) {
            const ResultCode result =
                AddTableRow(SMART_DETAIL_SAS_NAME, columns, CutSASRow(row, starts, head), row);
            if (result != kSuccess) {
                return result;
            }
        }
    }
    return kSuccess;
}

// Meant: a row that ends before a column starts makes substr() throw.
CMSRAID_PDSMInfoGetter::Cells CMSRAID_PDSMInfoGetter::CutSASRow(const std::string& row,
                                                                const std::vector<std::size_t>& starts,
                                                                const std::string& head) {
    Cells cells;
    cells.reserve(starts.size());
    for (std::size_t column = 0; column < starts.size(); ++column) {
        const bool isLast = column + 1 == starts.size();
        const std::size_t width = isLast ? std::string::npos : starts[column + 1] - starts[column];
        std::string cell = row.substr(starts[column], width);
        cells.push_back(Trimmed(column == 0 ? head + cell : std::move(cell)));
    }
    return cells;
}

ResultCode CMSRAID_PDSMInfoGetter::AddTableRow(const std::string& detailName, const Cells& columns,
                                               const Cells& cells, const std::string& row) {
    ResultCode result = InsertItem(m_ItemList, m_ItemList.end(), m_CurrentParent.Name(), detailName, "");
    if (result != kSuccess) {
        return result;
    }
    if (cells.size() != columns.size()) {
        CTraceUtility::WriteDebug(kCategory, kFailure, "Parse SmartDeital is FAILED.(%s)", row.c_str());
        return kGeneralFailure;
    }
    for (std::size_t column = 0; column < columns.size() && result == kSuccess; ++column) {
        result = InsertItem(m_ItemList, m_ItemList.end(), detailName, columns[column], cells[column]);
    }
    return result;
}

std::string CMSRAID_PDSMInfoGetter::Trimmed(std::string text) {
    Trim(text);
    return text;
}

#pragma once

#include "readers/CMSRAID_PDInfoGetter.h"

#include <string>
#include <string_view>
#include <vector>

/// Reads the report of one drive with its SMART data, "vdkcli -pdinfo -pd[252:3] -a0": everything of the
/// physical-drive reader, and the SMART section as items, its attribute table included. The table of a SATA
/// drive is split at blanks, the attribute's name being 40 characters wide:
///
///     ID  Attribute                               Flag   Raw Data  Status
///     --- --------- (one line that is ignored)
///     5   Reallocated Sectors Count               0x33   0         OK
///
/// That of a SAS drive is cut at the positions of its header's columns, below head lines that name what
/// follows:
///
///     Attribute   Fast   Delayed   Total
///     --------------------------------- (ignored as well)
///     [Head 0]
///     Read        633    0         633
///
/// A row too short for its cut leaves `GetInfo` by std::out_of_range, which is meant.
class CMSRAID_PDSMInfoGetter final : public CMSRAID_PDInfoGetter {
  public:
    CMSRAID_PDSMInfoGetter();
    ~CMSRAID_PDSMInfoGetter() override;

    using CMSRAID_PDInfoGetter::GetInfo;

    /// Reads the report of one drive and appends its items to `items`, as the inherited operation does for
    /// all.
    [[nodiscard]] ResultCode GetInfo(long ctrlNo, long enclNo, long pdNo, CMSRAID_MngLib* lib,
                                     ItemList& items);

  protected:
    ResultCode ParseSMARTInfo(std::ifstream& in, std::string line) override;

  private:
    static const std::string SMART_TEMPERATURE_NAME;
    static const std::string SMART_POWER_TIME_NAME;
    static const std::string SMART_ATTRIBUTE_NAME;
    static const std::string SMART_DETAIL_SAS_NAME;
    static const std::string SMART_DETAIL_SATA_NAME;
    static const std::string SMART_HEAD_NAME;
    static const std::string SMART_RAW_DATA_NAME;
    static const std::string SMART_RAW_DATA_HEAD_NAME;

    using Cells = std::vector<std::string>;

    ResultCode ReadSMARTKeys(std::ifstream& in);
    ResultCode ReadSMARTTable(std::ifstream& in);
    ResultCode AddMissingTable();
    ResultCode ParseSMARTSAS(std::ifstream& in, std::string header);
    ResultCode ParseSMARTSATA(std::ifstream& in, std::string header);

    [[nodiscard]] std::string Trimmed(std::string text);
    [[nodiscard]] Cells SplitSATAHeader(const std::string& header);
    [[nodiscard]] Cells SplitSATARow(const std::string& row);
    [[nodiscard]] Cells CutSASRow(const std::string& row, const std::vector<std::size_t>& starts,
                                  const std::string& head);
    ResultCode AddTableRow(const std::string& detailName, const Cells& columns, const Cells& cells,
                           const std::string& row);
};

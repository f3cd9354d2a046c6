// Physical-drive reports, one behind the other, for one reader object; the first one is a logical-drive
// report too, for the drives' groups.

#include "readers/CMSRAID_PDInfoGetter.h"
#include "support/DriveGroups.h"
#include "support/ReportReading.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::CheckReports(fuzzing::TextOf(data, size), [](const auto& reports, auto medium, auto& reading) {
        CMSRAID_PDInfoGetter reader("4.1");
        fuzzing::ReadInARow(reader, reports, medium, reading,
                            [&] { fuzzing::FillGroups(reader, reports.front()); });
    });
    return 0;
}

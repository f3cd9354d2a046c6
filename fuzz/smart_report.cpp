// Reports of one drive with its SMART data, one behind the other, for one reader object; the first one is a
// logical-drive report too, for the drive's group.

#include "readers/CMSRAID_PDSMInfoGetter.h"
#include "support/DriveGroups.h"
#include "support/ReportReading.h"

#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::CheckReports(fuzzing::TextOf(data, size), [](const auto& reports, auto medium, auto& reading) {
        CMSRAID_PDSMInfoGetter reader;
        try {
            fuzzing::ReadInARow(reader, reports, medium, reading,
                                [&] { fuzzing::FillGroups(reader, reports.front()); });
        } catch (const std::out_of_range&) {  // A row too short for its cut; the reader is not used again.
            reading.endedByException = true;
        }
    });
    return 0;
}

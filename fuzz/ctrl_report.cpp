// Controller reports, one behind the other, for one reader object.

#include "readers/CMSRAID_CtrlInfoGetter.h"
#include "support/ReportReading.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::CheckReports(fuzzing::TextOf(data, size), [](const auto& reports, auto medium, auto& reading) {
        CMSRAID_CtrlInfoGetter reader;
        fuzzing::ReadInARow(reader, reports, medium, reading);
    });
    return 0;
}

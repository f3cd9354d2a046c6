// The whole of GetPDInfo, one drive's report, over any outputs and ends of the tool.

#include "fuzz/support/Input.h"
#include "fuzz/support/MethodCalls.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::CheckMethod("GetPDInfo", fuzzing::TextOf(data, size));
    return 0;
}

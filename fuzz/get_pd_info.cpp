// The whole of GetPDInfo, one drive's report, over any outputs and ends of the tool.

#include "support/Input.h"
#include "support/MethodCalls.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::CheckMethod("GetPDInfo", fuzzing::TextOf(data, size));
    return 0;
}

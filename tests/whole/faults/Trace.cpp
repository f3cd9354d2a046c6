#include "Trace.h"

#include "Fault.h"
#include "test_support/TraceHook.h"

#include <new>
#include <string_view>

namespace faults {
namespace {

constexpr int kException = 8;

// Nobody is left to be told: the operation is over, or it is a destructor, or a handler of another exception.
bool IsToBeLost(int level, std::string_view text) {
    return level == kException || text.ends_with(" [END]") || text.find("::~") != std::string_view::npos ||
           text.starts_with("CZORBALT_MngSrvRaid::ExecMethodAsync mr=") ||
           text.starts_with("CZORBALT_MngSrvRaid::ExecMethodAsync hr=");
}

Place PlaceOf(int level, std::string_view text) {
    if (IsToBeLost(level, text)) {
        return Place::LineToLose;
    }
    return text.starts_with("CZORBALT_MngSrvRaid::Get") ? Place::InMethod : g_place;
}

}  // namespace

void LetTraceFail() {
    testsupport::OnTrace([](int level, std::string_view text) {
        const PlaceScope scope(PlaceOf(level, text));
        if (Strikes(Kind::Trace)) {
            throw std::bad_alloc();
        }
    });
}

}  // namespace faults

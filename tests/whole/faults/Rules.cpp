#include "Rules.h"

#include <array>

namespace faults {
namespace {

template <Outcome... outcomes>
std::span<const Outcome> Any() {
    static constexpr std::array<Outcome, sizeof...(outcomes)> kList = {outcomes...};
    return kList;
}

// A key that cannot be read lets nobody in; the version is "" where it cannot be read.
std::span<const Outcome> OfFile(Place place) {
    switch (place) {
        case Place::AppKey:
            return Any<Outcome::Exception>();
        case Place::VersionFile:
            return Any<Outcome::Success>();
        default:
            return Any<Outcome::File04>();
    }
}

std::span<const Outcome> OfMemory(Place place) {
    switch (place) {
        // The module's texts are made while it is loaded, and an exception cannot leave the loader. Some of
        // what the loader asks for it can do without.
        case Place::LoadingModule:
            return Any<Outcome::NotLoaded, Outcome::Died, Outcome::Success>();
        case Place::Creating:  // A provider without its wrapper cannot load the library.
            return Any<Outcome::Escaped, Outcome::Library05>();
        case Place::BeforeMethod:
            return Any<Outcome::Escaped>();
        case Place::InMethod:
#ifdef FAULTS_SANITIZED  // Where nothing stands in front of the library's entry points.
            return Any<Outcome::Exception, Outcome::Success, Outcome::File04, Outcome::Report06,
                       Outcome::Conversion02>();
#else  // A line of the trace or of the version is passed over, a line of a report is not.
            return Any<Outcome::Exception, Outcome::Success, Outcome::File04>();
#endif
        case Place::AppKey:
        case Place::VersionFile:
        case Place::Report:
            return OfFile(place);
        case Place::LoadingLibrary:
            return Any<Outcome::Library05, Outcome::Success>();
        case Place::MakingItem:
            return Any<Outcome::Report06>();
        case Place::Converting:  // The text is copied while the converter stands.
            return Any<Outcome::Conversion02, Outcome::Exception>();
        case Place::LineToLose:  // No memory is asked for there.
            break;
    }
    return {};
}

std::span<const Outcome> OfLastingMemory(Place place) {
    if (place == Place::LoadingModule || place == Place::Creating || place == Place::BeforeMethod) {
        return Any<Outcome::NotLoaded, Outcome::Died, Outcome::Escaped, Outcome::Library05,
                   Outcome::Exception>();
    }
    return Any<Outcome::Exception, Outcome::NoReason, Outcome::Success>();
}

// The exception of a start line, or of one in between, is its operation's own.
std::span<const Outcome> OfTrace(Place place) {
    switch (place) {
        case Place::LineToLose:
            return Any<Outcome::Success>();
        case Place::Creating:
            return Any<Outcome::Escaped, Outcome::Library05>();
        case Place::BeforeMethod:
            return Any<Outcome::Escaped>();
        default:
            return Any<Outcome::Exception>();
    }
}

std::span<const Outcome> OfLastingTrace(Place place) {
    if (place == Place::LineToLose) {  // The next one may be another.
        return Any<Outcome::Success, Outcome::Exception, Outcome::Escaped>();
    }
    return place == Place::Creating ? Any<Outcome::Escaped>() : OfTrace(place);
}

}  // namespace

std::span<const Outcome> FittingOutcomes(const Order& order, Place place) {
    switch (order.kind) {
        case Kind::Memory:
            return order.isLasting ? OfLastingMemory(place) : OfMemory(place);
        case Kind::Trace:
            return order.isLasting ? OfLastingTrace(place) : OfTrace(place);
        case Kind::Open:  // What keeps one run from going well is gone in the next.
        case Kind::Fork:
        case Kind::Wait:
        case Kind::Duplicate:
        case Kind::Execute:
            return order.isLasting ? Any<Outcome::Tool01>() : Any<Outcome::Success>();
        case Kind::OpenStream:
        case Kind::Read:
            return order.isLasting && place != Place::AppKey ? Any<Outcome::File04>() : OfFile(place);
        case Kind::Seek:  // Not every place that is asked for is gone back to.
            return Any<Outcome::File04, Outcome::Success>();
        case Kind::InterruptedRead:
        case Kind::InterruptedWait:
        case Kind::Write:
        case Kind::Close:
        case Kind::CloseStream:
        case Kind::LinkStat:
        case Kind::Unlink:
        case Kind::CloseLibrary:
            return Any<Outcome::Success>();
        case Kind::Stat:  // The tool's file by the method and every run; the result file only for what it is
                          // not.
            return Any<Outcome::Tool03, Outcome::Tool01, Outcome::Success>();
        case Kind::MakeDirectory:
            return Any<Outcome::Tool01, Outcome::Success>();
        case Kind::LoadLibrary:
        case Kind::LookUp:
            return place == Place::LoadingModule || place == Place::Creating ? Any<Outcome::NotLoaded>()
                                                                             : Any<Outcome::Library05>();
    }
    return {};
}

}  // namespace faults

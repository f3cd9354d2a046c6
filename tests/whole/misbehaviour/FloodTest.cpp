// Reports of many megabytes. MSRAID_TEST_FLOOD says how many, where it shall be
// more than is enough every day.
#include "HostedProvider.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

namespace {

using ::testing::AnyOf;
using testsupport::CommandNamed;
using testsupport::Document;
using testsupport::Failure;
using testsupport::Rejection;
using testsupport::Seen;
using testsupport::Success;
using testsupport::Unreadable;

constexpr std::size_t kChunk = std::size_t{64} * 1024;

std::size_t Megabytes() {
    const char* const wish = std::getenv("MSRAID_TEST_FLOOD");
    return wish == nullptr ? 64 : std::stoul(wish);
}

class FloodTest : public testsupport::MisbehaviourTest {
  protected:
    void Flood(const std::string& text, const std::string& instructions = "") {
        Print(CommandNamed("Controller"), text);
        Instruct(CommandNamed("Controller"), "bytes " + std::to_string(Megabytes()) + "M\n" + instructions);
    }
};

TEST_F(FloodTest, OfLinesWithoutMeaningIsPassedOver) {
    Flood("");  // Then the simulator prints lines of dots.
    Expect(Call(), testsupport::WithoutController());
}

TEST_F(FloodTest, OfOneLineWithoutMeaningIsPassedOver) {
    Flood(std::string(kChunk, 'x'));
    Expect(Call(), testsupport::WithoutController());
}

TEST_F(FloodTest, OfOneLineOfNulIsPassedOver) {
    Flood(std::string(kChunk, '\0'));
    Expect(Call(), testsupport::WithoutController());
}

TEST_F(FloodTest, OfOneKeyLineStandsInTheDocument) {
    Flood("A" + std::string(kChunk - 1, ':'));
    const std::string before = "  <Item Name=\"A\" Value=\"";
    const std::string behind =
        "\" Valid=\"TRUE\"/>\n" + testsupport::LogicalDriveItems() + testsupport::DriveItems();
    const std::string frame = Document(before + behind);
    Seen seen = Call();
    EXPECT_EQ(seen.document.size(), frame.size() + (Megabytes() << 20U) - std::string("A:").size());
    EXPECT_TRUE(seen.document.starts_with(frame.substr(0, frame.find(behind)) + "::::"));
    EXPECT_TRUE(seen.document.ends_with("::::" + frame.substr(frame.find(behind))));
    seen.document = Success().document;
    Expect(seen, Success());
}

TEST_F(FloodTest, OfARunThatFailsIsNotRead) {
    Flood(std::string(kChunk, 'x'), "exit 1");
    Expect(Call(), Failure(CommandNamed("Controller")));
}

TEST_F(FloodTest, BehindTheMarkerIsNotRead) {
    Flood(std::string(kChunk, 'x'), "marker");
    Expect(Call(), Rejection(CommandNamed("Controller")));
}

#ifndef __SANITIZE_ADDRESS__  // Which needs all the address space that there is.

// The address space that is in use now, and so much more.
class MemoryLimit final {
  public:
    explicit MemoryLimit(std::size_t more) {
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        EXPECT_EQ(::getrlimit(RLIMIT_AS, &m_Old), 0);
        const rlimit few{pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE)) + more, m_Old.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_AS, &few), 0);
    }
    ~MemoryLimit() { EXPECT_EQ(::setrlimit(RLIMIT_AS, &m_Old), 0); }
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;

  private:
    rlimit m_Old{};
};

// The standard library's line reading takes it for an error of the file.
TEST_F(FloodTest, OfOneLineThatMemoryCannotHoldCannotBeRead) {
    Flood("A" + std::string(kChunk - 1, ':'));
    const MemoryLimit limit(std::size_t{30} << 20U);
    Expect(Call(), Unreadable(CommandNamed("Controller")));
}

// By exception.
Seen OutOfMemory() {
    Seen seen;
    seen.status = 0x80041001;
    seen.returnValue = 0x80000002;
    seen.runs = Rejection(CommandNamed("Controller")).runs;
    seen.failures = {"CZORBALT_MngSrvRaid::ExecMethodAsync hr=0x80041001"};
    return seen;
}

// The conversion library makes no item.
Seen OutOfItems() {
    Seen seen = Rejection(CommandNamed("Controller"));
    seen.returnValue = 0x80000001;
    seen.reason = "06";
    seen.failures = {"CreateRAIDItem is FAILED (hr=80000001).", "Failed to parse RAID Information 80000001.",
                     "CMSRAID_CtrlInfoGetter::GetInfo is FAILED (re=80000001).",
                     "CZORBALT_MngSrvRaid::GetInfo() Error[reason:06]"};
    return seen;
}

TEST_F(FloodTest, OfOneLineThatMemoryCannotCopyFailsTheCall) {
    Flood("A" + std::string(kChunk - 1, ':'));
    const MemoryLimit limit(Megabytes() * std::size_t{5} << 20U);
    EXPECT_THAT(Describe(Call()), AnyOf(Describe(OutOfMemory()), Describe(OutOfItems())));
}

TEST_F(FloodTest, OfMoreItemsThanMemoryHoldsFailsTheCall) {
    std::string text;
    while (text.size() < kChunk) {
        text += "A:\n";
    }
    Flood(text);
    const MemoryLimit limit(std::size_t{30} << 20U);
    EXPECT_THAT(Describe(Call()), AnyOf(Describe(OutOfMemory()), Describe(OutOfItems())));
}

#endif

}  // namespace

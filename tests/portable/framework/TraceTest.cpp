#include "TraceSupport.h"

#include "qel/CTraceUtility.h"
#include "qel/QelWindows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using qel::test::ParseTrace;
using qel::test::ReadFile;
using qel::test::RememberingListener;
using qel::test::ScopedStandardError;
using qel::test::TempFolder;
using qel::test::TraceFile;
using qel::test::WriteFile;
using qel::test::WrittenLine;

// Formatting of the line stores 5 here.
int TraceAndSeeWhetherItIsFormatted(int level) {
    int formatted = -1;
    CTraceUtility::WriteDebug("msraid", level, "%s%n", "abcde", &formatted);
    return formatted;
}

std::string WrittenText(const std::string& text) {
    const TraceFile file;
    CTraceUtility::WriteDebug("msraid", 1, "%s", text.c_str());
    const std::vector<WrittenLine> lines = file.Lines();
    return lines.size() == 1 ? lines.front().text : "(not one line)";
}

std::string ExpectedEscape(int code) {
    switch (code) {
        case '\\':
            return "\\\\";
        case '\n':
            return "\\n";
        case '\r':
            return "\\r";
        case '\t':
            return "\\t";
        default:
            break;
    }
    if (code >= 0x20 && code != 0x7F) {
        return {static_cast<char>(code)};
    }
    char escaped[8];
    std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned>(code));
    return escaped;
}

// The text with every digit made a nine.
std::string ShapeOf(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char character) { return character >= '0' && character <= '9'; }, '9');
    return text;
}

std::size_t CountDescriptors() {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

TEST(TraceTest, WritesNothingAtStart) {
    const TraceFile file(0);
    CTraceUtility::WriteDebug("msraid", 1, "off");
    CTraceUtility::WriteTrace("msraid", "MSGID_1", "off");
    EXPECT_EQ(file.Contents(), "");
}

TEST(TraceTest, ALineWhoseLevelIsOffIsNotFormatted) {
    const TraceFile file(2);
    EXPECT_EQ(TraceAndSeeWhetherItIsFormatted(1), -1);
    EXPECT_EQ(TraceAndSeeWhetherItIsFormatted(4), -1);
    EXPECT_EQ(TraceAndSeeWhetherItIsFormatted(8), -1);
    EXPECT_EQ(TraceAndSeeWhetherItIsFormatted(2), 5);
}

TEST(TraceTest, AListenerHasALineFormattedThatTheOutputDoesNotWant) {
    const TraceFile file(0);
    {
        const RememberingListener listener;
        EXPECT_EQ(TraceAndSeeWhetherItIsFormatted(1), 5);
    }
    EXPECT_EQ(TraceAndSeeWhetherItIsFormatted(1), -1);
    EXPECT_EQ(file.Contents(), "");
}

TEST(TraceTest, AListenerHearsTheLevelsThatItWantsAndMessagesWithAny) {
    const TraceFile file(CTraceOutput::ALL_LEVELS);
    for (unsigned mask = 0; mask <= CTraceOutput::ALL_LEVELS; ++mask) {
        RememberingListener listener;
        CTraceOutput::SetListener(&listener, mask);
        std::vector<RememberingListener::Heard> expected;
        for (const int level : {1, 2, 4, 8}) {
            CTraceUtility::WriteDebug("msraid", level, "line");
            if ((mask & static_cast<unsigned>(level)) != 0) {
                expected.push_back({"msraid", level, "line"});
            }
        }
        CTraceUtility::WriteTrace("msraid", "MSGID_1", "text");
        if (mask != 0) {
            expected.push_back({"msraid", 0, "MSGID_1 text"});
        }
        EXPECT_EQ(listener.Lines(), expected) << mask;
    }
}

TEST(TraceTest, ALineThatNeitherOutputNorListenerWantsIsNotFormatted) {
    const TraceFile file(2);
    RememberingListener listener;
    CTraceOutput::SetListener(&listener, 1);
    EXPECT_EQ(TraceAndSeeWhetherItIsFormatted(1), 5);
    EXPECT_EQ(TraceAndSeeWhetherItIsFormatted(2), 5);
    EXPECT_EQ(TraceAndSeeWhetherItIsFormatted(4), -1);
}

TEST(TraceTest, ExactlyTheLevelsThatAreOnAreWrittenAndMessagesWithAny) {
    for (unsigned mask = 0; mask <= CTraceOutput::ALL_LEVELS; ++mask) {
        const TraceFile file(mask);
        std::vector<std::string> expected;
        for (const int level : {1, 2, 4, 8}) {
            CTraceUtility::WriteDebug("msraid", level, "line");
            if ((mask & static_cast<unsigned>(level)) != 0) {
                expected.push_back(std::to_string(level));
            }
        }
        CTraceUtility::WriteTrace("msraid", "MSGID_1", "text");
        if (mask != 0) {
            expected.emplace_back("0");
        }
        std::vector<std::string> written;
        for (const WrittenLine& line : file.Lines()) {
            written.push_back(line.level);
        }
        EXPECT_EQ(written, expected) << "levels " << mask;
    }
}

TEST(TraceTest, UnknownLevelBitsTurnNothingOn) {
    const TraceFile file(~CTraceOutput::ALL_LEVELS);
    for (const int level : {1, 2, 4, 8, 16}) {
        CTraceUtility::WriteDebug("msraid", level, "line");
    }
    CTraceUtility::WriteTrace("msraid", "MSGID_1", "text");
    EXPECT_EQ(file.Contents(), "");

    CTraceOutput::SetLevels(0x10 | 4);
    CTraceUtility::WriteDebug("msraid", 16, "unknown");
    CTraceUtility::WriteDebug("msraid", 4, "known");
    ASSERT_EQ(file.Lines().size(), 1U);
    EXPECT_EQ(file.Lines()[0].text, "known");
}

TEST(TraceTest, ALineHasTimeThreadCategoryLevelAndText) {
    const TraceFile file;
    CTraceUtility::WriteDebug("msraid", 4, "%s::Parse [START] %d", "CMSRAID_InfoGetter", -7);
    const std::vector<WrittenLine> lines = file.Lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(ShapeOf(lines[0].time), "9999-99-99T99:99:99.999999Z");
    EXPECT_EQ(lines[0].thread, std::to_string(GetCurrentThreadId()));
    EXPECT_EQ(lines[0].category, "msraid");
    EXPECT_EQ(lines[0].level, "4");
    EXPECT_EQ(lines[0].text, "CMSRAID_InfoGetter::Parse [START] -7");
}

TEST(TraceTest, TheTimeIsTheSystemsInUtc) {
    using std::chrono::microseconds;
    using std::chrono::system_clock;
    const auto sinceEpoch = [] {
        return std::chrono::duration_cast<microseconds>(system_clock::now().time_since_epoch());
    };
    const TraceFile file;
    const microseconds before = sinceEpoch();
    CTraceUtility::WriteDebug("msraid", 1, "now");
    const microseconds after = sinceEpoch();
    const std::vector<WrittenLine> lines = file.Lines();
    ASSERT_EQ(lines.size(), 1U);

    std::tm fields{};
    int fraction = -1;
    ASSERT_EQ(std::sscanf(lines[0].time.c_str(), "%d-%d-%dT%d:%d:%d.%dZ", &fields.tm_year, &fields.tm_mon,
                          &fields.tm_mday, &fields.tm_hour, &fields.tm_min, &fields.tm_sec, &fraction),
              7);
    fields.tm_year -= 1900;
    fields.tm_mon -= 1;
    const microseconds written = std::chrono::seconds(::timegm(&fields)) + microseconds(fraction);
    EXPECT_LE(before, written);
    EXPECT_LE(written, after);
}

TEST(TraceTest, ALineWithLineFeedsStaysOneLine) {
    EXPECT_EQ(WrittenText("one\ntwo\r\nthree\n"), "one\\ntwo\\r\\nthree\\n");
}

TEST(TraceTest, EveryByteIsWrittenAsTheTableSays) {
    for (int code = 1; code <= 0xFF; ++code) {
        const std::string text = std::string("<") + static_cast<char>(code) + ">";
        EXPECT_EQ(WrittenText(text), "<" + ExpectedEscape(code) + ">") << "byte " << code;
    }
}

TEST(TraceTest, EscapesAreReadableBack) {
    EXPECT_EQ(WrittenText("C:\\new\n"), "C:\\\\new\\n");
    EXPECT_EQ(WrittenText("\x1B[31m\x7F"), "\\x1b[31m\\x7f");
    EXPECT_EQ(WrittenText("D\xC3\xBCsseldorf \xFF\x80"), "D\xC3\xBCsseldorf \xFF\x80");
}

TEST(TraceTest, ACategoryIsEscapedToo) {
    const TraceFile file;
    CTraceUtility::WriteDebug("ms\traid\n", 1, "text");
    const std::vector<WrittenLine> lines = file.Lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].category, "ms\\traid\\n");
}

TEST(TraceTest, AnArgumentEndsAtItsNulAndANulCharacterIsEscaped) {
    const TraceFile file;
    CTraceUtility::WriteDebug("msraid", 1, "%s", "seen\0unseen");
    CTraceUtility::WriteDebug("msraid", 1, "a%cb", '\0');
    const std::vector<WrittenLine> lines = file.Lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].text, "seen");
    EXPECT_EQ(lines[1].text, "a\\x00b");
}

TEST(TraceTest, NoLengthLosesOrAddsACharacter) {
    for (std::size_t length = 900; length <= 1100; ++length) {
        const std::string plain(length - 1, 'p');
        EXPECT_EQ(WrittenText(plain + 'q'), plain + 'q') << length;
        std::string expected;
        for (std::size_t at = 0; at < length; ++at) {
            expected += "\\t";
        }
        EXPECT_EQ(WrittenText(std::string(length, '\t')), expected) << length;
    }
    EXPECT_EQ(WrittenText(""), "");
}

TEST(TraceTest, ATextOfAMegabyteIsWrittenWhole) {
    std::string text;
    std::string expected;
    for (int piece = 0; text.size() < (1U << 20U); ++piece) {
        text += std::to_string(piece) + "\n";
        expected += std::to_string(piece) + "\\n";
    }
    EXPECT_EQ(WrittenText(text), expected);
}

TEST(TraceTest, ALineThatCannotBeFormattedShowsItsFormat) {
    const TraceFile file;
    CTraceUtility::WriteDebug("msraid", 2, "drive %ls", L"\u20AC");  // not to be had in the "C" locale
    const std::vector<WrittenLine> lines = file.Lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].text, "drive %ls");
}

TEST(TraceTest, AMessageIsItsIdABlankAndItsText) {
    const TraceFile file(1);
    const std::string large(5000, 'm');
    CTraceUtility::WriteTrace("msraid", "MSGID_MNGSRV_RAID_0001_F", "0602");
    CTraceUtility::WriteTrace("msraid", "MSGID_100%s", "%d\n");
    CTraceUtility::WriteTrace("msraid", "MSGID_2", large.c_str());
    const std::vector<WrittenLine> lines = file.Lines();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].category, "msraid");
    EXPECT_EQ(lines[0].level, "0");
    EXPECT_EQ(lines[0].text, "MSGID_MNGSRV_RAID_0001_F 0602");
    EXPECT_EQ(lines[1].text, "MSGID_100%s %d\\n");
    EXPECT_EQ(lines[2].text, "MSGID_2 " + large);
}

TEST(TraceTest, ALineIsOneWrite) {
    // A datagram socket keeps every write apart from the next.
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_DGRAM, 0, ends), 0);
    const std::string large(20'000, '\n');
    {
        const ScopedStandardError redirected(ends[0]);
        CTraceOutput::UseStandardError();
        CTraceOutput::SetLevels(CTraceOutput::ALL_LEVELS);
        CTraceUtility::WriteDebug("msraid", 1, "short");
        CTraceUtility::WriteDebug("msraid", 1, "%s", large.c_str());
        CTraceUtility::WriteTrace("msraid", "MSGID_1", "text");
        CTraceOutput::SetLevels(0);
    }
    std::vector<std::size_t> lengths;
    std::string buffer(200'000, '\0');
    for (ssize_t got = 0; (got = ::recv(ends[1], buffer.data(), buffer.size(), MSG_DONTWAIT)) > 0;) {
        const std::vector<WrittenLine> lines = ParseTrace(buffer.substr(0, static_cast<std::size_t>(got)));
        ASSERT_EQ(lines.size(), 1U);
        lengths.push_back(lines[0].text.size());
    }
    EXPECT_EQ(lengths, (std::vector<std::size_t>{5, 40'000, 12}));
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(TraceTest, LeavesErrnoAlone) {
    const std::string large(5000, 'x');
    const auto traceAll = [&large] {
        errno = ERANGE;
        CTraceUtility::WriteDebug("msraid", 1, "short");
        EXPECT_EQ(errno, ERANGE);
        CTraceUtility::WriteDebug("msraid", 1, "%s", large.c_str());
        EXPECT_EQ(errno, ERANGE);
        CTraceUtility::WriteDebug("msraid", 1, "%ls", L"\u20AC");
        EXPECT_EQ(errno, ERANGE);
        CTraceUtility::WriteTrace("msraid", "MSGID_1", "text");
        EXPECT_EQ(errno, ERANGE);
    };
    const TraceFile file;
    traceAll();
    ASSERT_TRUE(CTraceOutput::OpenFile("/dev/full"));  // Every write to it fails.
    traceAll();
    CTraceOutput::SetLevels(0);
    traceAll();
}

TEST(TraceTest, OpeningAFileEmptiesItAndLeavesTheOldOneAlone) {
    const TempFolder folder;
    WriteFile(folder / "new", "something from before\n");
    const TraceFile old;
    CTraceUtility::WriteDebug("msraid", 1, "to the old one");
    ASSERT_TRUE(CTraceOutput::OpenFile(folder / "new"));
    CTraceUtility::WriteDebug("msraid", 1, "to the new one");
    ASSERT_EQ(old.Lines().size(), 1U);
    EXPECT_EQ(old.Lines()[0].text, "to the old one");
    const std::vector<WrittenLine> lines = ParseTrace(ReadFile(folder / "new"));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].text, "to the new one");
}

TEST(TraceTest, AFileThatCannotBeOpenedChangesNothing) {
    const TraceFile file;
    errno = 0;
    EXPECT_FALSE(CTraceOutput::OpenFile(file.Path() + "/below/a/file"));
    EXPECT_EQ(errno, ENOTDIR);
    EXPECT_FALSE(CTraceOutput::OpenFile(""));
    EXPECT_EQ(errno, ENOENT);
    CTraceUtility::WriteDebug("msraid", 1, "still here");
    ASSERT_EQ(file.Lines().size(), 1U);
    EXPECT_EQ(file.Lines()[0].text, "still here");
}

TEST(TraceTest, AFileThatIsLeftIsClosedAndIsNotInheritedByPrograms) {
    const std::size_t before = CountDescriptors();
    {
        const TraceFile file;
        EXPECT_EQ(CountDescriptors(), before + 1);
        ASSERT_TRUE(CTraceOutput::OpenFile(file.Path()));
        ASSERT_TRUE(CTraceOutput::OpenFile(file.Path()));
        EXPECT_EQ(CountDescriptors(), before + 1);
        int found = 0;
        for (int descriptor = 0; descriptor < 256; ++descriptor) {
            std::error_code error;
            const auto target =
                std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), error);
            if (!error && target == file.Path()) {
                ++found;
                EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
            }
        }
        EXPECT_EQ(found, 1);
    }
    EXPECT_EQ(CountDescriptors(), before);
    EXPECT_NE(::fcntl(STDERR_FILENO, F_GETFD), -1);
}

TEST(TraceTest, ANewFileHasTheModeThatTheUmaskLeaves) {
    const mode_t before = ::umask(0027);
    const TraceFile file;
    ::umask(before);
    struct stat status {};
    ASSERT_EQ(::stat(file.Path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST(TraceTest, AListenerHearsLinesAsTheyWereWritten) {
    const TraceFile file(2);
    const std::string large(3000, '\n');
    RememberingListener listener;
    CTraceUtility::WriteDebug("ms\traid", 1, "tab\t%d", 1);
    CTraceUtility::WriteDebug("msraid", 2, "%s", large.c_str());
    CTraceUtility::WriteTrace("msraid", "MSGID_1", "text");
    const std::vector<RememberingListener::Heard> expected = {
        {"ms\traid", 1, "tab\t1"}, {"msraid", 2, large}, {"msraid", 0, "MSGID_1 text"}};
    EXPECT_EQ(listener.Lines(), expected);
    EXPECT_EQ(file.Lines().size(), 2U);
}

TEST(TraceTest, AMissingTextIsWrittenAsSuch) {
    const TraceFile file(15);
    const char* const missing = nullptr;
    RememberingListener listener;
    CTraceUtility::WriteDebug(missing, 1, "text");
    CTraceUtility::WriteTrace("msraid", missing, missing);
    const std::vector<RememberingListener::Heard> expected = {{"(null)", 1, "text"},
                                                              {"msraid", 0, "(null) (null)"}};
    EXPECT_EQ(listener.Lines(), expected);
    EXPECT_EQ(file.Lines().size(), 2U);
}

}  // namespace

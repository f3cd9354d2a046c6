// Hosts that have set a locale of their own.
#include "UnkindHostTest.h"

#include "qel/portable/CTraceOutput.h"
#include "test_support/Pattern.h"

#include <clocale>
#include <cstdlib>
#include <locale>
#include <sstream>
#include <stdexcept>

namespace unkindhost {
namespace {

class LocaleTest : public UnkindHostTest, public testing::WithParamInterface<const char*> {
  protected:
    static bool Use(const char* name) {
        ::setenv("LOCPATH", UNKIND_HOST_LOCALES, 1);
        try {
            std::locale::global(std::locale(name));  // sets the C library's too
            return std::string(std::setlocale(LC_ALL, nullptr)) == name;
        } catch (const std::runtime_error&) {
            return false;
        }
    }

    static std::string AskWithTrace(Host& host, const std::string& traceFile) {
        if (!CTraceOutput::OpenFile(traceFile)) {
            throw std::runtime_error("no trace file");
        }
        CTraceOutput::SetLevels(CTraceOutput::ALL_LEVELS);
        std::string text = host.m_Provider.GetInfo() + host.m_Provider.GetPDInfo() +
                           host.m_Provider.GetPDInfo("1234567", "2345678", "3456789");
        CTraceOutput::SetLevels(0);
        CTraceOutput::UseStandardError();
        for (const std::string& line : host.m_Trace.Lines()) {
            text += line + "\n";
        }
        const std::string written = testsupport::ReadFile(traceFile);
        const char* const changing = "([0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:]{8}\\.[0-9]{6}Z\t[0-9]+)\t";
        return text + testsupport::Replaced(written, changing, "TIME THREAD\t");
    }
};

TEST_P(LocaleTest, ChangesNoByteOfDocumentAndTrace) {
    const std::string traceFile = m_Root / "trace";
    const auto ask = [&](const char* name) {
        return InHost([&](Host& host) {
            return name == nullptr || Use(name) ? AskWithTrace(host, traceFile) : "no such locale";
        });
    };
    const std::string seen = ask(GetParam());
    if (seen == "no such locale") {
        GTEST_SKIP() << "this locale cannot be made; Debian's package \"locales\" has its source";
    }
    EXPECT_EQ(seen, ask(nullptr));
    EXPECT_THAT(seen, testing::HasSubstr("1 execute vdkcli command.(vdkcli -ldpdinfo -a1234567)"));
    EXPECT_THAT(seen, testing::HasSubstr("TIME THREAD\tmsraid\t4\tCZORBALT_MngSrvRaid::GetInfo [END]\n"));
}

INSTANTIATE_TEST_SUITE_P(All, LocaleTest,
                         testing::Values("C.UTF-8", "tr_TR.UTF-8", "de_DE.UTF-8", "fr_FR.UTF-8",
                                         "fa_IR.UTF-8", "ar_EG.UTF-8", "hi_IN.UTF-8", "en_IN.UTF-8",
                                         "ru_RU.KOI8-R", "ja_JP.EUC-JP", "zh_TW.BIG5", "zh_CN.GB18030"),
                         [](const auto& locale) { return testsupport::Replaced(locale.param, "\\W", "_"); });

// Were it not so, the tests above would show nothing.
TEST_F(LocaleTest, OfAnotherCountryGroupsDigitsInStreams) {
    const std::string seen = InHost([](Host& /*host*/) {
        std::ostringstream text;
        text << (Use("en_IN.UTF-8") ? "" : "no such locale");
        text.imbue(std::locale());
        text << 1234567;
        return text.str();
    });
    if (seen.starts_with("no such locale")) {
        GTEST_SKIP() << seen;
    }
    EXPECT_EQ(seen, "12,34,567");
}

}  // namespace
}  // namespace unkindhost

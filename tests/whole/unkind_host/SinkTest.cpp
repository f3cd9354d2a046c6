// Hosts whose sink throws, or that pass null where a thing is meant.
#include "KeepingSink.h"
#include "UnkindHostTest.h"

#include <stdexcept>

namespace unkindhost {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class SinkTest : public UnkindHostTest {
  protected:
    /// A call with these arguments and nothing else; "status 80041001", or the exception that came out.
    static std::string Call(const Host& host, const char* method, IWbemObjectSink* sink) {
        std::string name = method == nullptr ? "" : method;
        try {
            return Describe(host.m_Provider.Provider().ExecMethodAsync(
                nullptr, method == nullptr ? nullptr : name.data(), 0, nullptr, nullptr, sink));
        } catch (const std::exception& exception) {
            return std::string("threw ") + exception.what();
        }
    }
    static std::string Describe(DWORD status) {
        char text[32];
        std::snprintf(text, sizeof text, "status %08x", static_cast<unsigned>(status));
        return text;
    }
};

TEST_F(SinkTest, NeedsNeitherClassNorContextNorInput) {
    const std::string seen = InHost([](Host& host) {
        KeepingSink sink;
        return Call(host, "GetInfo", &sink) + "\n" + sink.m_Document;
    });
    EXPECT_THAT(seen, StartsWith("status 00000000\n<?xml"));
    EXPECT_THAT(seen, testing::EndsWith("</RAID>\n"));
}

TEST_F(SinkTest, OfADriveQueryWithoutInputHearsOfTheMissingParameter) {
    const std::string seen = InHost([](Host& host) {
        KeepingSink sink;
        const std::string status = Call(host, "GetPDInfo", &sink);
        return status + ", return value " + std::to_string(sink.m_ReturnValue == 0x80000001U) + ", " +
               host.m_Trace.Texts(0).at(0);
    });
    EXPECT_EQ(seen, "status 00000000, return value 1, MSGID_MNGSRV_RAID_0001_F 09");
}

TEST_F(SinkTest, MayBeMissing) {
    const std::string seen = InHost([](Host& host) {
        return Call(host, "GetInfo", nullptr) + "\n" + Call(host, "GetPDInfo", nullptr) + "\n" +
               Call(host, nullptr, nullptr) + "\n" + host.Ask();
    });
    EXPECT_EQ(seen,
              "status 00000000\nstatus 00000000\n" + Describe(WBEM_E_INVALID_METHOD) + "\n" + KindAnswer());
}

TEST_F(SinkTest, WithoutAMethodNameHearsThatThereIsNoSuchMethod) {
    const std::string seen = InHost([](Host& host) {
        KeepingSink sink;
        return Call(host, nullptr, &sink) + "\n" + host.Ask();
    });
    EXPECT_EQ(seen, Describe(WBEM_E_INVALID_METHOD) + "\n" + KindAnswer());
}

TEST_F(SinkTest, ThatThrowsAtTheResultMakesTheCallFail) {
    const std::string seen = InHost([](Host& host) {
        KeepingSink sink;
        sink.m_OnIndicate = [] { throw std::runtime_error("no thanks"); };
        const std::string status = Call(host, "GetInfo", &sink);
        EXPECT_THAT(host.m_Trace.Texts(8),
                    testing::ElementsAre("CZORBALT_MngSrvRaid::ExecMethodAsync() [exception:no thanks]"));
        return status + "\n" + host.Ask();
    });
    EXPECT_EQ(seen, "status 80041001\n" + KindAnswer());
}

TEST_F(SinkTest, ThatThrowsSomethingOddMakesTheCallFail) {
    const std::string seen = InHost([](Host& host) {
        KeepingSink sink;
        sink.m_OnIndicate = [] { throw 7; };
        return Call(host, "GetInfo", &sink) + "\n" + host.Ask();
    });
    EXPECT_EQ(seen, "status 80041001\n" + KindAnswer());
}

TEST_F(SinkTest, ThatThrowsAtTheStatusGetsItsExceptionBack) {
    const std::string seen = InHost([](Host& host) {
        KeepingSink sink;
        sink.m_OnStatus = [] { throw std::runtime_error("no thanks"); };
        return Call(host, "GetInfo", &sink) + "\n" + host.Ask();
    });
    EXPECT_EQ(seen, "threw no thanks\n" + KindAnswer());
}

TEST_F(SinkTest, ThatCallsTheSameProviderOnceMoreIsAnswered) {
    const std::string seen = InHost([](Host& host) {
        KeepingSink sink;
        std::string inner;
        sink.m_OnStatus = [&] { inner = host.Ask(); };
        return Call(host, "GetInfo", &sink) + "\n" + inner;
    });
    EXPECT_EQ(seen, "status 00000000\n" + KindAnswer());
}

}  // namespace
}  // namespace unkindhost

// Hosts that cancel the thread that calls: the call comes to its end, the thread ends behind it.
#include "KeepingSink.h"
#include "UnkindHostTest.h"
#include "test_support/CountedSleep.h"

#include "qel/portable/CTraceOutput.h"

#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <thread>

namespace unkindhost {
namespace {

class CancellationTest : public UnkindHostTest {
  protected:
    /// One call of GetInfo on a thread of its own.
    class CallingThread final {
      public:
        /// `before` is run on the thread before the call.
        explicit CallingThread(
            const Host& host, std::function<void()> before = [] {})
            : m_Provider(host.m_Provider.Provider()), m_Before(std::move(before)) {
            if (::pthread_create(&m_Thread, nullptr, Run, this) != 0) {
                throw std::runtime_error("no thread");
            }
        }

        void Cancel() const { ::pthread_cancel(m_Thread); }

        /// How the thread ended, and what its call gave.
        [[nodiscard]] std::string Join() {
            void* result = nullptr;
            ::pthread_join(m_Thread, &result);
            const std::string document = m_Sink.m_Document.empty() ? "no document" : "a document";
            return (result == PTHREAD_CANCELED ? "cancelled with " : "came back with ") + document;
        }

      private:
        static void* Run(void* call) {
            auto& self = *static_cast<CallingThread*>(call);
            self.m_Before();
            std::string name = "GetInfo";
            self.m_Provider.ExecMethodAsync(nullptr, name.data(), 0, nullptr, nullptr, &self.m_Sink);
            ::pthread_testcancel();
            return nullptr;
        }

        CZORBALT_ServerService& m_Provider;
        std::function<void()> m_Before;
        KeepingSink m_Sink;
        pthread_t m_Thread{};
    };

    /// The trace is written too: that is a cancellation point as well.
    static void TraceAll() {
        EXPECT_TRUE(CTraceOutput::OpenFile("/dev/null"));
        CTraceOutput::SetLevels(CTraceOutput::ALL_LEVELS);
    }
    static void TraceNothing() {
        CTraceOutput::SetLevels(0);
        CTraceOutput::UseStandardError();
    }
};

TEST_F(CancellationTest, BeforeTheCallEndsTheThreadAfterIt) {
    const std::string seen = InHost([](Host& host) {
        TraceAll();
        const std::string how = CallingThread(host, [] { ::pthread_cancel(::pthread_self()); }).Join();
        TraceNothing();
        return how + "\n" + host.Ask();
    });
    EXPECT_EQ(seen, "cancelled with a document\n" + KindAnswer());
}

TEST_F(CancellationTest, DuringAToolRunEndsTheThreadAfterTheCall) {
    const std::string seen = InHost([](Host& host) {
        StandIn& standIn = host.UseStandIn();
        standIn.TakeNotes();
        standIn.Wait("-ldpdinfo -a0");
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        ::dup2(ends[0], STDIN_FILENO);
        ::close(ends[0]);

        constexpr std::size_t kRunThatWaits = 4;  // behind the version and two controller reports
        TraceAll();
        CallingThread call(host);
        while (standIn.Notes().size() < kRunThatWaits) {
            std::this_thread::yield();
        }
        call.Cancel();
        ::close(ends[1]);  // The tool goes on.
        const std::string how = call.Join();
        TraceNothing();
        return how + "\n" + host.Ask();
    });
    EXPECT_EQ(seen, "cancelled with a document\n" + KindAnswer());
}

TEST_F(CancellationTest, DuringAPauseEndsTheThreadAfterTheCall) {
    const std::string seen = InHost([](Host& host) {
        const std::string path = std::getenv("PATH");
        ::setenv("PATH", "/no/such/folder", 1);
        testsupport::OnPause([] {
            ::pthread_cancel(::pthread_self());
            ::usleep(1);  // where it would take effect, as in the pause itself
        });
        TraceAll();
        const std::string how = CallingThread(host).Join();
        TraceNothing();
        testsupport::ResetPauses();
        ::setenv("PATH", path.c_str(), 1);
        return how + "\n" + host.Ask();
    });
    EXPECT_EQ(seen, "cancelled with no document\n" + KindAnswer());
}

}  // namespace
}  // namespace unkindhost

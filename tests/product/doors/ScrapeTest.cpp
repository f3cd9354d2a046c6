// The metrics as those who collect them get them.

#include "OnLoopback.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace doors::test {
namespace {

using namespace testsupport;
using testing::HasSubstr;

class Scraping : public OnLoopback {
  protected:
    /// The value of a series by the API of a Prometheus; empty while there is none.
    [[nodiscard]] static std::string ValueOf(const std::string& series, const std::string& port) {
        const Ended ended = Command{.words = {"-sS", "-m", "60",
                                              "http://127.0.0.1:" + port + "/api/v1/query?query=" + series},
                                    .program = "/usr/bin/curl"}
                                .Run();
        const nlohmann::json answer = nlohmann::json::parse(ended.out, nullptr, false);
        if (answer.is_discarded() || answer.value("status", "") != "success") {
            return "";
        }
        const nlohmann::json& result = answer["data"]["result"];
        return result.empty() ? "" : result[0]["value"][1].get<std::string>();
    }
};

TEST_F(Scraping, PromtoolHasNothingToSay) {
    Start("large");
    m_Folder.Write("metrics", Get("/metrics").out);
    EXPECT_THAT(ReadFile(m_Folder / "metrics"), HasSubstr("\nraid_last_inquiry_success 1\n"));
    const Ended ended =
        Command{.words = {"-c", "exec promtool check metrics < \"$1\"", "sh", m_Folder / "metrics"},
                .program = "/bin/sh"}
            .Run();
    EXPECT_EQ(ended.out + ended.err, "");
    EXPECT_EQ(ended.ExitStatus(), 0);
}

TEST_F(Scraping, PrometheusKnowsHowTheServerIs) {
    Start("large");
    const std::string port = std::to_string(FreePort());
    m_Folder.Write(
        "prometheus.yml",
        "global:\n  scrape_interval: 1s\nscrape_configs:\n  - job_name: raid\n    static_configs:\n"
        "      - targets: ['127.0.0.1:" +
            m_Port + "']\n");
    const auto prometheus =
        Command{.words = {"--config.file=" + (m_Folder / "prometheus.yml"), "--log.level=error",
                          "--storage.tsdb.path=" + (m_Folder / "series"),
                          "--web.listen-address=127.0.0.1:" + port},
                .program = "/usr/bin/prometheus"}
            .Start();
    EXPECT_TRUE(ComesTrue([&] { return ValueOf("raid_health", port) == "2"; }));
    EXPECT_EQ(ValueOf("raid_last_inquiry_success", port), "1");
    EXPECT_EQ(ValueOf("count(raid_drive_health)", port), "26");
    EXPECT_EQ(ValueOf("up", port), "1");
    ::kill(prometheus->Process(), SIGTERM);
    EXPECT_EQ(prometheus->Wait().ExitStatus(), 0);
}

}  // namespace
}  // namespace doors::test

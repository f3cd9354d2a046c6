#include "Sweep.h"

#include <cstdio>
#include <filesystem>

namespace faults {
namespace {

/// A line of the table: one kind, failing once or from some call on.
class Line final {
  public:
    Line(Kind kind, bool isLasting) : m_Kind(kind), m_IsLasting(isLasting) {}

    void Add(const TrialResult& result, unsigned long at) {
        ++m_Points;
        ++m_Outcomes.at(static_cast<std::size_t>(result.outcome));
        if (!result.findings.empty()) {
            ++m_Findings;
        }
        for (const std::string& finding : result.findings) {
            std::printf("finding: %s, %s %lu: %s\n", NameOf(m_Kind), m_IsLasting ? "from" : "number", at,
                        finding.c_str());
        }
    }

    void Print() const {
        std::printf("%-15s %-6s %6lu", NameOf(m_Kind), m_IsLasting ? "from" : "once", m_Points);
        for (std::size_t outcome = 0; outcome < kOutcomes; ++outcome) {
            if (m_Outcomes.at(outcome) != 0) {
                std::printf("  %s %lu", NameOf(static_cast<Outcome>(outcome)), m_Outcomes.at(outcome));
            }
        }
        std::printf("  findings %lu\n", m_Findings);
        std::fflush(stdout);
    }

    [[nodiscard]] unsigned long Points() const { return m_Points; }
    [[nodiscard]] unsigned long Findings() const { return m_Findings; }

  private:
    Kind m_Kind;
    bool m_IsLasting;
    unsigned long m_Points = 0;
    unsigned long m_Findings = 0;
    std::array<unsigned long, kOutcomes> m_Outcomes{};
};

// What never stops being interrupted never goes on.
bool CanLast(Kind kind) {
    return kind != Kind::InterruptedRead && kind != Kind::InterruptedWait;
}

Trial MakeTrial(const Order& order) {
    Trial trial;
    trial.order = order;
    if (order.kind == Kind::MakeDirectory) {  // Else the folders are there already and nothing depends on it.
        trial.before = [] { std::filesystem::remove_all(Root::ResultFolder().parent_path()); };
    }
    return trial;
}

}  // namespace

unsigned long Sweep(Scene& scene, const SweepOptions& options) {
    const Undisturbed usual = RunUndisturbed(scene);
    unsigned long points = 0;
    unsigned long findings = 0;
    for (std::size_t number = 0; number < kKinds; ++number) {
        const auto kind = static_cast<Kind>(number);
        const unsigned long stride = kind == Kind::Memory  ? options.memoryStride
                                     : kind == Kind::Trace ? options.traceStride
                                                           : options.callStride;
        for (const bool isLasting : {false, true}) {
            if ((options.only && *options.only != kind) || usual.calls.at(number) == 0 ||
                (isLasting && (options.isOnceOnly || !CanLast(kind)))) {
                continue;
            }
            Line line(kind, isLasting);
            for (unsigned long at = 1; at <= usual.calls.at(number); at += stride) {
                line.Add(RunTrial(scene, MakeTrial({kind, at, isLasting}), usual), at);
            }
            line.Print();
            points += line.Points();
            findings += line.Findings();
        }
    }
    std::printf("total %lu points, %lu findings\n", points, findings);
    return findings;
}

}  // namespace faults

#include "tests/faults/Sweep.h"

#include <cstdio>

namespace faults {
namespace {

/// A line of the table: one kind, failing once or from some call on.
class Line final {
  public:
    Line(Kind kind, bool isLasting) : m_Kind(kind), m_IsLasting(isLasting) {}

    void Add(const PointResult& result, unsigned long at) {
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

// What never stops being interrupted never goes on, and what does not matter once does not matter twice.
bool CanLast(Kind kind) {
    return kind != Kind::InterruptedRead && kind != Kind::InterruptedWait;
}

}  // namespace

unsigned long Sweep(Scene& scene, const SweepOptions& options) {
    scene.Prepare();
    std::vector<std::string> findings;
    const Undisturbed usual = RunUndisturbed(scene, findings);
    for (const std::string& finding : findings) {
        std::printf("finding: undisturbed: %s\n", finding.c_str());
    }
    unsigned long found = findings.size();
    unsigned long points = 0;
    for (std::size_t number = 0; number < kKinds; ++number) {
        const auto kind = static_cast<Kind>(number);
        if ((options.only && *options.only != kind) || usual.calls.at(number) == 0) {
            continue;
        }
        const unsigned long stride = kind == Kind::Memory ? options.memoryStride : 1;
        for (const bool isLasting : {false, true}) {
            if (isLasting && !CanLast(kind)) {
                continue;
            }
            Line line(kind, isLasting);
            for (unsigned long at = 1; at <= usual.calls.at(number); at += stride) {
                line.Add(RunPoint(scene, {kind, at, isLasting}, usual), at);
            }
            line.Print();
            points += line.Points();
            found += line.Findings();
        }
    }
    std::printf("total %lu points, %lu findings\n", points, found);
    return found;
}

}  // namespace faults

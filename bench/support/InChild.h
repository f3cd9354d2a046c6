#pragma once

#include <functional>

namespace bench {

/// What `measure` returns in a process of its own, so that memory which earlier measures left behind does not
/// count. Throws std::runtime_error where the child comes to another end.
[[nodiscard]] double InChild(const std::function<double()>& measure);

/// Of this process, in bytes: what is resident, and the most that ever was since `ForgetPeak`.
[[nodiscard]] double Resident();
[[nodiscard]] double PeakResident();
void ForgetPeak();

}  // namespace bench

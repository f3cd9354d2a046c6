#pragma once

namespace faults {

/// From now on lines of the trace may fail, by exception.
void LetTraceFail();

}  // namespace faults

#include "basics/Time.h"

#include <ctime>
#include <iomanip>
#include <sstream>

namespace basics {

std::string UtcText(std::chrono::system_clock::time_point time, const char* format) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(time);
    std::tm fields{};
    ::gmtime_r(&seconds, &fields);
    std::ostringstream text;
    text << std::put_time(&fields, format);
    return text.str();
}

}  // namespace basics

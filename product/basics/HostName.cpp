#include "basics/HostName.h"

#include <sys/utsname.h>

namespace basics {

std::string HostName() {
    struct utsname names {};
    return ::uname(&names) == 0 ? names.nodename : "";
}

}  // namespace basics

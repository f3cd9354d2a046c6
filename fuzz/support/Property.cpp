#include "Property.h"

#include <cstdio>
#include <cstdlib>

namespace fuzzing {

void Break(const char* property) {
    std::fprintf(stderr, "broken property: %s\n", property);
    std::abort();
}

}  // namespace fuzzing

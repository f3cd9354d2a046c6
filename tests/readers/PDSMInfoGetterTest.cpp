#include "tests/support/ModuleTest.h"

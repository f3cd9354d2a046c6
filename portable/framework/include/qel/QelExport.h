#pragma once

/// Marks what the framework's libraries export; everything else in them is hidden.
#define QEL_API __attribute__((visibility("default")))

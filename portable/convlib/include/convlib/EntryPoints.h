#pragma once

#include "itemconv/QelLibIF.h"

/// The four functions that the library exports; everything else in it is hidden. None of them throws, each
/// survives null arguments, and different threads may call them at once for different objects.
extern "C" {
/// Makes an interface object, to be destroyed by `DeleteLibIF`. Null when memory is short.
[[nodiscard]] CreateLibIFFunction CreateLibIF;

/// Destroys an interface object and with it the text that it last made.
DeleteLibIFFunction DeleteLibIF;

/// Makes an item, to be destroyed by `DeleteItemDisp`. Null when memory is short, when a text is null, and
/// when the valid flag is neither "TRUE" nor "FALSE": an item that cannot be told faithfully is not made at
/// all.
[[nodiscard]] CreateItemDispFunction CreateItemDisp;

/// Destroys an item that `CreateItemDisp` made.
DeleteItemDispFunction DeleteItemDisp;
}

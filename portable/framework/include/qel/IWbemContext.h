#pragma once

#include "qel/IQelUnknown.h"

/// What a caller passes along with a request for whoever serves it. Providers hand it on unread.
class IWbemContext : public IQelUnknown {};

#pragma once

#include <cstdint>

using HRESULT = std::int32_t;  ///< negative: failure
using DWORD = std::uint32_t;   ///< 32 bits on every platform
using BOOL = int;              ///< 0: false
using BSTR = char*;            ///< from SysAllocString, freed by SysFreeString only

/// Status codes of WBEM calls, as unsigned values; `static_cast<HRESULT>` makes them results.
enum WbemStatus : DWORD {
    WBEM_S_NO_ERROR = 0,
    WBEM_E_FAILED = 0x80041001,
    WBEM_E_NOT_FOUND = 0x80041002,
    WBEM_E_TYPE_MISMATCH = 0x80041005,
    WBEM_E_OUT_OF_MEMORY = 0x80041006,
    WBEM_E_INVALID_PARAMETER = 0x80041008,
    WBEM_E_NOT_SUPPORTED = 0x8004100C,
    WBEM_E_INVALID_CLASS = 0x80041010,
    WBEM_E_INVALID_METHOD = 0x8004102E,
};

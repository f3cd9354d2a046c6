#pragma once

#include "qel/QelExport.h"
#include "qel/QelTypes.h"

/// Functions with the names and habits of another platform's system interface, on POSIX. They take
/// NUL-terminated narrow strings; none throws; all may be called from any thread. C linkage: a host may put
/// its own in their place.
extern "C" {

/// Says something to a developer who watches: on standard error, and only while the environment variable
/// ZORBALT_SHOW_MESSAGE is set and not empty.
QEL_API void ShowMessage(const char* text, const char* caption);

/// A copy of `text` to be freed by SysFreeString. Null for null, and when there is no memory.
QEL_API BSTR SysAllocString(const char* text);
QEL_API void SysFreeString(BSTR text);

/// Less than, equal to or greater than 0 as `left` stands to `right`, byte by byte. Null comes before every
/// text.
QEL_API int lstrcmpW(const char* left, const char* right);

/// The calling thread's last system error (`errno`).
QEL_API DWORD GetLastError();

/// Blocks the calling thread for that long; signals do not shorten it.
QEL_API void Sleep(DWORD milliseconds);

/// The kernel's number of the calling thread.
QEL_API unsigned long GetCurrentThreadId();

/// Creates one directory level with the mode that the umask leaves. 0: created, -1: not (`GetLastError` says
/// why).
#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wreserved-identifier"
#endif
QEL_API int _mkdir(const char* path);
#ifdef __clang__
#pragma clang diagnostic pop
#endif

/// Removes a file. 0: failed (`GetLastError` says why).
QEL_API BOOL DeleteFileA(const char* path);
}

#include "test_support/TraceHook.h"

#include "qel/CTraceUtility.h"

#include <dlfcn.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string>
#include <utility>

namespace {

using WriteDebugFunction = void(const char*, int, const char*, ...);
using WriteTraceFunction = void(const char*, const char*, const char*);

template <class Function>
Function* FrameworksOwn(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

// Before the first line, which may be written where a look-up is not to be seen.
WriteDebugFunction* const g_writeDebug =
    FrameworksOwn<WriteDebugFunction>("_ZN13CTraceUtility10WriteDebugEPKciS1_z");
WriteTraceFunction* const g_writeTrace =
    FrameworksOwn<WriteTraceFunction>("_ZN13CTraceUtility10WriteTraceEPKcS1_S1_");

testsupport::TraceHook g_hook = [](int /*level*/, std::string_view /*text*/) {};

}  // namespace

void CTraceUtility::WriteDebug(const char* category, int level, const char* format, ...) {
    // Longer lines lose their ends; memory is the module's matter while its allocations are counted.
    std::array<char, 4096> text{};
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    g_hook(level, text.data());
    g_writeDebug(category, level, "%s", text.data());
}

void CTraceUtility::WriteTrace(const char* category, const char* messageId, const char* text) {
    g_hook(0, messageId);
    g_writeTrace(category, messageId, text);
}

namespace testsupport {

void OnTrace(TraceHook hook) {
    g_hook = std::move(hook);
}

void ResetTrace() {
    g_hook = [](int /*level*/, std::string_view /*text*/) {};
}

}  // namespace testsupport

// The address sanitizer's own bookkeeping takes most of a fuzzer's time; this much of it finds the same
// faults. Whoever looks into a finding asks for more: ASAN_OPTIONS=malloc_context_size=30.
extern "C" const char* __asan_default_options() {
    return "malloc_context_size=0:quarantine_size_mb=1:max_malloc_fill_size=0";
}

// Options of the sanitizers, which the variable ASAN_OPTIONS can override.
extern "C" {

// Limits the memory, because GNUstep's parser of property lists copies shared objects. Freed memory is filled, because
// GNUstep is not instrumented: an object that it uses after its end then has no valid class. GNUstep itself leaks, so
// leaks are looked for only on request.
const char* __asan_default_options() {
  return "hard_rss_limit_mb=1500:max_free_fill_size=65536:free_fill_byte=90:detect_leaks=0:allocator_may_return_null=1";
}

const char* __ubsan_default_options() { return "print_stacktrace=1"; }

const char* __lsan_default_options() { return "print_suppressions=0"; }

const char* __lsan_default_suppressions() {
  return "leak:libobjc.so\nleak:libgnustep\nleak:libfontconfig\nleak:__wrap___objc_exec_class\n";
}
}

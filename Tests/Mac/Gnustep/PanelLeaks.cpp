// Options that the sanitizers read at the start of the program. They are built in, because the test program
// also runs during the build, to list its tests.

/// Exact stacks, long enough to tell the libraries' leaks from ours by the functions on them.
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0:malloc_context_size=8";
}

extern "C" const char* __lsan_default_options() {
    return "print_suppressions=0";
}

/// Allocations of the runtime when the program is loaded, of font patterns, and of GNUstep's display server.
/// These libraries neither create nor keep objects of ours.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libobjc.so\n"
           "leak:libfontconfig.so\n"
           "leak:libgnustep-cairo\n";
}

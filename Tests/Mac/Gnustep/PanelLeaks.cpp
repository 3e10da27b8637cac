// What the sanitizers ask a program when it starts. Built in, because a test program also runs while it is
// built, to list its tests.

/// Stacks that are right, and long enough: the leaks of the libraries are told from ours by who is on them.
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0:malloc_context_size=8";
}

extern "C" const char* __lsan_default_options() {
    return "print_suppressions=0";
}

/// What the runtime makes when a program is loaded, the patterns of fonts, and what GNUstep's backend keeps
/// of its server. None of them makes or keeps objects of ours.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libobjc.so\n"
           "leak:libfontconfig.so\n"
           "leak:libgnustep-cairo\n";
}

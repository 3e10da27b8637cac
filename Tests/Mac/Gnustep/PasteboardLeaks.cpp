// What LeakSanitizer asks a program when it starts. Built in, because a test program also runs while it is
// built, to list its tests.

/// The tables of classes that the runtime makes when a program is loaded. No object is made there.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libobjc.so\n";
}

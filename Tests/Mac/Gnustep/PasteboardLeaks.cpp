// Options that LeakSanitizer reads at the start of the program. They are built in, because the test program
// also runs during the build, to list its tests.

/// The runtime's class tables, made when the program is loaded. No objects are created there.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libobjc.so\n";
}

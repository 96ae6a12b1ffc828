// The sanitizers look these functions up by name. A suppression is for a library of others alone,
// with the reason why it is no fault of ours.

extern "C" const char* __asan_default_options();
extern "C" const char* __ubsan_default_options();
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __tsan_default_options();

extern "C" const char* __asan_default_options() {
    return "detect_stack_use_after_return=1:strict_string_checks=1:check_initialization_order=1";
}

extern "C" const char* __ubsan_default_options() {
    return "print_stacktrace=1";
}

extern "C" const char* __lsan_default_suppressions() {
    return
        // Fontconfig keeps its parsed configuration until the process ends.
        "leak:libfontconfig\n"
        // The script engine's allocator keeps its pages, and pointers into them where nobody looks.
        "leak:libjavascriptcoregtk\n"
        // GLib's and GIO's worker threads and their queues live as long as the process.
        "leak:g_thread_pool_spawn_thread\n"
        "leak:g_main_context_push_thread_default\n";
}

extern "C" const char* __tsan_default_options() {
    // GLib, GIO and GTK are built without the sanitizer: it cannot see their futex-based locks, and
    // would take a lock order that only passes through them for a deadlock.
    return "ignore_noninstrumented_modules=1:detect_deadlocks=0";
}

// The address sanitizer's options for every test program. Its tracking of the
// thread-local blocks of libraries loaded at run time (Qt's image plugins) can
// read a stale record and bring the leak check down at exit; without that
// tracking the leak check still runs.
extern "C" const char* __asan_default_options() { return "intercept_tls_get_addr=0"; }

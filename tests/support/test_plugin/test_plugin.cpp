// tests/support/test_plugin/test_plugin.cpp
// A small shared library for the dynamic-library tests: a function to resolve.
extern "C" __attribute__((visibility("default"))) int osl_test_plugin_answer(int x) { return x * 2 + 1; }

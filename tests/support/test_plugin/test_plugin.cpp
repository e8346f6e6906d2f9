// tests/support/test_plugin/test_plugin.cpp
// A small shared library for the dynamic-library tests: a function and a data symbol to resolve.
#define OSL_PLUGIN_EXPORT __attribute__((visibility("default")))

extern "C" {

OSL_PLUGIN_EXPORT int osl_test_plugin_answer(int x) { return x * 2 + 1; }

OSL_PLUGIN_EXPORT extern const char osl_test_plugin_name[];
const char osl_test_plugin_name[] = "test_plugin";
}

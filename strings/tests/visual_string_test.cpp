// strings/tests/visual_string_test.cpp
#include <vum-qib-osl/strings/visual_string.h>
int main() {}

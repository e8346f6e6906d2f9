// ini/tests/thrown.h
// What an action throws as one line, "TEXT, code C, severity S, programm MODULE" (no source line), or "nothing thrown".
#pragma once

#include <vum-qib-osl/misc/qib_error.h>

#include <sstream>
#include <string>

namespace osl::test {

template <class F>
std::string thrown(F f) {
    std::ostringstream out;
    try { f(); } catch (const QIBError& e) { out << e; }
    const std::string text = out.str();
    return text.empty() ? "nothing thrown" : text.substr(0, text.find_last_not_of("0123456789 ") + 1);
}

}  // namespace osl::test

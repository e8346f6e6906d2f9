// fuzz/ini_parser_fuzz.cpp
// The INI reader on arbitrary bytes: it either builds a table or throws a parse error, and a
// table it builds is written in canonical form that reads back to the same text.
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

class Probe : public Ini {
public:
    // The canonical text of what the input reads as, or false on a parse error.
    bool read(const std::string& text, std::string& canonical) {
        std::istringstream in(text);
        try {
            ReadGroups(in);
        } catch (const QIBError& e) {
            if (e.Code() < 5 || e.Code() > 15 || e.What() != ExceptionNumberToString(static_cast<int>(e.Code()))) {
                std::abort();
            }
            return false;
        }
        std::ostringstream out;
        WriteGroups(out);
        canonical = out.str();
        return true;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::string canonical;
    if (!Probe().read(text, canonical) || canonical.empty()) return 0;
    std::string again;
    if (!Probe().read(canonical, again) || again != canonical) std::abort();
    return 0;
}

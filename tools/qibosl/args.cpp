// tools/qibosl/args.cpp
// Options and operands of a subcommand.
#include <vum-qib-osl/cmdline/qib_command_line.h>

#include <algorithm>
#include <cctype>

#include "tools/qibosl/commands.h"

namespace qibosl {
namespace {

class ElementLine : public QIBCommandLine {
public:
    explicit ElementLine(const std::vector<std::string>& elements) {
        std::vector<std::string> args{"qibosl"};
        args.insert(args.end(), elements.begin(), elements.end());
        Init(static_cast<int>(args.size()), args);
    }
};

bool sameName(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::toupper(static_cast<unsigned char>(x)) == std::toupper(static_cast<unsigned char>(y));
           });
}

}  // namespace

QIBCommandLine Args::options() const { return ElementLine(*this); }

std::vector<std::string> Args::operands(std::initializer_list<std::string_view> allowed) const {
    QIBCommandLine line = options();
    std::vector<std::string> words;
    std::string name;
    std::string value;
    while (line.ReadOption(name, value)) {
        if (name.empty()) {
            words.push_back(value);
            continue;
        }
        if (std::none_of(allowed.begin(), allowed.end(), [&](std::string_view a) { return sameName(a, name); })) {
            throw UsageError("unknown option " + name);
        }
    }
    return words;
}

}  // namespace qibosl

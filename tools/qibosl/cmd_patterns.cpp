// tools/qibosl/cmd_patterns.cpp
// qibosl match: the lines of a file that a regular expression finds; qibosl autoedit: an
// AutoEdit text resolved with variables from the command line.
#include <vum-qib-osl/osl.h>

#include <fstream>
#include <iostream>

#include "tools/qibosl/commands.h"

namespace qibosl {

int cmdMatch(const Args& args) {
    bool ignoreCase = false;
    bool unicode = false;
    std::size_t i = 0;
    for (; i < args.size() && args[i].size() > 1 && args[i][0] == '-'; ++i) {
        if (args[i] == "-i") {
            ignoreCase = true;
        } else if (args[i] == "-u") {
            unicode = true;
        } else {
            throw UsageError("unknown option '" + args[i] + "'");
        }
    }
    if (args.size() - i < 1 || args.size() - i > 2) throw UsageError("match needs a pattern and at most one file");
    Osl_UnicodeConfiguration::SetUnicodeMode(unicode);
    Osl_RegularExpression re;
    try {
        re.pattern(args[i], ignoreCase);
    } catch (const QIBError& e) {
        std::cerr << "qibosl match: " << e.What() << "\n";
        return 2;
    }
    std::ifstream file;
    if (args.size() - i == 2) {
        file.open(args[i + 1], std::ios::binary);
        if (!file) {
            std::cerr << "qibosl match: cannot open '" << args[i + 1] << "'\n";
            return 2;
        }
    }
    std::istream& in = file.is_open() ? static_cast<std::istream&>(file) : std::cin;
    bool any = false;
    for (std::string line; std::getline(in, line);) {
        if (re.search(line, 0, std::string::npos) != Osl_RegularExpression::not_found()) {
            std::cout << line << "\n";
            any = true;
        }
    }
    return any ? 0 : 1;
}

int cmdAutoEdit(const Args& args) {
    bool keepWidth = false;
    std::size_t i = 0;
    if (i < args.size() && args[i] == "-w") {
        keepWidth = true;
        ++i;
    }
    if (i >= args.size()) throw UsageError("autoedit needs a text");
    QIBAutoEditString text(args[i]);
    for (++i; i < args.size(); ++i) {
        const std::size_t eq = args[i].find('=');
        if (eq == std::string::npos || eq == 0) throw UsageError("'" + args[i] + "' is not NAME=VALUE");
        text.AddVariable(args[i].substr(0, eq), args[i].substr(eq + 1));
    }
    std::cout << text.Resolve(keepWidth) << "\n";
    return 0;
}

}  // namespace qibosl

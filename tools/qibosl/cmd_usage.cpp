// tools/qibosl/cmd_usage.cpp
// qibosl usage CATALOG SET...: a program's usage text as DisplayUsage prints it.
#include <vum-qib-osl/cmdline/qib_command_line.h>
#include <vum-qib-osl/message/message.h>

#include <iostream>

#include "tools/qibosl/commands.h"

namespace qibosl {

int cmdUsage(const Args& args) {
    std::vector<std::string> words = args.operands();
    if (words.size() < 2) throw UsageError("expects a catalog and at least one usage set");
    const std::string catalog = words.front();
    words.erase(words.begin());
    // Read first so that a bad catalog is an error here, not just a line on standard error.
    Message message;
    if (!message.Append(catalog)) {
        std::cerr << "qibosl usage: " << catalog << " is not a readable catalog"
                  << " (a relative name is looked up in MESSAGE_PATH when that is set)\n";
        return 1;
    }
    DisplayUsage(std::cout, words, "");
    return std::cout ? 0 : 1;
}

}  // namespace qibosl

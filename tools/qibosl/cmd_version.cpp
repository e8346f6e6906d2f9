// tools/qibosl/cmd_version.cpp
// qibosl version: the version registry as the product prints it.
#include <vum-qib-osl/misc/versions.h>

#include <iostream>

#include "osl_version.h"
#include "tools/qibosl/commands.h"

namespace qibosl {

int cmdVersion(const Args& args) {
    if (!args.empty()) throw UsageError("version takes no arguments");
    QibVr_Versions& versions = QibVr_Versions::Instance();
    versions.Register("qibosl", "qibosl " OSL_VERSION_STRING);
    std::cout << versions.ToString("qibosl") << std::flush;
    return 0;
}

}  // namespace qibosl

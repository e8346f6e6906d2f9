// tools/qibosl/cmd_files.cpp
// qibosl ls: the names of a directory that a wildcard matches, through the find-file handles;
// qibosl stat: the status of a path.
#include <vum-qib-osl/osl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <iomanip>
#include <iostream>

#include "tools/qibosl/commands.h"

namespace qibosl {
namespace {

const char* typeName(Osl_IO_Status::Type type) {
    switch (type) {
        case Osl_IO_Status::Type::regular: return "regular file";
        case Osl_IO_Status::Type::directory: return "directory";
        case Osl_IO_Status::Type::symlink: return "symbolic link";
        case Osl_IO_Status::Type::character_device: return "character device";
        case Osl_IO_Status::Type::block_device: return "block device";
        case Osl_IO_Status::Type::fifo: return "fifo";
        case Osl_IO_Status::Type::socket: return "socket";
        case Osl_IO_Status::Type::none: break;
    }
    return "none";
}

// "2026-11-23 05:58:04.123456789 UTC"
std::string utcText(Osl_IO_Status::time_point when) {
    const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(when.time_since_epoch()).count();
    const std::time_t seconds = static_cast<std::time_t>(ns / 1000000000);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[64];
    const std::size_t n = std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    std::snprintf(text + n, sizeof text - n, ".%09lld UTC", static_cast<long long>(ns % 1000000000));
    return text;
}

}  // namespace

int cmdLs(const Args& args) {
    const std::vector<std::string> dirs = args.operands({"-pattern", "-i"});
    if (dirs.size() != 1) throw UsageError("ls takes one DIRECTORY");
    const QIBCommandLine options = args.options();
    std::string pattern = options.GetOptionValue("-pattern");
    if (pattern.empty()) pattern.assign(1, '*');  // not = "*": a false -Wrestrict of g++ 12 at -O2
    const bool ignoreCase = options.HasFlag("-i");
    std::vector<std::string> names;
    std::string name;
    FHANDLE search = OslFindFirstFile(dirs[0], pattern, name, !ignoreCase);
    if (search == nullptr) {
        if (errno == ENOENT && Osl_Directory::exists(dirs[0])) return 1;  // nothing matches
        std::cerr << "qibosl ls: " << dirs[0] << ": " << std::strerror(errno) << "\n";
        return 2;
    }
    do names.push_back(name);
    while (OslFindNextFile(search, name));
    OslFindClose(search);
    std::sort(names.begin(), names.end());
    for (const std::string& n : names) std::cout << n << "\n";
    return 0;
}

int cmdStat(const Args& args) {
    const std::vector<std::string> paths = args.operands({"-l"});
    if (paths.size() != 1) throw UsageError("stat takes one PATH");
    const Osl_IO_Status status(paths[0], !args.options().HasFlag("-l"));
    if (!status.exists()) {
        std::cerr << "qibosl stat: " << paths[0] << ": No such file or directory\n";
        return 1;
    }
    const std::string owner = status.owner_name();
    std::cout << "path: " << paths[0] << "\n"
              << "type: " << typeName(status.type()) << "\n"
              << "size: " << status.size() << "\n"
              << "permissions: " << std::oct << std::setw(4) << std::setfill('0') << status.permissions() << std::dec
              << " (" << status.permissions_text() << ")\n"
              << "owner: " << status.owner() << (owner.empty() ? "" : " (" + owner + ")") << "\n"
              << "group: " << status.group() << "\n"
              << "links: " << status.links() << "\n"
              << "modified: " << utcText(status.modified()) << "\n"
              << "accessed: " << utcText(status.accessed()) << "\n"
              << "changed: " << utcText(status.changed()) << "\n";
    return 0;
}

}  // namespace qibosl

// tools/qibosl/cmd_catalog.cpp
// qibosl catalog compile SOURCE OUTPUT | catalog dump FILE: catalog files from and to their text form.
#include <vum-qib-osl/message/map_file.h>

#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "tools/qibosl/catalog_text.h"
#include "tools/qibosl/commands.h"

namespace qibosl {
namespace {

int compile(const std::string& source, const std::string& output) {
    std::ifstream in(source, std::ios::binary);
    if (!in) {
        std::cerr << "qibosl catalog compile: cannot read " << source << "\n";
        return 1;
    }
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    MapFile catalog;
    try {
        for (const auto& [key, value] : parseCatalogSource(text)) catalog.Insert(key, value);
    } catch (const SourceError& e) {
        std::cerr << source << ":" << e.what() << "\n";
        return 1;
    }
    if (!catalog.StoreMap(output)) {
        std::cerr << "qibosl catalog compile: cannot write " << output << "\n";
        return 1;
    }
    return 0;
}

int dump(const std::string& file) {
    MapFile catalog;
    if (!catalog.LoadMap(file)) {
        std::cerr << "qibosl catalog dump: " << file << " is not a readable catalog\n";
        return 1;
    }
    std::ostringstream out;
    for (const auto& [key, text] : catalog) out << formatCatalogEntry(key, text) << "\n";
    std::cout << out.str() << std::flush;
    return std::cout ? 0 : 1;
}

}  // namespace

int cmdCatalog(const Args& args) {
    const std::vector<std::string> words = args.operands();
    if (words.size() == 3 && words[0] == "compile") return compile(words[1], words[2]);
    if (words.size() == 2 && words[0] == "dump") return dump(words[1]);
    throw UsageError("expects compile SOURCE OUTPUT or dump FILE");
}

}  // namespace qibosl

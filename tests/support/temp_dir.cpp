// tests/support/temp_dir.cpp
#include "tests/support/temp_dir.h"

#include <stdlib.h>

#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

namespace osl::test {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "osl-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed: " + pattern);
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

}  // namespace osl::test

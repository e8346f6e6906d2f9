// tests/support/temp_dir.h
// A fresh directory per test, removed with everything in it afterwards.
#pragma once

#include <filesystem>
#include <string>

namespace osl::test {

class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// The path of a file or folder inside the directory, as text.
    std::string file(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

/// Writes bytes to a file, replacing it.
void writeFile(const std::string& path, const std::string& bytes);
/// The whole content of a file; empty when it cannot be read.
std::string readFile(const std::string& path);

}  // namespace osl::test

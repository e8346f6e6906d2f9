// misc/src/helpers.cpp
// Small helpers: the file ones are thin layers over the file wrappers, so that names are
// converted and errors mapped in one place.
#include <vum-qib-osl/misc/helpers.h>

#include <vum-qib-osl/file/osl_directory.h>
#include <vum-qib-osl/file/osl_file_system.h>
#include <vum-qib-osl/ini/general_configuration.h>
#include <vum-qib-osl/misc/install_dir.h>
#include <vum-qib-osl/misc/qib_error.h>

#include "platform/environment.h"
#include "platform/fs.h"

#include <cerrno>
#include <random>
#include <utility>

std::string GetDirName(const std::string& path) {
    std::size_t end = path.find_last_not_of('/');
    if (end == std::string::npos) return path.empty() ? "." : "/";
    const std::size_t slash = path.rfind('/', end);
    if (slash == std::string::npos) return ".";
    end = path.find_last_not_of('/', slash);
    return end == std::string::npos ? "/" : path.substr(0, end + 1);
}

bool IsDir(const std::string& path) { return Osl_Directory::exists(path); }

bool bCopyFile(const std::string& from, const std::string& to) {
    try {
        Osl_File_System::copy(from, to);
        return true;
    } catch (const QIBError&) {
        return false;
    }
}

bool MoveFileA(const std::string& from, const std::string& to) {
    try {
        Osl_File_System::rename(from, to);
        return true;
    } catch (const QIBError& e) {
        if (e.Code() != EXDEV) return false;
    }
    if (!bCopyFile(from, to)) return false;
    try {
        Osl_File_System::remove(from);
        return true;
    } catch (const QIBError&) {
        return false;
    }
}

std::string GetUserNameA() {
    const std::uint32_t uid = osl::platform::effectiveUser();
    std::string name = osl::platform::userName(uid);
    return name.empty() ? std::to_string(uid) : name;
}

int RandomNumber(int low, int high) {
    if (low > high) std::swap(low, high);
    thread_local std::mt19937 generator{std::random_device{}()};
    return std::uniform_int_distribution<int>(low, high)(generator);
}

std::string ItoA(long value, int base) {
    if (base < 2 || base > 36) return "";
    // Through the unsigned magnitude: -LONG_MIN does not fit a long.
    unsigned long magnitude = value < 0 ? 0UL - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
    std::string digits;
    do {
        digits.insert(digits.begin(), "0123456789abcdefghijklmnopqrstuvwxyz"[magnitude % static_cast<unsigned long>(base)]);
        magnitude /= static_cast<unsigned long>(base);
    } while (magnitude != 0);
    return value < 0 ? "-" + digits : digits;
}

void TrimBlanks(std::string& text) {
    const std::size_t last = text.find_last_not_of(" \t");
    if (last == std::string::npos) {
        text.clear();
        return;
    }
    text.erase(last + 1);
    text.erase(0, text.find_first_not_of(" \t"));
}

std::string trimBlanks(const std::string& text) {
    std::string trimmed = text;
    TrimBlanks(trimmed);
    return trimmed;
}

void add_token(std::vector<std::string>& tokens, const std::string& token) {
    std::string trimmed = trimBlanks(token);
    if (!trimmed.empty()) tokens.push_back(std::move(trimmed));
}

std::vector<std::string> tokenize(const std::string& text, const std::string& delimiters) {
    std::vector<std::string> tokens;
    std::size_t start = 0;
    for (std::size_t at = text.find_first_of(delimiters); at != std::string::npos;
         at = text.find_first_of(delimiters, start)) {
        add_token(tokens, text.substr(start, at - start));
        start = at + 1;
    }
    add_token(tokens, text.substr(start));
    return tokens;
}

bool GetKeyword(const std::string& line, const std::string& keyword, std::string& value) {
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) return false;
    const std::string key = trimBlanks(line.substr(0, equals));
    if (key.size() != keyword.size()) return false;
    for (std::size_t i = 0; i < key.size(); ++i) {
        auto fold = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
        if (fold(key[i]) != fold(keyword[i])) return false;
    }
    value = trimBlanks(line.substr(equals + 1));
    return true;
}

std::string GetLogFilePath(const std::string& fileName) {
    if (!fileName.empty() && fileName[0] == '/') return fileName;
    if (!GeneralConfiguration::GetRootDirectory().empty()) return GeneralConfiguration::GetLogDirectory() + fileName;
    const std::string root = GetBinDir();
    if (!root.empty()) return GeneralConfiguration::GetFixedDirectoryPath(root) + "log/" + fileName;
    return osl::platform::tempDirectory() + fileName;
}

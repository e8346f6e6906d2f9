// ini/src/ini_parser.cpp
// The INI reader: line splitting, group headers, keys and values, and loading a file.
#include <vum-qib-osl/ini/ini.h>

#include <vum-qib-osl/file/osl_directory.h>
#include <vum-qib-osl/file/unicode_signature.h>
#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/misc/wenv.h>

#include "ini/src/ini_internal.h"

#include <memory>

namespace {

constexpr char kWhere[] = "ini/src/ini";
// The reader's line buffer: a line of more characters ends the reading.
constexpr std::streamsize kLineBuffer = 10240;
constexpr std::size_t kFileBuffer = 1 << 16;

bool isBlankOrTab(char c) { return c == ' ' || c == '\t'; }

std::size_t skipBlanksAndTabs(const std::string& line, std::size_t pos) {
    while (pos < line.size() && isBlankOrTab(line[pos])) ++pos;
    return pos;
}

[[noreturn]] void throwParseError(int number, long line) {
    throw QIBError(Ini::ExceptionNumberToString(number), number, 12, kWhere, line);
}

}  // namespace

namespace osl::detail {

void logAndThrowIniError(const char* at, int number, long line) {
    OSL_LOG(SevInfo, "ini", at) << Ini::ExceptionNumberToString(number);
    throwParseError(number, line);
}

bool readEnvironment(const std::string& name, std::string& value) {
    return WEnv::WGetEnv(name, value) != WEnv::EnvNotSet;
}

}  // namespace osl::detail

bool Ini::GetNextLine(std::istream& in, std::string& line) {
    char buffer[kLineBuffer];
    while (in.good()) {
        in.getline(buffer, kLineBuffer, '\n');
        std::streamsize taken = in.gcount();
        if (taken == 0) return false;  // the stream ended before this line
        ++lineNumber_;
        // The stream stays good only when the line feed was taken (and counted). A longer line has
        // set the failure state: it is processed cut, and nothing after it is read.
        if (in.good()) --taken;
        std::size_t length = static_cast<std::size_t>(taken);
        if (length > 0 && buffer[length - 1] == '\r') --length;
        std::size_t first = 0;
        auto trimmed = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
        while (first < length && trimmed(buffer[first])) ++first;
        while (length > first && trimmed(buffer[length - 1])) --length;
        if (first == length || buffer[first] == ';') continue;
        line.assign(buffer + first, length - first);
        return true;
    }
    return false;
}

void Ini::GetGroupName(std::string& line) {
    std::size_t pos = skipBlanksAndTabs(line, 0);
    if (pos == line.size()) throwParseError(12, __LINE__);
    if (line[pos] != '[') throwParseError(7, __LINE__);
    pos = skipBlanksAndTabs(line, pos + 1);
    if (pos == line.size() || line[pos] == ']') throwParseError(9, __LINE__);
    if (line[pos] == ';') throwParseError(13, __LINE__);
    const std::size_t close = line.find_first_of(";]", pos);
    if (close == std::string::npos) throwParseError(10, __LINE__);
    if (line[close] == ';') throwParseError(13, __LINE__);
    std::size_t after = close + 1;
    while (after < line.size() && line[after] == ' ') ++after;
    if (after < line.size() && line[after] != ';') throwParseError(11, __LINE__);
    line = line.substr(pos, close - pos);
}

bool Ini::DoesGroupEnd(const std::string& line) {
    std::size_t pos = 0;
    while (pos < line.size() && line[pos] == ' ') ++pos;
    return pos < line.size() && line[pos] == '[' && line.find(']', pos + 1) != std::string::npos;
}

void Ini::GetKey(std::string& line, std::string& key) {
    const std::size_t start = skipBlanksAndTabs(line, 0);
    if (start == line.size()) throwParseError(12, __LINE__);
    if (line[start] == ';') throwParseError(15, __LINE__);
    if (line[start] == '[') throwParseError(7, __LINE__);
    const std::size_t stop = line.find_first_of("=; \t", start);
    if (stop == std::string::npos) throwParseError(8, __LINE__);
    if (line[stop] == ';') throwParseError(14, __LINE__);
    if (line[stop] != '=') {
        const std::size_t next = skipBlanksAndTabs(line, stop);
        if (next == line.size() || line[next] != '=') throwParseError(8, __LINE__);
    }
    key.assign(line, start, stop - start);
}

void Ini::GetValue(std::string& line, std::string& value) {
    // On a line that mentions "value=" anywhere, ";" belongs to the value: such lines carry texts
    // (patterns, command lines) where ";" is common. Other lines end their value at ";".
    const bool semicolonEndsValue = line.find("value=") == std::string::npos;
    const std::size_t equals = line.find('=');
    std::size_t start = equals == std::string::npos ? line.size() : skipBlanksAndTabs(line, equals + 1);
    if (start == line.size() || line[start] == ';') {
        value.clear();
        return;
    }
    std::size_t stop = semicolonEndsValue ? line.find(';', start) : std::string::npos;
    if (stop == std::string::npos) stop = line.size();
    while (stop > start && isBlankOrTab(line[stop - 1])) --stop;
    value.assign(line, start, stop - start);
}

void Ini::GetProperties(std::istream& in, std::string& line, IniProperties& properties) {
    std::string key;
    std::string value;
    while (GetNextLine(in, line) && !DoesGroupEnd(line)) {
        GetKey(line, key);
        GetValue(line, value);
        properties.try_emplace(key, value);  // the first definition of a key wins
    }
}

void Ini::GetNewGroup(std::istream& in, std::string& line, std::string& groupName, IniProperties& properties) {
    GetGroupName(line);
    groupName = line;
    GetProperties(in, line, properties);
}

void Ini::ReadGroups(std::istream& in) {
    std::string line;
    if (!GetNextLine(in, line)) throwParseError(5, __LINE__);
    while (in.good()) {
        std::string name;
        IniProperties properties;
        GetNewGroup(in, line, name, properties);
        // A group already in the table keeps what it has; the later one is dropped whole.
        groups_.try_emplace(std::move(name), std::move(properties));
    }
}

void Ini::ReadDataFromIniFile(std::fstream& in) {
    if (!in.is_open()) {
        in.close();
        osl::detail::logAndThrowIniError("Ini::ReadDataFromIniFile", 1, __LINE__);
    }
    Osl_Ifstream_SkipSignature(in);
    try {
        ReadGroups(in);
    } catch (const QIBError& e) {
        errorLine_ = lineNumber_;
        in.close();
        OSL_LOG(SevInfo, "ini", "Ini::ReadDataFromIniFile") << e.What();
        throw;
    }
    in.close();
}

void Ini::Load(const std::string& fileName, bool readOnly) {
    groups_.clear();
    LoadAdd(fileName, readOnly);
}

void Ini::LoadAdd(const std::string& fileName, bool readOnly) {
    OSL_LOG(SevInfo, "ini", "Ini::LoadAdd") << "Load Ini file from file: " << fileName
                                            << (readOnly ? " (read only) " : " (writtable)");
    fileName_ = fileName;
    readOnly_ = readOnly;
    lineNumber_ = 0;
    errorLine_ = 0;
    if (fileName.empty()) {
        OSL_LOG(SevInfo, "ini", "Ini::LoadAdd") << "File name is empty";
        return;
    }
    const std::unique_ptr<char[]> buffer(new char[kFileBuffer]);
    osl::detail::IniStream in;
    in.rdbuf()->pubsetbuf(buffer.get(), static_cast<std::streamsize>(kFileBuffer));
    in.open(fileName, std::ios::in | std::ios::binary);
    // A directory opens as a stream that reads nothing, which would pass for an empty file; only
    // a stream with nothing to read is worth the look.
    if (in.is_open() && in.peek() == std::char_traits<char>::eof() && Osl_Directory::exists(fileName)) in.close();
    ReadDataFromIniFile(in);
}

// ini/src/ini.cpp
// The INI table: comparison, queries, modifications, environment expansion and the writer.
// The reader is in ini_parser.cpp.
#include <vum-qib-osl/ini/ini.h>

#include <vum-qib-osl/file/osl_file.h>
#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/misc/qib_error.h>

#include "file/src/file_errors.h"
#include "ini/src/ini_internal.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <vector>

namespace {

constexpr std::array<unsigned char, 256> makeFoldTable() {
    std::array<unsigned char, 256> table{};
    for (int i = 0; i < 256; ++i) {
        table[static_cast<std::size_t>(i)] =
            static_cast<unsigned char>(i >= 'a' && i <= 'z' ? i - ('a' - 'A') : i);
    }
    return table;
}
constexpr std::array<unsigned char, 256> kFold = makeFoldTable();

// Cuts at the first CR or LF and turns ";" and tabs into blanks, so that a stored name or value
// cannot open a comment or break the line structure when written.
std::string sanitise(const std::string& text) {
    std::string result = text.substr(0, text.find_first_of("\r\n"));
    for (char& c : result) {
        if (c == ';' || c == '\t') c = ' ';
    }
    return result;
}

bool hasRegexSpecials(const std::string& name) { return name.find_first_of(".^$|()[]{}*+?\\") != std::string::npos; }

struct Variable {
    std::string token;  // "%NAME%"
    std::string value;
    std::unique_ptr<std::regex> pattern;  // set when NAME holds characters special to patterns
};

// Length of the match of the variable's reference at position pos of text, or 0. A name with
// characters special to regular expressions is taken as a pattern, unescaped: that is the
// contract of the expansion, and files written against it rely on the matches it gives.
std::size_t matchAt(const std::string& text, std::size_t pos, const Variable& v) {
    if (!v.pattern) return text.compare(pos, v.token.size(), v.token) == 0 ? v.token.size() : 0;
    std::smatch match;
    if (std::regex_search(text.cbegin() + static_cast<std::ptrdiff_t>(pos), text.cend(), match, *v.pattern,
                          std::regex_constants::match_continuous)) {
        return static_cast<std::size_t>(match.length(0));
    }
    return 0;
}

// One pass over the value: each "%NAME%" of a set variable is replaced by its value; what is
// substituted is never scanned again, and names that are not set keep their text.
std::string expandEnvironment(const std::string& value) {
    std::set<std::string> names;
    std::size_t pos = value.find('%');
    while (pos != std::string::npos) {
        const std::size_t close = value.find('%', pos + 1);
        if (close == std::string::npos) break;
        if (close > pos + 1) names.insert(value.substr(pos + 1, close - pos - 1));
        pos = value.find('%', close + 1);
    }
    std::vector<Variable> variables;
    bool anyPattern = false;
    for (const std::string& name : names) {
        std::string text;
        if (!osl::detail::readEnvironment(name, text)) continue;
        Variable v{"%" + name + "%", std::move(text), nullptr};
        if (hasRegexSpecials(name)) {
            try {
                v.pattern = std::make_unique<std::regex>(v.token);
            } catch (const std::regex_error&) {
                continue;  // not a valid pattern: it matches nothing
            }
            anyPattern = true;
        }
        variables.push_back(std::move(v));
    }
    if (variables.empty()) return value;
    std::string result;
    result.reserve(value.size());
    for (std::size_t i = 0; i < value.size();) {
        std::size_t length = 0;
        const Variable* hit = nullptr;
        if (value[i] == '%' || anyPattern) {
            for (const Variable& v : variables) {
                length = matchAt(value, i, v);
                if (length > 0) {
                    hit = &v;
                    break;
                }
            }
        }
        if (hit != nullptr) {
            result += hit->value;
            i += length;
        } else {
            result += value[i++];
        }
    }
    return result;
}

}  // namespace

bool StrCmpInSensitive::operator()(const std::string& left, const std::string& right) const {
    const std::size_t n = left.size() < right.size() ? left.size() : right.size();
    const auto* l = reinterpret_cast<const unsigned char*>(left.data());
    const auto* r = reinterpret_cast<const unsigned char*>(right.data());
    std::size_t i = 0;
    // Names share long prefixes ("section_12", "section_13"): skip equal bytes eight at a time.
    for (; i + 8 <= n; i += 8) {
        std::uint64_t a;
        std::uint64_t b;
        std::memcpy(&a, l + i, 8);
        std::memcpy(&b, r + i, 8);
        if (a != b) break;
    }
    for (; i < n; ++i) {
        if (l[i] == r[i]) continue;
        const unsigned char a = kFold[l[i]];
        const unsigned char b = kFold[r[i]];
        if (a != b) return a < b;
    }
    return left.size() < right.size();
}

IniGroupIterator::IniGroupIterator(const Ini* ini, Position position, Position end)
    : ini_(ini), position_(position), end_(end) {
    settle();
}

void IniGroupIterator::settle() {
    if (position_ == end_) {
        properties_ = nullptr;
        name_.clear();
    } else {
        properties_ = &position_->second;
        name_ = position_->first;
    }
}

Group IniGroupIterator::operator*() const { return Group{name_, properties_}; }

IniGroupIterator& IniGroupIterator::operator++() {
    if (position_ != end_) ++position_;
    settle();
    return *this;
}

IniGroupIterator IniGroupIterator::operator++(int) {
    IniGroupIterator old = *this;
    ++*this;
    return old;
}

bool IniGroupIterator::operator==(const IniGroupIterator& other) const {
    return ini_ == other.ini_ && position_ == other.position_;
}

Ini::Ini(const std::string& fileName, bool readOnly) { LoadAdd(fileName, readOnly); }

Ini::~Ini() = default;

const std::string& Ini::ExceptionNumberToString(int number) {
    static const std::array<std::string, 16>* texts = new std::array<std::string, 16>{
        "",
        "Error opening file",
        "File was opened for input only",
        "Failure to open file before flushing",
        "Group name is expected",
        "Ini file is empty",
        "Unexpected blank space , tab or ;",
        "Unexpected  [",
        " = Expected",
        "No group name",
        "No ] sign ",
        " ] sign doesn't end line ",
        "Empty line",
        "; sign is not allowed inside group name",
        "; sign is not allowed here",
        "Sign ; is not extpected",
    };
    if (number < 0 || number > 15) number = 0;
    return (*texts)[static_cast<std::size_t>(number)];
}

bool Ini::isGroupExist(const std::string& group) const { return groups_.find(group) != groups_.end(); }

bool Ini::isGroupHasKey(const std::string& group, const std::string& key) const {
    const auto g = groups_.find(group);
    return g != groups_.end() && g->second.find(key) != g->second.end();
}

const IniProperties* Ini::GetGroupProperty(const std::string& group) const {
    const auto g = groups_.find(group);
    return g == groups_.end() ? nullptr : &g->second;
}

void Ini::GetGroupNames(std::list<std::string>& names) const {
    names.clear();
    for (const auto& g : groups_) names.push_back(g.first);
}

namespace {

// GetKeyValue and GetString: one look-up of the group and one of the key.
std::string lookUp(const Ini::GroupTable& groups, const std::string& group, const std::string& key,
                   const std::string& defaultValue, bool expandEnvironmentReferences, bool* found) {
    const auto g = groups.find(group);
    if (g == groups.end()) {
        OSL_LOG(SevInfo, "ini", "Ini::GetKeyValue") << "Group :" << group << " Key: " << key
                                                    << " return default value: " << defaultValue
                                                    << " (cannot find group)";
        return defaultValue;
    }
    const auto k = g->second.find(key);
    if (k == g->second.end()) {
        OSL_LOG(SevInfo, "ini", "Ini::GetKeyValue") << "Group :" << group << " Key: " << key
                                                    << " return default value: " << defaultValue
                                                    << " (cannot find key in group)";
        return defaultValue;
    }
    if (found != nullptr) *found = true;
    if (!expandEnvironmentReferences) {
        OSL_LOG(SevInfo, "ini", "Ini::GetKeyValue") << "Group :" << group << " Key: " << key
                                                    << " return value: " << k->second;
        return k->second;
    }
    std::string result = k->second.find('%') == std::string::npos ? k->second : expandEnvironment(k->second);
    OSL_LOG(SevInfo, "ini", "Ini::GetKeyValue") << "Group :" << group << " Key: " << key
                                                << " return value: " << result << " (replaced)";
    return result;
}

}  // namespace

std::string Ini::GetKeyValue(const std::string& group, const std::string& key, const std::string& defaultValue,
                             bool expandEnvironmentReferences) const {
    return lookUp(groups_, group, key, defaultValue, expandEnvironmentReferences, nullptr);
}

std::string Ini::GetString(const std::string& group, const std::string& key, const std::string& defaultValue,
                           bool* found) const {
    if (found != nullptr) *found = false;
    return lookUp(groups_, group, key, defaultValue, true, found);
}

IniGroupIterator Ini::begin() const { return IniGroupIterator(this, groups_.begin(), groups_.end()); }

IniGroupIterator Ini::end() const { return IniGroupIterator(this, groups_.end(), groups_.end()); }

bool Ini::InsertNewGroup(const std::string& group) {
    const std::string name = sanitise(group);
    OSL_LOG(SevInfo, "ini", "Ini::InsertNewGroup") << "Group: " << name;
    const bool existed = groups_.erase(name) > 0;
    groups_.emplace(name, IniProperties());
    return existed;
}

bool Ini::SetKeyValue(const std::string& group, const std::string& key, const std::string& value) {
    const std::string g = sanitise(group);
    const std::string k = sanitise(key);
    const std::string v = key == "value" ? value : sanitise(value);
    OSL_LOG(SevInfo, "ini", "Ini::SetKeyValue") << "Group: " << g << " Key: " << k << " Val: " << v;
    const auto found = groups_.find(g);
    if (found == groups_.end()) {
        groups_[g].emplace(k, v);
        return true;  // a new group counts as "was there": callers rely on this
    }
    const bool existed = found->second.erase(k) > 0;
    found->second.emplace(k, v);
    return existed;
}

void Ini::EraseGroup(const std::string& group) {
    OSL_LOG(SevInfo, "ini", "Ini::EraseGroup") << "Group: " << group;
    groups_.erase(group);
}

void Ini::EraseKey(const std::string& group, const std::string& key) {
    OSL_LOG(SevInfo, "ini", "Ini::EraseKey") << "Group: " << group << " Key: " << key;
    const auto g = groups_.find(group);
    if (g != groups_.end()) g->second.erase(key);
}

void Ini::WriteGroups(std::ostream& out) const {
    for (const auto& g : groups_) {
        out << '[' << g.first << "]\n";
        for (const auto& kv : g.second) out << kv.first << '=' << kv.second << '\n';
        out << '\n';
    }
}

void Ini::FlushIniDataToFile(const std::string& fileName) {
    if (readOnly_) osl::detail::logAndThrowIniError("Ini::FlushIniDataToFile", 2, __LINE__);
    std::string target;
    if (fileName.empty()) {
        target = fileName_;
        OSL_LOG(SevInfo, "ini", "Ini::FlushIniDataToFile") << "Write to file " << target << " (member) ";
    } else {
        target = fileName;
        OSL_LOG(SevInfo, "ini", "Ini::FlushIniDataToFile") << "Write to file " << target << " (parameter) ";
    }
    std::ostringstream text;
    WriteGroups(text);
    const std::string bytes = text.str();
    // Through a temporary file and a rename: a crash never leaves a half-written file for the
    // next start-up to read.
    std::error_code ec;
    try {
        osl::detail::replaceContent(target, [&bytes](Osl_File& file) { file.write(bytes); }, 0666, {}, ec);
    } catch (const QIBError&) {
        ec = std::make_error_code(std::errc::io_error);  // the write failed (a full disk)
    }
    if (ec) osl::detail::logAndThrowIniError("Ini::FlushIniDataToFile", 3, __LINE__);
}

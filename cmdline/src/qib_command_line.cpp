// cmdline/src/qib_command_line.cpp
// The option queue of a program and the usage texts of its catalog.
#include <vum-qib-osl/cmdline/qib_command_line.h>

#include <vum-qib-osl/message/format_string.h>
#include <vum-qib-osl/message/message.h>
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/unicode_converter.h>
#include <vum-qib-osl/strings/utf8_string.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <string_view>

namespace {

char asciiUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

std::string toUpper(std::string text) {
    ToUpper2(text);
    return text;
}

bool equalNoCase(const std::string& a, const std::string& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return asciiUpper(x) == asciiUpper(y);
           });
}

void split(const std::string& element, std::string& name, std::string& value) {
    if (element.empty() || element[0] != '-') {
        name.clear();
        value = element;
        return;
    }
    const std::size_t equals = element.find('=');
    if (equals == std::string::npos) {
        name = toUpper(element);
        value.clear();
    } else {
        name = toUpper(element.substr(0, equals));
        value = element.substr(equals + 1);
    }
}

// Whether the split name of `element` equals `name` without regard to case. ASCII names are
// compared in place (upper-casing first would not change the answer); others are upper-cased.
bool hasName(const std::string& element, const std::string& name) {
    if (element.empty() || element[0] != '-') return name.empty();
    const std::string_view raw = std::string_view(element).substr(0, element.find('='));
    if (std::all_of(raw.begin(), raw.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        return raw.size() == name.size() && std::equal(raw.begin(), raw.end(), name.begin(), [](char x, char y) {
                   return asciiUpper(x) == asciiUpper(y);
               });
    }
    // Both sides through the library's case mapping, so that non-ASCII letters match in either case.
    std::string splitName;
    std::string value;
    split(element, splitName, value);
    return equalNoCase(splitName, toUpper(name));
}

bool startsWith(const std::string& text, char c) { return !text.empty() && text[0] == c; }

// Legacy narrowing of a wide argument, kept as it always was: for every byte of the UTF-16
// storage, the zero-terminated byte run starting there. ASCII comes through unchanged.
std::string narrowBytewise(const char16_t* argument) {
    std::string result;
    if (argument == nullptr) return result;
    const std::size_t units = std::char_traits<char16_t>::length(argument);
    const char* bytes = reinterpret_cast<const char*>(argument);
    for (std::size_t j = 0; j < 2 * units; ++j) result += bytes + j;  // the terminator stops each run
    return result;
}

}  // namespace

QIBCommandLine::QIBCommandLine() : m_Saved(m_Pending.end()) {}

QIBCommandLine::QIBCommandLine(const QIBCommandLine& other)
    : m_Arg0(other.m_Arg0), m_Pending(other.m_Pending), m_History(other.m_History), m_Saved(other.m_Saved) {}

QIBCommandLine& QIBCommandLine::operator=(const QIBCommandLine& other) {
    m_Arg0 = other.m_Arg0;
    m_Pending = other.m_Pending;
    m_History = other.m_History;
    m_Saved = other.m_Saved;
    return *this;
}

QIBCommandLine::~QIBCommandLine() = default;

void QIBCommandLine::Init(int argc, char* const argv[]) {
    std::vector<std::string> args;
    const bool unicode = Osl_UnicodeConfiguration::IsUnicodeMode();
    Osl_UnicodeConverter converter;
    if (unicode) converter.SetCurrentEncoding(Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding());
    for (int i = 0; i < argc; ++i) {
        std::string argument = argv[i] == nullptr ? std::string() : std::string(argv[i]);
        if (unicode && !argument.empty()) {
            std::string utf8;
            converter.ConvertCurrentEncodingtoUTF8(argument, utf8);  // what a failure leaves is the converter's
            argument = std::move(utf8);
        }
        if (argument.empty()) continue;
        args.push_back(std::move(argument));
    }
    Init(static_cast<int>(args.size()), args);
}

void QIBCommandLine::Init(int argc, char16_t* const argv[]) {
    std::vector<std::string> args;
    const bool unicode = Osl_UnicodeConfiguration::IsUnicodeMode();
    Osl_UnicodeConverter converter;
    for (int i = 0; i < argc; ++i) {
        if (!unicode) {
            args.push_back(narrowBytewise(argv[i]));
            continue;
        }
        std::string utf8;
        if (argv[i] != nullptr) converter.ConvertUCS2toUTF8(std::u16string(argv[i]), utf8);
        args.push_back(std::move(utf8));
    }
    Init(argc, args);
}

void QIBCommandLine::Init(int count, const std::vector<std::string>& args) {
    auto at = [&](int i) -> const std::string& {
        static const std::string empty;
        return i < count && static_cast<std::size_t>(i) < args.size() ? args[static_cast<std::size_t>(i)] : empty;
    };
    m_Arg0.clear();
    if (count != 0) m_Arg0 = at(0);
    for (int i = 1; i < count; ++i) {
        std::string cur = at(i);
        std::string name;
        std::string value;
        split(cur, name, value);
        if (value.empty()) {
            if (i + 1 < count && startsWith(at(i + 1), '=') && at(i + 2).empty()) {
                // Checks the argument after =value, not the text after "=": deliberate.
                cur += at(i + 1);
                i += 1;
            } else if (i + 2 < count && at(i + 1) == "=" && !startsWith(at(i + 2), '-')) {
                cur += "=" + at(i + 2);
                i += 2;
            } else if (i + 1 < count && !cur.empty() && cur.back() == '=' && !startsWith(at(i + 1), '-')) {
                cur += at(i + 1);
                i += 1;
            }
        }
        m_Pending.push_back(std::move(cur));
    }
}

void QIBCommandLine::Reset() { m_Pending.insert(m_Pending.end(), m_History.begin(), m_History.end()); }

bool QIBCommandLine::ReadOption(std::string& name, std::string& value) {
    if (m_Pending.empty()) return false;
    m_History.push_back(m_Pending.front());
    m_Pending.pop_front();
    split(m_History.back(), name, value);
    return true;
}

bool QIBCommandLine::PeakOption(std::string& name, std::string& value) const {
    if (m_Pending.empty()) return false;
    split(m_Pending.front(), name, value);
    return true;
}

void QIBCommandLine::PushOption(const std::string& name, const std::string& value) {
    m_Pending.push_back(name + "=" + value);
}

QIBCommandLine::Position QIBCommandLine::FindInputOption(const std::string& name) {
    return FindInputOption(name, m_Pending.begin());
}

QIBCommandLine::Position QIBCommandLine::FindInputOption(const std::string& name, Position start) {
    return std::find_if(start, m_Pending.end(), [&](const std::string& e) { return hasName(e, name); });
}

QIBCommandLine::ConstPosition QIBCommandLine::FindInputOption(const std::string& name) const {
    return FindInputOption(name, m_Pending.begin());
}

QIBCommandLine::ConstPosition QIBCommandLine::FindInputOption(const std::string& name, ConstPosition start) const {
    return std::find_if(start, m_Pending.end(), [&](const std::string& e) { return hasName(e, name); });
}

bool QIBCommandLine::FindAndPeekOption(const std::string& name, std::string& value) const {
    value.clear();
    ConstPosition found = FindInputOption(name);
    if (found == m_Pending.end()) return false;
    std::string foundName;
    split(*found, foundName, value);
    return true;
}

bool QIBCommandLine::FindAndReadOption(const std::string& name, std::string& value) {
    value.clear();
    Position found = FindInputOption(name);
    if (found == m_Pending.end()) return false;
    std::string foundName;
    split(*found, foundName, value);
    m_History.push_back(*found);
    m_Pending.erase(found);
    return true;
}

bool QIBCommandLine::HasOption(const std::string& name) const { return FindInputOption(name) != m_Pending.end(); }

bool QIBCommandLine::HasFlag(const std::string& name) const {
    for (ConstPosition p = FindInputOption(name); p != m_Pending.end(); p = FindInputOption(name, std::next(p))) {
        std::string foundName;
        std::string value;
        split(*p, foundName, value);
        if (value.empty()) return true;
    }
    return false;
}

std::string QIBCommandLine::GetOptionValue(const std::string& name) const {
    std::string value;
    FindAndPeekOption(name, value);
    return value;
}

std::vector<std::string> QIBCommandLine::GetOptionValues(const std::string& name) const {
    std::vector<std::string> values;
    for (ConstPosition p = FindInputOption(name); p != m_Pending.end(); p = FindInputOption(name, std::next(p))) {
        std::string foundName;
        std::string value;
        split(*p, foundName, value);
        values.push_back(std::move(value));
    }
    return values;
}

void QIBCommandLine::RemoveOption(const std::string& name, bool all) {
    for (Position p = FindInputOption(name); p != m_Pending.end(); p = FindInputOption(name, p)) {
        p = m_Pending.erase(p);
        if (!all) break;
    }
}

std::string QIBCommandLine::tos() const {
    std::string text;
    for (const std::string& element : m_Pending) text += element + " ";
    if (!text.empty()) text.pop_back();
    return text;
}

std::ostream& operator<<(std::ostream& out, const QIBCommandLine& line) {
    for (const std::string& element : line.m_Pending) out << element << ", ";
    return out;
}

bool DisplayUsage(std::ostream& out, std::string set, std::string catalog) {
    return DisplayUsage(out, std::vector<std::string>{std::move(set)}, catalog);
}

bool DisplayUsage(std::ostream& out, const std::vector<std::string>& sets, const std::string& catalog) {
    Message message(catalog);
    message.PrintCode(false);
    for (unsigned n = 1;; ++n) {
        const std::string number = std::to_string(n);
        if (message.HasEntry("usage_x" + number)) {
            const std::string header = message["usage_x" + number].Text();
            for (unsigned k = 1;; ++k) {
                bool anySet = false;
                for (const std::string& set : sets) {
                    const std::string key = set + "_x" + number + "_" + std::to_string(k);
                    if (!message.HasEntry(key)) continue;
                    anySet = true;
                    if (k == 1) out << header << "\n";
                    out << "\t" << message[key].Text() << "\n";
                }
                if (!anySet) break;
            }
        } else if (message.HasEntry("usage_" + number)) {
            FormatString line(message["usage_" + number].Text());
            const std::uint16_t arguments = line.GetArgumentsNumber();
            for (unsigned a = 1; a <= arguments; ++a) {
                bool anySet = false;
                for (const std::string& set : sets) {
                    const std::string key = set + "_" + number + "_" + std::to_string(a);
                    if (!message.HasEntry(key)) continue;
                    anySet = true;
                    line << message[key].Text();
                }
                if (!anySet) line << "";
            }
            out << line.Get() << "\n";
        } else {
            out.flush();
            return true;
        }
    }
}

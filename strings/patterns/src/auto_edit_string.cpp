// strings/patterns/src/auto_edit_string.cpp
// QIBAutoEditString. The three patterns are simple enough to scan by hand; the scanners below
// find exactly what the published regular expressions find (a test holds them to it), without
// sharing compiled expressions between threads.
#include <vum-qib-osl/strings/auto_edit_string.h>

#include <vum-qib-osl/strings/unicode_configuration.h>

#include <algorithm>
#include <ostream>
#include <utility>
#include <vector>

#include "strings/patterns/src/date_format.h"
#include "strings/src/utf_transform.h"

namespace {

using osl::detail::asciiLower;

bool equalNoCase(const std::string& a, const char* b) {
    std::size_t i = 0;
    for (; i < a.size() && b[i] != '\0'; ++i) {
        if (asciiLower(a[i]) != asciiLower(b[i])) return false;
    }
    return i == a.size() && b[i] == '\0';
}

bool isNameChar(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '#' || c == '@';
}

// Length of "%%" or "%%$" at i, else 0.
std::size_t headingLength(const std::string& s, std::size_t i) {
    if (i + 1 >= s.size() || s[i] != '%' || s[i + 1] != '%') return 0;
    return (i + 2 < s.size() && s[i + 2] == '$') ? 3 : 2;
}

// The text with every "%%" and "%%$" taken out, scanning left to right.
std::string stripHeadings(const std::string& text) {
    std::string name;
    name.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t heading = headingLength(text, i);
        if (heading > 0) {
            i += heading;
        } else {
            name += text[i++];
        }
    }
    return name;
}

// Length of the variable written at i, else 0. A name never holds '%', so the longest name is
// the only one that can be followed by another variable: no backtracking is needed.
std::size_t variableLength(const std::string& s, std::size_t i) {
    const std::size_t heading = headingLength(s, i);
    if (heading == 0) return 0;
    std::size_t j = i + heading;
    while (j < s.size() && isNameChar(s[j])) ++j;
    return j == i + heading ? 0 : j - i;
}

std::size_t findVariable(const std::string& s, std::size_t from, std::size_t& length) {
    for (std::size_t i = from; i < s.size(); ++i) {
        if ((length = variableLength(s, i)) > 0) return i;
    }
    return std::string::npos;
}

// Two or more variables in a row.
std::size_t findRun(const std::string& s, std::size_t from, std::size_t& length) {
    for (std::size_t i = from; i < s.size(); ++i) {
        const std::size_t first = variableLength(s, i);
        if (first == 0) continue;
        std::size_t end = i + first, n = 1, next = 0;
        while ((next = variableLength(s, end)) > 0) {
            end += next;
            ++n;
        }
        if (n >= 2) {
            length = end - i;
            return i;
        }
    }
    return std::string::npos;
}

bool isContinuation(char c) { return (static_cast<unsigned char>(c) & 0xc0) == 0x80; }

// Columns are characters: UTF-8 characters in Unicode mode, bytes in legacy mode.
std::size_t columns(const std::string& s, bool utf8) {
    if (!utf8) return s.size();
    std::size_t n = 0;
    for (char c : s) n += isContinuation(c) ? 0 : 1;
    return n;
}

// Byte position of the character with the given column number (size() when beyond).
std::size_t bytePos(const std::string& s, std::size_t column, bool utf8) {
    if (!utf8) return column < s.size() ? column : s.size();
    std::size_t i = 0;
    for (std::size_t c = 0; i < s.size(); ++i) {
        if (!isContinuation(s[i]) && c++ == column) return i;
    }
    return s.size();
}

}  // namespace

bool operator<(const QIBNoCaseString& a, const QIBNoCaseString& b) {
    const std::size_t n = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < n; ++i) {
        const auto x = static_cast<unsigned char>(asciiLower(a[i]));
        const auto y = static_cast<unsigned char>(asciiLower(b[i]));
        if (x != y) return x < y;
    }
    return a.size() < b.size();
}

QIBAutoEditString::QIBAutoEditString(const std::string& pattern) : pattern_(pattern), dateFormat_("%s%m%d") {}

QIBAutoEditString::~QIBAutoEditString() = default;

const std::string& QIBAutoEditString::GetVariableHeadingPattern() {
    static const std::string* text = new std::string("%%\\$?");
    return *text;
}

const std::string& QIBAutoEditString::GetVariablePattern() {
    static const std::string* text = new std::string(GetVariableHeadingPattern() + "[A-Za-z0-9_#@]+");
    return *text;
}

const std::string& QIBAutoEditString::GetRecursiveVariablePattern() {
    static const std::string* text =
        new std::string("(" + GetVariablePattern() + ")(" + GetVariablePattern() + ")+");
    return *text;
}

void QIBAutoEditString::AddVariable(const std::string& name, const std::string& value) {
    variables_[QIBNoCaseString(name)] = value;
}

bool QIBAutoEditString::HasUserDefinedVariable(const std::string& name) const {
    return variables_.find(QIBNoCaseString(name)) != variables_.end();
}

std::string QIBAutoEditString::Resolve(bool keepWidth) {
    work_ = pattern_;
    ResolveSequencedVariables();
    if (keepWidth) {
        ResolveFlatVariables(true);
    } else {
        ResolveFlatVariables();
    }
    return work_;
}

void QIBAutoEditString::ResolveSequencedVariables() {
    std::string out;
    std::size_t from = 0, length = 0, at;
    while ((at = findRun(work_, from, length)) != std::string::npos) {
        out.append(work_, from, at - from);
        out += FlattenSequencedVariable(work_.substr(at, length));
        from = at + length;
    }
    out.append(work_, from, std::string::npos);
    work_.swap(out);
}

std::string QIBAutoEditString::FlattenSequencedVariable(const std::string& text) {
    const std::size_t p = text.find('%', 2);
    if (p == std::string::npos) return text;
    return text.substr(0, p) + RecursiveResolve(text.substr(p));
}

std::string QIBAutoEditString::RecursiveResolve(const std::string& text) {
    // The variables of the run, left to right: each piece runs up to the next "%" at or after
    // its third character.
    std::vector<std::pair<std::size_t, std::size_t>> pieces;
    bool plain = true;  // every piece ends with a name character
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t next = std::min(text.find('%', at + 2), text.size());
        pieces.emplace_back(at, next - at);
        plain = plain && text[next - 1] != '%';
        at = next;
    }
    if (pieces.empty()) return ResolveVariable(text);
    // Right to left, without recursion: the value so far is appended to the piece on its left.
    std::string result = ResolveVariable(text.substr(pieces.back().first, pieces.back().second));
    if (!plain) {
        for (std::size_t i = pieces.size() - 1; i-- > 0;)
            result = ResolveVariable(text.substr(pieces[i].first, pieces[i].second) + result);
        return result;
    }
    // Linear form: a piece ends with a name character, so the name of piece + value is the name
    // of the piece followed by the name of the value; both grow at their front, so they are kept
    // reversed. A name longer than every variable's needs no lookup: the text stays as written.
    std::size_t longest = 4;  // "date"
    for (const auto& entry : variables_) longest = std::max(longest, entry.first.size());
    auto reversed = [](std::string x) {
        std::reverse(x.begin(), x.end());
        return x;
    };
    std::string revText = reversed(result);
    std::string revName = reversed(stripHeadings(result));
    for (std::size_t i = pieces.size() - 1; i-- > 0;) {
        const std::string piece = text.substr(pieces[i].first, pieces[i].second);
        const std::string pieceName = stripHeadings(piece);
        if (pieceName.size() + revName.size() <= longest) {
            const std::string name = pieceName + reversed(revName);
            std::string value;
            bool resolved = true;
            if (HasUserDefinedVariable(name)) value = ResolveUserDefinedVariable(name);
            else if (IsBuildInVariable(name)) value = ResolveBuildInVariable(name);
            else resolved = false;
            if (resolved) {
                revText = reversed(value);
                revName = reversed(stripHeadings(value));
                continue;
            }
        }
        revText.append(piece.rbegin(), piece.rend());
        revName.append(pieceName.rbegin(), pieceName.rend());
    }
    return reversed(std::move(revText));
}

void QIBAutoEditString::ResolveFlatVariables() { ResolveFlatVariables(false); }

void QIBAutoEditString::ResolveFlatVariables(bool keepWidth) {
    const bool utf8 = Osl_UnicodeConfiguration::IsUnicodeMode();
    std::string out;
    std::size_t from = 0, length = 0, at;
    while ((at = findVariable(work_, from, length)) != std::string::npos) {
        out.append(work_, from, at - from);
        const std::string value = ResolveVariable(work_.substr(at, length));
        if (!out.empty() && out.back() == '.') out.pop_back();
        from = at + length;
        if (!keepWidth) {
            out += value;
            continue;
        }
        const std::size_t written = length;  // the variable is ASCII: bytes are columns
        const std::size_t wanted = columns(value, utf8);
        if (wanted <= written) {
            out += value;
            out.append(written - wanted, ' ');
            continue;
        }
        std::size_t cut = bytePos(value, written, utf8);
        out.append(value, 0, cut);
        for (std::size_t i = 0; i < wanted - written && from < work_.size() && work_[from] == ' '; ++i) {
            std::size_t next = cut + 1;
            while (utf8 && next < value.size() && isContinuation(value[next])) ++next;
            out.append(value, cut, next - cut);
            cut = next;
            ++from;
        }
    }
    out.append(work_, from, std::string::npos);
    work_.swap(out);
}

std::string QIBAutoEditString::ResolveVariable(const std::string& text) {
    const std::string name = stripHeadings(text);
    if (HasUserDefinedVariable(name)) return ResolveUserDefinedVariable(name);
    if (IsBuildInVariable(name)) return ResolveBuildInVariable(name);
    return text;
}

bool QIBAutoEditString::IsBuildInVariable(const std::string& name) const { return equalNoCase(name, "date"); }

std::string QIBAutoEditString::ResolveBuildInVariable(const std::string& name) const {
    if (!IsBuildInVariable(name)) return name;
    return osl::detail::formatToday(dateFormat_);
}

std::string QIBAutoEditString::ResolveUserDefinedVariable(const std::string& name) const {
    const auto it = variables_.find(QIBNoCaseString(name));
    return it == variables_.end() ? std::string() : it->second;
}

void QIBAutoEditString::EliminateConcatinationString() {
    std::string out;
    out.reserve(work_.size());
    for (std::size_t i = 0; i < work_.size();) {
        if (work_.compare(i, 3, "%%.") == 0) {
            i += 3;
        } else {
            out += work_[i++];
        }
    }
    work_.swap(out);
}

bool QIBAutoEditString::PatternHasVariable(const std::string& name) const {
    for (std::size_t i = 0; i + 1 < pattern_.size(); ++i) {
        if (pattern_[i] != '%' || pattern_[i + 1] != '%') continue;
        if (pattern_.compare(i + 2, name.size(), name) == 0) return true;
        if (i + 2 < pattern_.size() && pattern_[i + 2] == '$' && pattern_.compare(i + 3, name.size(), name) == 0) {
            return true;
        }
    }
    return false;
}

std::ostream& operator<<(std::ostream& out, const QIBAutoEditString& text) {
    out << text.pattern_ << '\n';
    for (const auto& [name, value] : text.variables_) out << name << '=' << value << '\n';
    return out;
}

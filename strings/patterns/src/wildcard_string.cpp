// strings/patterns/src/wildcard_string.cpp
// WildcardString and the translation of wildcards into anchored regular expressions.
#include <vum-qib-osl/strings/wildcard_string.h>

namespace {

constexpr char kMarker = '\xff';

void replaceAll(std::string& text, char what, const char* with) {
    std::string out;
    out.reserve(text.size() + text.size() / 4);
    for (char c : text) {
        if (c == what) {
            out += with;
        } else {
            out += c;
        }
    }
    text.swap(out);
}

}  // namespace

void WStringAsRegexp(const std::string& wildcard, Osl_UTF8String& regexp) {
    std::string text = wildcard;
    // Each character goes through the marker byte first; a 0xFF already in the wildcard is
    // therefore escaped as the first character, the backslash. Kept: callers rely on it.
    for (char special : std::string("\\^$.[]+|()")) {
        replaceAll(text, special, std::string(1, kMarker).c_str());
        const char escaped[] = {'\\', special, '\0'};
        replaceAll(text, kMarker, escaped);
    }
    replaceAll(text, '?', ".");
    replaceAll(text, '*', std::string(1, kMarker).c_str());
    replaceAll(text, kMarker, ".*");
    regexp = "^" + text + "$";
}

WildcardString::WildcardString(const std::string& pattern, bool caseSensitive)
    : caseSensitive_(caseSensitive), pattern_(pattern) {
    WStringAsRegexp(pattern_, regexp_);
    compile();
}

WildcardString::WildcardString(const char* pattern, bool caseSensitive)
    : WildcardString(std::string(pattern != nullptr ? pattern : ""), caseSensitive) {}

WildcardString::WildcardString(const WildcardString& other)
    : caseSensitive_(other.caseSensitive_), pattern_(other.pattern_), regexp_(other.regexp_) {
    compile();
}

WildcardString& WildcardString::operator=(const WildcardString& other) {
    if (this != &other) {
        caseSensitive_ = other.caseSensitive_;
        pattern_ = other.pattern_;
        regexp_ = other.regexp_;
        compiled_ = Osl_RegularExpression();
        compile();
    }
    return *this;
}

WildcardString::~WildcardString() = default;

void WildcardString::compile() { compiled_.pattern(regexp_, !caseSensitive_); }

void WildcardString::SetPattern(const std::string& pattern) {
    pattern_ = pattern;
    WStringAsRegexp(pattern_, regexp_);
    compile();
}

void WildcardString::SetCase(bool caseSensitive) {
    if (caseSensitive == caseSensitive_) return;
    caseSensitive_ = caseSensitive;
    compile();
}

bool WildcardString::HasPattern() const { return regexp_.find_first_of("?*") != std::string::npos; }

bool WildcardString::Match(const std::string& s) const { return compiled_.matchShared(s) > 0; }

bool WildcardString::Match(const char* p, std::size_t, std::size_t) const {
    return Match(std::string(p != nullptr ? p : ""));
}

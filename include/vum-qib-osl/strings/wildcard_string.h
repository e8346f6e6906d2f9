// File-name style wildcards ("*.txt", "report-??.csv") matched through regular expressions.
#pragma once

#include <vum-qib-osl/osl_api.h>
#include <vum-qib-osl/strings/regular_expression.h>
#include <vum-qib-osl/strings/utf8_string.h>

#include <cstddef>
#include <string>

/// Translates a wildcard into an anchored regular expression: \ ^ $ . [ ] + | ( ) are escaped
/// with a backslash, ? becomes . (any one character), * becomes .* and the result is put
/// between ^ and $. { and } are not escaped. A byte 0xFF in the wildcard is taken for a
/// backslash (0xFF serves as the translation's marker). "*.txt" gives "^.*\.txt$".
OSL_API void WStringAsRegexp(const std::string& wildcard, Osl_UTF8String& regexp);

/// A wildcard with its translation, compiled in the mode of the process at construction. The
/// match covers the whole text: * and ? match line feeds too, and a text with a line feed after
/// the last character the wildcard names does not match.
/// Thread-safety: the const members (Match included) may be called from several threads at
/// once; SetPattern, SetCase and assignment need the object to themselves.
/// Constructors and SetPattern throw the QIBError of Osl_RegularExpression::pattern when the
/// translation does not compile (a wildcard such as "{1}", or invalid UTF-8 in Unicode mode).
class OSL_API WildcardString {
public:
    explicit WildcardString(const std::string& pattern, bool caseSensitive = true);
    explicit WildcardString(const char* pattern, bool caseSensitive = true);
    /// Copies flag, wildcard and translation and compiles again.
    WildcardString(const WildcardString& other);
    WildcardString& operator=(const WildcardString& other);
    ~WildcardString();

    void SetPattern(const std::string& pattern);
    /// When the flag changes, compiles again with ignore-case = !caseSensitive. Ignoring case
    /// is sticky: after SetCase(false), SetCase(true) still ignores case.
    void SetCase(bool caseSensitive);

    const Osl_UTF8String& GetPattern() const { return pattern_; }
    const Osl_UTF8String& AsRegexp() const { return regexp_; }
    bool CaseSensitive() const { return caseSensitive_; }
    /// True when the translation holds a ? or a * (a wildcard with only ? gives false: its
    /// translation holds dots).
    bool HasPattern() const;

    /// True when the whole of s matches; an empty match counts as none, so "" never matches.
    bool Match(const std::string& s) const;
    /// Match of the text at p (null-terminated); the two numbers are not used.
    bool Match(const char* p, std::size_t unused1 = 0, std::size_t unused2 = 0) const;

private:
    void compile();

    bool caseSensitive_;
    Osl_UTF8String pattern_;
    Osl_UTF8String regexp_;
    Osl_RegularExpression compiled_;  // matched through its thread-safe const path only
};

// Regular expressions over the library's text, in byte positions.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

/// A compiled regular expression (PCRE2 syntax: groups, alternation, classes, lookaround).
/// The mode is asked when a pattern is compiled: in Unicode mode pattern and subjects are UTF-8
/// and match character by character (case folding and \w per Unicode); in legacy mode they are
/// windows-1252 bytes, and ignoring case knows the windows-1252 letters (é/É, š/Š, ÿ/Ÿ ...).
/// Every position is a byte position of the subject. $ matches only at the very end of the
/// subject and . matches a line feed too; a pattern that wants line anchors starts with (?m),
/// one that wants . to stop at line feeds with (?-s).
/// Thread-safety: search, match, groups, group and replace keep the last subject in the object:
/// one thread at a time per object. Separate objects may be used from separate threads.
class OSL_API Osl_RegularExpression {
public:
    /// Start (inclusive) and end (exclusive) byte positions.
    typedef std::pair<std::uint64_t, std::uint64_t> range;
    static constexpr std::size_t npos = std::string::npos;

    /// The option bit every compilation sets (the extended syntax; there is no other).
    static constexpr long kExtendedSyntax = 0x20000;
    /// The option bit of ignoring case.
    static constexpr long kIgnoreCase = 0x80000;

    /// The range (npos, npos): compare a result with it to tell that nothing matched.
    static range not_found();

    /// Nothing compiled: searches find nothing, match gives -2.
    Osl_RegularExpression();
    /// Compiles at once; throws like `pattern`.
    explicit Osl_RegularExpression(const std::string& pattern, bool ignoreCase = false);
    ~Osl_RegularExpression();
    Osl_RegularExpression(Osl_RegularExpression&&) noexcept;
    Osl_RegularExpression& operator=(Osl_RegularExpression&&) noexcept;
    Osl_RegularExpression(const Osl_RegularExpression&) = delete;
    Osl_RegularExpression& operator=(const Osl_RegularExpression&) = delete;

    /// Compiles the pattern, replacing what was compiled. Sets kExtendedSyntax, and with
    /// ignoreCase kIgnoreCase, in the option word for good: once an object ignored case, every
    /// later compilation ignores case too, until SetOption replaces the word.
    /// Throws QIBError "Invalid regular expression pattern: " PATTERN "\nGCError: " followed by
    /// the engine's message (code 12, severity 12); nothing is compiled afterwards.
    void pattern(const std::string& pattern, bool ignoreCase = false);
    /// Replaces the option word used by later compilations.
    void SetOption(long options);

    /// The first match inside s[pos, pos + len) (len npos or past the end: to the end of s), or
    /// not_found() when there is none, when pos lies beyond s, when the span is empty or on an
    /// error (invalid UTF-8 in Unicode mode, pos inside a character, engine limits). Text
    /// before pos is seen by lookbehind; ^ matches only at the start of s.
    /// The UTF-8 of a subject is checked once per loop, not at every call: a search from pos 0,
    /// or on a string at another address or of another size, checks again; a search from
    /// further on in the same string relies on the earlier check (bytes changed in between
    /// are matched safely, an invalid sequence then simply matches nothing).
    range search(const std::string& s, std::size_t pos = 0, std::size_t len = npos);
    /// As search, giving the length in bytes of the match (0 for an empty match), -1 when
    /// nothing matched and -2 on an error or when nothing is compiled.
    int match(const std::string& s, std::size_t pos = 0, std::size_t len = npos);
    /// Number of the last group of the last search or match that took part, counting from
    /// group 1 on until one did not (0 when group 1 did not, or nothing matched).
    std::size_t groups();
    /// The range of group i (0: the whole match) of the last search or match, or not_found().
    range group(std::size_t i);
    /// Replaces the first non-empty match in s[pos, pos + len) by `with`; with `all`, goes on
    /// right behind the inserted text through what is left of the span, until nothing is
    /// found or a match is empty. Returns the number of replacements. Linear in the size of s.
    std::size_t replace(std::string& s, std::size_t pos, std::size_t len, const std::string& with,
                        bool all = false);

private:
    friend class WildcardString;
    /// match(s) over the whole of s, keeping nothing: safe from several threads at once.
    int matchShared(const std::string& s) const;

    struct Impl;
    std::unique_ptr<Impl> impl_;
};

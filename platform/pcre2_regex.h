// platform/pcre2_regex.h
// A compiled regular expression on PCRE2 (8-bit library), in standard types only. UTF-8 text
// is matched in UTF mode with Unicode properties; legacy text as windows-1252 bytes with
// character tables that know the windows-1252 letters and their cases. $ matches only at the
// very end of the subject and . matches a line feed too; (?m) and (?-s) turn that off.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace osl::platform {

class Pcre2Regex {
public:
    Pcre2Regex();
    ~Pcre2Regex();
    Pcre2Regex(Pcre2Regex&&) noexcept;
    Pcre2Regex& operator=(Pcre2Regex&&) noexcept;
    Pcre2Regex(const Pcre2Regex&) = delete;
    Pcre2Regex& operator=(const Pcre2Regex&) = delete;

    /// Compiles the pattern, replacing what was compiled. On failure returns false, leaves
    /// nothing compiled and puts PCRE2's own message into error.
    bool compile(std::string_view pattern, bool utf8, bool caseless, std::string& error);
    void clear();
    bool compiled() const;
    bool utf8() const;
    /// True when the pattern may look at text before the start offset (lookbehind, \b, \A, ^),
    /// so that a match depends on more than the text from the start offset on.
    bool looksBeforeStart() const;

    /// Searches subject[start, length) with subject[0, start) visible to lookbehind; ^ and \A
    /// match only at subject[0]. checked: in UTF-8 mode the caller has verified that
    /// subject[0, length) is valid UTF-8 (isValidUtf8); otherwise it is verified here.
    /// Returns 1 on a match, 0 on none, -1 on an error (invalid UTF-8, start inside a
    /// character or beyond length, match limits, nothing compiled).
    int exec(const char* subject, std::size_t length, std::size_t start, bool checked);

    /// Searches the whole subject and gives the length of the match, -1 when nothing matched
    /// or -2 on an error. Keeps nothing: safe from several threads on one compiled pattern.
    long matchLength(const char* subject, std::size_t length) const;

    /// The byte range of group i of the last successful exec; false when the group did not
    /// take part or does not exist, or the last exec did not match.
    bool group(std::size_t i, std::size_t& start, std::size_t& end) const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// True when data[0, length) is valid UTF-8 in the sense PCRE2 requires (no overlong forms, no
/// surrogates, nothing above U+10FFFF).
bool isValidUtf8(const char* data, std::size_t length);


/// The character tables used for legacy text (windows1252) or plain ASCII, in PCRE2's layout;
/// and the tables PCRE2 itself makes for the "C" locale. Tests compare the two layouts.
std::string pcre2CharacterTables(bool windows1252);
std::string pcre2DefaultCharacterTables();

}  // namespace osl::platform

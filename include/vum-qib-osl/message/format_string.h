// Texts with numbered placeholders "%1", "%2", ... filled by argument position.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <cstdint>
#include <string>

/// A text whose placeholders are filled in order: the n-th inserted argument replaces the first
/// occurrence of "%n". The search is plain text search, so "%1" also matches the front of "%10";
/// an argument is inserted unchanged, placeholders in it included.
class OSL_API FormatString {
public:
    FormatString();
    /// As Assign(text).
    FormatString(const std::string& text);  // NOLINT(google-explicit-constructor): published
    FormatString(const FormatString&) = default;
    FormatString& operator=(const FormatString&) = default;
    virtual ~FormatString();

    /// Sets the text; the next argument fills "%1" again.
    void Assign(const std::string& text);
    std::string& Get() { return m_Text; }

    /// Fills the next placeholder. When the text lacks it, the text is unchanged but the next
    /// argument still goes to the placeholder after it.
    FormatString& operator<<(const char* argument);
    FormatString& operator<<(const std::string& argument);
    /// Decimal.
    FormatString& operator<<(int argument);
    FormatString& operator<<(long argument);
    /// That one character.
    FormatString& operator<<(char argument);

    /// How many placeholders "%1", "%2", ... occur, counting up to the first one missing (and no
    /// further than the number of "%" in the text).
    std::uint16_t GetArgumentsNumber() const;

protected:
    void insertArgument(const std::string& argument);

    std::uint32_t m_ArgCount;
    std::string m_Text;
};

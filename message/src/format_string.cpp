// message/src/format_string.cpp
// Positional placeholders "%1", "%2", ...
#include <vum-qib-osl/message/format_string.h>

#include <algorithm>

namespace {

// Built by appending: g++ 12 warns falsely (-Wrestrict) on "%" + std::to_string(n) in release builds.
std::string placeholder(std::size_t n) {
    std::string text(1, '%');
    text += std::to_string(n);
    return text;
}

}  // namespace

FormatString::FormatString() : m_ArgCount(0) {}

FormatString::FormatString(const std::string& text) : m_ArgCount(0) { Assign(text); }

FormatString::~FormatString() = default;

void FormatString::Assign(const std::string& text) {
    m_Text = text;
    m_ArgCount = 0;
}

void FormatString::insertArgument(const std::string& argument) {
    ++m_ArgCount;
    const std::string wanted = placeholder(m_ArgCount);
    const std::size_t at = m_Text.find(wanted);
    if (at != std::string::npos) m_Text.replace(at, wanted.size(), argument);
}

FormatString& FormatString::operator<<(const char* argument) {
    insertArgument(argument == nullptr ? std::string() : std::string(argument));
    return *this;
}

FormatString& FormatString::operator<<(const std::string& argument) {
    insertArgument(argument);
    return *this;
}

FormatString& FormatString::operator<<(int argument) {
    insertArgument(std::to_string(argument));
    return *this;
}

FormatString& FormatString::operator<<(long argument) {
    insertArgument(std::to_string(argument));
    return *this;
}

FormatString& FormatString::operator<<(char argument) {
    insertArgument(std::string(1, argument));
    return *this;
}

std::uint16_t FormatString::GetArgumentsNumber() const {
    const auto percents = static_cast<std::size_t>(std::count(m_Text.begin(), m_Text.end(), '%'));
    std::uint16_t found = 0;
    for (std::size_t n = 1; n <= percents && n <= 0xFFFF; ++n) {
        if (m_Text.find(placeholder(n)) == std::string::npos) break;
        ++found;
    }
    return found;
}

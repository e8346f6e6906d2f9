// tools/qibosl/catalog_text.h
// The text source of a catalog: one KEY=TEXT entry per line, with escapes (see the README).
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>

namespace qibosl {

/// A source that cannot be compiled; what() begins with the line number ("LINE: ...").
class SourceError : public std::runtime_error {
public:
    SourceError(std::size_t line, const std::string& text)
        : std::runtime_error(std::to_string(line) + ": " + text), line_(line) {}
    std::size_t line() const { return line_; }

private:
    std::size_t line_;
};

/// Parses a whole source text into entries. Throws SourceError naming the first bad line.
std::map<std::string, std::string> parseCatalogSource(std::string_view source);

/// The source line of one entry (without its line end); parsing it gives the entry back.
std::string formatCatalogEntry(std::string_view key, std::string_view text);

}  // namespace qibosl

// tools/qibosl/catalog_text.cpp
// The text form of catalogs. Every byte of a key or text has exactly one spelling in the output
// of formatCatalogEntry, so compile(dump(x)) gives x back byte for byte.
#include "tools/qibosl/catalog_text.h"

#include <cstdint>

namespace qibosl {
namespace {

// Length of the valid UTF-8 sequence at the front of `text`, 0 when there is none.
std::size_t utf8Length(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    std::size_t length = 0;
    std::uint32_t min = 0;
    std::uint32_t code = 0;
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2, min = 0x80, code = lead & 0x1Fu;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3, min = 0x800, code = lead & 0x0Fu;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4, min = 0x10000, code = lead & 0x07u;
    } else {
        return 0;
    }
    if (text.size() < length) return 0;
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return 0;
        code = (code << 6) | (byte(i) & 0x3Fu);
    }
    if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
    return length;
}

int hexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Unescapes `field` (a key when `isKey`, which then ends at the first unescaped "=").
// Returns the position just after the field's end in `line`.
std::size_t unescape(std::string_view line, std::size_t lineNumber, bool isKey, std::string& out) {
    std::size_t i = 0;
    while (i < line.size()) {
        const char c = line[i];
        if (isKey && c == '=') return i + 1;
        if (c != '\\') {
            const std::size_t length = utf8Length(line.substr(i));
            if (length == 0) throw SourceError(lineNumber, "not UTF-8 (write other bytes as \\xHH)");
            out.append(line.substr(i, length));
            i += length;
            continue;
        }
        if (i + 1 >= line.size()) throw SourceError(lineNumber, "a backslash ends the line (write \\\\)");
        const char e = line[i + 1];
        i += 2;
        switch (e) {
            case '\\': out += '\\'; break;
            case 'n': out += '\n'; break;
            case 'r': out += '\r'; break;
            case 't': out += '\t'; break;
            case '=': out += '='; break;
            case '#': out += '#'; break;
            case 'x': {
                const int high = i < line.size() ? hexValue(line[i]) : -1;
                const int low = i + 1 < line.size() ? hexValue(line[i + 1]) : -1;
                if (high < 0 || low < 0) throw SourceError(lineNumber, "\\x needs two hexadecimal digits");
                out += static_cast<char>(high * 16 + low);
                i += 2;
                break;
            }
            default:
                throw SourceError(lineNumber, std::string("unknown escape \\") + e);
        }
    }
    if (isKey) throw SourceError(lineNumber, "no '=' between key and text");
    return i;
}

void escapeInto(std::string& out, std::string_view text, bool isKey) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::size_t i = 0;
    while (i < text.size()) {
        const char c = text[i];
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\\') {
            out += "\\\\";
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == '\t') {
            out += "\\t";
        } else if (isKey && c == '=') {
            out += "\\=";
        } else if (isKey && c == '#' && i == 0) {
            out += "\\#";
        } else if (byte < 0x20 || byte == 0x7F) {
            out += "\\x";
            out += kHex[byte >> 4];
            out += kHex[byte & 0x0F];
        } else {
            const std::size_t length = utf8Length(text.substr(i));
            if (length == 0) {
                out += "\\x";
                out += kHex[byte >> 4];
                out += kHex[byte & 0x0F];
            } else {
                out.append(text.substr(i, length));
                i += length;
                continue;
            }
        }
        ++i;
    }
}

}  // namespace

std::map<std::string, std::string> parseCatalogSource(std::string_view source) {
    std::map<std::string, std::string> entries;
    std::map<std::string, std::size_t> lineOfKey;
    if (source.substr(0, 3) == "\xEF\xBB\xBF") source.remove_prefix(3);
    std::size_t lineNumber = 0;
    while (!source.empty()) {
        ++lineNumber;
        const std::size_t end = source.find('\n');
        std::string_view line = source.substr(0, end);
        source.remove_prefix(end == std::string_view::npos ? source.size() : end + 1);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (line.find_first_not_of(" \t") == std::string_view::npos || line[0] == '#') continue;
        std::string key;
        std::string text;
        const std::size_t textStart = unescape(line, lineNumber, true, key);
        unescape(line.substr(textStart), lineNumber, false, text);
        auto [known, inserted] = lineOfKey.emplace(key, lineNumber);
        if (!inserted) {
            std::string shown = formatCatalogEntry(key, "");
            shown.pop_back();  // the "="
            throw SourceError(lineNumber, "key '" + shown + "' already defined on line " + std::to_string(known->second));
        }
        entries.emplace(std::move(key), std::move(text));
    }
    return entries;
}

std::string formatCatalogEntry(std::string_view key, std::string_view text) {
    std::string line;
    escapeInto(line, key, true);
    line += '=';
    escapeInto(line, text, false);
    return line;
}

}  // namespace qibosl

// tools/qibosl/cmd_columns.cpp
// qibosl columns -width=N TEXT...: texts laid out in columns of N display cells, the way a report
// line shows them, and the demo's table of Latin and CJK text.
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/visual_string.h>

#include <charconv>
#include <iostream>
#include <string>
#include <vector>

#include "tools/qibosl/commands.h"

namespace qibosl {
namespace {

// One line: every text cut or padded to width columns between bars. A wide character that the
// cut halves leaves a blank (the accept policy). The texts are UTF-8: Unicode mode for the call.
std::string layOut(const std::vector<std::string>& texts, std::size_t width) {
    const bool unicode = Osl_UnicodeConfiguration::IsUnicodeMode();
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    Osl_VisualString line("|");
    for (const std::string& text : texts) {
        Osl_VisualString column(text);
        column.ResizeInNarrowChars(width, Osl_VisualString(" "), Osl_VisualString::EndAccept);
        line.Append(column).Append(Osl_VisualString("|"));
    }
    std::string out = line.ToUTF8String();
    Osl_UnicodeConfiguration::SetUnicodeMode(unicode);
    return out;
}

}  // namespace

int cmdColumns(const Args& args) {
    const std::vector<std::string> texts = args.operands({"-width"});
    const std::string value = args.options().GetOptionValue("-width");
    std::size_t width = 0;
    const auto [end, ec] = std::from_chars(value.data(), value.data() + value.size(), width);
    if (value.empty() || ec != std::errc() || end != value.data() + value.size() || width == 0 || width > 10000) {
        throw UsageError("needs -width=N, a number of display cells from 1 to 10000");
    }
    if (texts.empty()) throw UsageError("needs at least one text");
    std::cout << layOut(texts, width) << "\n";
    return std::cout ? 0 : 1;
}

void demoColumns() {
    std::cout << "\n== text in display columns (a CJK character takes two; a cut one leaves a blank)\n";
    const std::vector<std::vector<std::string>> rows = {
        {"document", "\xE6\x96\x87\xE6\x9B\xB8"},  // 文書
        {"Invoice 2024-0042", "\xE8\xAB\x8B\xE6\xB1\x82\xE6\x9B\xB8"},  // 請求書
        {"Z\xC3\xBCrich office", "\xE3\x83\x81\xE3\x83\xA5\xE3\x83\xBC\xE3\x83\xAA\xE3\x83\x83\xE3\x83\x92"
                                 "\xE6\x94\xAF\xE5\xBA\x97"},  // チューリッヒ支店
        {"\xE6\x9D\xB1\xE4\xBA\xAC (Tokyo)", "Tokyo \xE6\x9C\xAC\xE7\xA4\xBE"},  // 東京, 本社
    };
    for (const auto& row : rows) std::cout << layOut(row, 13) << "\n";
}

}  // namespace qibosl

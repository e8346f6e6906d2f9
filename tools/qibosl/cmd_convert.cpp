// tools/qibosl/cmd_convert.cpp
// qibosl convert -from=ENC -to=ENC [FILE] and qibosl encodings: the encoding converter on files.
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/unicode_converter.h>

#include <algorithm>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <list>
#include <vector>

#include "tools/qibosl/commands.h"

namespace qibosl {
namespace {

constexpr std::size_t kChunk = 64 * 1024;
// The longest character of any supported encoding, in bytes: how much of a chunk's end may be left
// for the next chunk.
constexpr std::size_t kLongestCharacter = 4;

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

// The library takes an unknown name for "Latin1"; here it is an error. A name is known when it is
// listed, is the name of its record's converter, or leads to a record other than Latin1's.
void checkEncoding(const std::string& name) {
    Osl_UnicodeConfiguration* configuration = Osl_UnicodeConfiguration::Instance();
    std::list<std::string> names;
    configuration->GetEncodings(names);
    const bool listed = std::any_of(names.begin(), names.end(),
                                    [&](const std::string& n) { return lowered(n) == lowered(name); });
    const std::string converter = configuration->GetConverterName(name);
    if (listed || lowered(converter) == lowered(name) || converter != configuration->GetConverterName("Latin1")) {
        return;
    }
    throw UsageError("unknown encoding '" + name + "' (qibosl encodings lists them)");
}

// Converts `in` to `out` chunk by chunk, as one piece would. A chunk that ends inside a character
// gives what comes before it; the converter reports exactly how much that is, and the rest goes
// with the next chunk. Only the end of the input must be complete. A double-byte EBCDIC target
// closes its run at the end of every chunk: a run that the next chunk opens again is joined.
int convertStream(std::istream& in, std::ostream& out, const std::string& from, const std::string& to) {
    Osl_UnicodeConverter converter;
    converter.SetCurrentEncoding(from);
    converter.SetTargetEncoding(to);
    const bool shiftedTarget = Osl_UnicodeConfiguration::Instance()->IsDBCSEncoding(to);
    constexpr char kShiftOut = 0x0E, kShiftIn = 0x0F;
    bool heldShiftIn = false;  // the last chunk's closing SI, not written yet
    std::string pending;
    std::vector<char> converted;
    std::uintmax_t offset = 0;  // of pending's first byte in the input
    std::vector<char> block(kChunk);
    bool end = false;
    while (!end || !pending.empty()) {
        if (!end) {
            in.read(block.data(), static_cast<std::streamsize>(block.size()));
            pending.append(block.data(), static_cast<std::size_t>(in.gcount()));
            end = !in;
            if (in.bad()) {
                std::cerr << "qibosl convert: read error after " << offset + pending.size() << " bytes\n";
                return 1;
            }
        }
        if (pending.empty()) break;
        converted.resize(4 * pending.size() + 4);
        std::size_t written = converted.size();
        const ConversionRC rc =
            converter.ConvertCurrentEncodingtoTargetEncoding(pending.data(), pending.size(), converted.data(), written);
        const auto handled = static_cast<std::size_t>(converter.GetHandledLength());
        if (rc != ConversionOK && (end || pending.size() - handled > kLongestCharacter)) {
            std::cerr << "qibosl convert: the input is not " << from << " text (near byte "
                      << offset + static_cast<std::uintmax_t>(handled) << ")\n";
            return 1;
        }
        const char* text = converted.data();
        if (shiftedTarget && written > 0) {
            if (heldShiftIn && text[0] == kShiftOut) {
                ++text;
                --written;
            } else if (heldShiftIn) {
                out.put(kShiftIn);
            }
            heldShiftIn = written > 0 && text[written - 1] == kShiftIn;
            if (heldShiftIn) --written;
        }
        out.write(text, static_cast<std::streamsize>(written));
        pending.erase(0, handled);
        offset += handled;
        if (!out) {
            std::cerr << "qibosl convert: cannot write the output\n";
            return 1;
        }
    }
    if (heldShiftIn) out.put(kShiftIn);
    out.flush();
    return out ? 0 : 1;
}

}  // namespace

int cmdConvert(const Args& args) {
    const std::vector<std::string> files = args.operands({"-from", "-to"});
    const QIBCommandLine options = args.options();
    const std::string from = options.GetOptionValue("-from");
    const std::string to = options.GetOptionValue("-to");
    if (from.empty() || to.empty()) throw UsageError("needs -from=ENCODING and -to=ENCODING");
    if (files.size() > 1) throw UsageError("converts at most one file");
    checkEncoding(from);
    checkEncoding(to);
    if (files.empty()) return convertStream(std::cin, std::cout, from, to);
    std::ifstream in(files[0], std::ios::binary);
    if (!in) {
        std::cerr << "qibosl convert: cannot read " << files[0] << "\n";
        return 1;
    }
    return convertStream(in, std::cout, from, to);
}

int cmdEncodings(const Args& args) {
    if (!args.operands().empty()) throw UsageError("takes no arguments");
    Osl_UnicodeConfiguration* configuration = Osl_UnicodeConfiguration::Instance();
    std::list<std::string> names;
    configuration->GetEncodings(names);
    std::size_t width = 0;
    for (const std::string& name : names) width = std::max(width, name.size());
    for (const std::string& name : names) {
        std::cout << std::left << std::setw(static_cast<int>(width + 2)) << name
                  << configuration->GetEncodingDescription(name) << "\n";
    }
    std::cout << std::flush;
    return std::cout ? 0 : 1;
}

}  // namespace qibosl

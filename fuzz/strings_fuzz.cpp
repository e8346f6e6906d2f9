// fuzz/strings_fuzz.cpp
// Arbitrary bytes through the converter and the character operations of Osl_UTF8String, in both
// modes. The first byte picks the mode, the legacy encoding and the capacities; nothing may crash
// or read outside its buffers, and what a conversion reports must fit what it was given.
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/unicode_converter.h>
#include <vum-qib-osl/strings/utf8_string.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

const char* const kEncodings[] = {"MS1252", "Latin1", "IBM-939", "IBM-930", "MS932", "UTF-8", "IBM-037", "MS936"};

void check(bool condition) {
    if (!condition) std::abort();
}

void characterOperations(const Osl_UTF8String& s, uint8_t selector) {
    size_t chars = s.LengthInChars();
    (void)s.CharsPosAsAbsPos(selector % 7, selector % 5);
    (void)s.AbsPosAsCharsPos(0, s.size() / 2);
    try {
        (void)s.SubstrInChars(selector % (chars + 2), selector % 4);
        Osl_UTF8String copy = s;
        copy.EraseInChars(selector % (chars + 2), 1);
    } catch (const std::out_of_range&) {
    }
    (void)s.Find(s.substr(s.size() / 3, 2), selector % 3);
    for (size_t pos = 0; pos < s.size();) {
        const char* ch = nullptr;
        size_t len = 0;
        size_t next = 0;
        try {
            next = s.GetNextChar(pos, ch, len);
        } catch (const QIBError&) {  // a 4-byte lead in Unicode mode
            next = pos + 1;
        }
        if (next == Osl_UTF8String::npos - 1) next = pos + 1;
        if (ch != nullptr) check(ch >= s.data() && ch + len <= s.data() + s.size());
        pos = next;
    }
    Osl_UTF8String upper = s;
    upper.ToUpper();
    check(upper.size() == s.size());
    upper.ToLower();
    (void)s.ToWString();
    (void)(s < upper);
    (void)Osl_UTF8String(s.ToWString());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const uint8_t selector = data[0];
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const bool unicode = (selector & 1) != 0;
    const char* encoding = kEncodings[(selector >> 1) % (sizeof kEncodings / sizeof kEncodings[0])];
    Osl_UnicodeConfiguration::SetUnicodeMode(unicode);
    Osl_UnicodeConfiguration::SetCurrentEncoding(encoding);
    Osl_UnicodeConfiguration::SetOSFileSystemNativeEncoding(encoding);

    Osl_UnicodeConverter converter;
    converter.SetCurrentEncoding(encoding);
    const size_t capacity = (selector >> 4) * text.size() / 4;  // 0 to almost four times the text
    auto out = std::make_unique<char[]>(capacity + 1);
    size_t len = capacity;
    ConversionRC rc = converter.ConvertCurrentEncodingtoUTF8(text.data(), text.size(), out.get(), len);
    check(len <= capacity && rc <= 0 && rc >= -3);
    check(static_cast<size_t>(converter.GetHandledLength()) <= text.size());
    len = capacity;
    rc = converter.ConvertUTF8toCurrentEncoding(text.data(), text.size(), out.get(), len);
    check(len <= capacity && rc <= 0 && rc >= -3);

    auto wide = std::make_unique<char16_t[]>(capacity + 1);
    len = capacity;
    rc = converter.ConvertUTF8toUCS2(text.data(), text.size(), wide.get(), len);
    check(len <= capacity);
    if (rc == ConversionOK) {  // lenient both ways: the text comes back byte for byte ...
        std::string back;
        std::u16string units16(wide.get(), len);
        if (converter.ConvertUCS2toUTF8(units16, back) == ConversionOK) {
            check(back == text);
        } else {  // ... except a lone high surrogate at the end, which may be half of a pair
            check(!units16.empty() && units16.back() >= 0xD800 && units16.back() <= 0xDBFF);
            check(back == text.substr(0, text.size() - 3));
        }
    }
    std::u16string units(text.size() / 2, u'\0');
    for (size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(static_cast<uint8_t>(text[2 * i]) | static_cast<uint8_t>(text[2 * i + 1]) << 8);
    std::string utf8;
    converter.ConvertUCS2toUTF8(units, utf8);
    std::string visual;
    converter.ConvertUTF8toVisual(text, visual);
    check(visual.size() % 3 == 0);
    converter.ConvertVisualtoUTF8(visual, utf8);
    converter.ConvertUCS2toVisual(units, visual);
    std::u16string fromVisual;
    converter.ConvertVisualtoUCS2(text, fromVisual);
    char mapped[64];
    len = sizeof mapped;
    converter.ToUpperUTF8(text.data(), std::min<size_t>(text.size(), 16), mapped, len);
    if (!text.empty()) {
        std::string terminated = text + std::string(4, '\0');
        (void)converter.GetCharType(CharTypeClass, terminated.c_str());
        (void)converter.IsNarrowChar(terminated.c_str(), 0);
    }
    characterOperations(Osl_UTF8String(text), selector);
    Osl_UnicodeConfiguration::SetUnicodeMode(false);
    return 0;
}

// strings/src/unicode_configuration.cpp
// The mode switch, the encoding names and the encoding and language records. The mode is one
// atomic flag because every string operation asks for it; the records come from locale.ini,
// installed with the library and read by locale_ini_reader.cpp.
#include <vum-qib-osl/strings/unicode_configuration.h>

#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/unicode_converter.h>
#include <vum-qib-osl/strings/utf8_string.h>

#include "ini/src/unicode_settings.h"
#include "strings/src/locale_ini_reader.h"
#include "platform/icu_text.h"
#include "strings/src/utf_transform.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>

namespace {

constexpr char kWhere[] = "strings/src/unicode_configuration";
constexpr char kLocaleIni[] = "locale.ini";

std::atomic<bool> unicodeMode{false};

struct Names {
    std::mutex lock;  // guards current and fileSystem
    std::string current;
    std::string fileSystem;
};
Names& names() {
    static Names* n = new Names;
    return *n;
}

struct EncodingRecord {
    std::string name;
    std::string converter;
    std::string canonical;  // ICU's canonical name of converter
    std::string description;
    std::string windowsEncoding;
    bool legacy = false;
    bool unicode = false;
    bool ibm = false;
    bool dbcs = false;
};

struct WindowsRecord {
    std::string name;
    std::string description;
    std::list<std::string> fixedFonts, variableFonts, fixedFontFiles, variableFontFiles;
};

struct LanguageRecord {
    std::string name;
    std::string shortName;
    std::string windowsEncoding;
    bool rtl = false;
    bool legacy = false;
    bool unicode = false;
};

using osl::detail::lowered;
using osl::detail::trimmed;

std::list<std::string> splitList(const std::string& s) {
    std::list<std::string> items;
    std::istringstream in(s);
    std::string item;
    while (std::getline(in, item, ','))
        if (!trimmed(item).empty()) items.push_back(trimmed(item));
    return items;
}

bool isTrue(const std::map<std::string, std::string>& keys, const char* key) {
    auto it = keys.find(key);
    return it != keys.end() && lowered(it->second) == "true";
}

std::string value(const std::map<std::string, std::string>& keys, const char* key) {
    auto it = keys.find(key);
    return it == keys.end() ? std::string() : it->second;
}

[[noreturn]] void fail(const std::string& text, long line, long code = 98) {
    throw QIBError(text, code, 12, kWhere, line);
}

// Decodes one character of UTF-8 (Unicode mode) or one byte through a single-byte table.
int32_t codePointAt(const char* p, const std::vector<int32_t>& legacyTable) {
    if (p == nullptr) return -1;
    if (Osl_UnicodeConfiguration::IsUnicodeMode()) {
        size_t available = 0;
        while (available < 4 && p[available] != '\0') ++available;
        size_t len = 0;
        return osl::detail::decodeUtf8(p, available == 0 ? 1 : available, len);
    }
    auto b = static_cast<unsigned char>(*p);
    return legacyTable.empty() ? b : legacyTable[b];
}

}  // namespace

struct Osl_UnicodeConfiguration::Impl {
    std::mutex lock;  // guards every member below
    SettingsReader reader = osl::detail::readInstallationUnicodeSettings;
    bool initialized = false;
    bool recordsLoaded = false;
    std::string localeDir;
    std::string sortOrder;
    std::vector<EncodingRecord> encodings;                  // sorted by name, case-insensitively
    std::map<std::string, size_t> encodingByName;           // lowered record name -> index
    std::map<std::string, size_t> encodingByConverter;      // ICU canonical name -> index
    std::map<std::string, WindowsRecord> windows;           // lowered name
    std::vector<std::string> windowsOrder;
    std::map<std::string, LanguageRecord> languages;        // lowered name
    std::vector<std::string> languageOrder;

    const EncodingRecord* lookup(const std::string& name) const {
        if (auto it = encodingByName.find(lowered(name)); it != encodingByName.end()) return &encodings[it->second];
        std::string canonical = osl::platform::icuCanonicalConverterName(name);
        if (canonical.empty()) return nullptr;
        if (auto it = encodingByConverter.find(canonical); it != encodingByConverter.end())
            return &encodings[it->second];
        return nullptr;
    }
};

namespace {

// Every query needs the records; they are read on first need, so that a legacy-mode process that
// never calls Init still gets its answers.
void loadRecords(Osl_UnicodeConfiguration::Impl& impl) {
    if (impl.recordsLoaded) return;
    std::string path = osl::detail::localeIniPath();
    std::optional<osl::detail::LocaleIniGroups> groups = osl::detail::readLocaleIni(path);
    if (!groups) fail("Cannot read the encoding records " + (path.empty() ? std::string(kLocaleIni) : path), 401);

    std::vector<EncodingRecord> encodings;
    for (auto& [group, keys] : *groups) {
        size_t blank = group.find(' ');
        if (blank == std::string::npos) continue;
        std::string kind = lowered(group.substr(0, blank));
        std::string name = trimmed(group.substr(blank + 1));
        if (kind == "encoding") {
            EncodingRecord r;
            r.name = name;
            r.converter = value(keys, "converter");
            r.canonical = osl::platform::icuCanonicalConverterName(r.converter);
            r.description = value(keys, "description");
            r.windowsEncoding = value(keys, "windows_encoding");
            r.legacy = isTrue(keys, "legacy");
            r.unicode = isTrue(keys, "unicode");
            r.ibm = isTrue(keys, "ibm");
            r.dbcs = isTrue(keys, "dbcs");
            encodings.push_back(std::move(r));
        } else if (kind == "windows") {
            WindowsRecord w;
            w.name = name;
            w.description = value(keys, "description");
            w.fixedFonts = splitList(value(keys, "fixed_fonts"));
            w.variableFonts = splitList(value(keys, "variable_fonts"));
            w.fixedFontFiles = splitList(value(keys, "fixed_font_files"));
            w.variableFontFiles = splitList(value(keys, "variable_font_files"));
            if (impl.windows.emplace(lowered(name), w).second) impl.windowsOrder.push_back(name);
        } else if (kind == "language") {
            LanguageRecord l;
            l.name = name;
            l.shortName = value(keys, "short");
            l.windowsEncoding = value(keys, "windows_encoding");
            l.rtl = isTrue(keys, "rtl");
            l.legacy = isTrue(keys, "legacy");
            l.unicode = isTrue(keys, "unicode");
            if (impl.languages.emplace(lowered(name), l).second) impl.languageOrder.push_back(name);
        }
    }
    // Sorted by name without regard to ASCII case, as GetEncodings lists them.
    std::stable_sort(encodings.begin(), encodings.end(),
                     [](const EncodingRecord& a, const EncodingRecord& b) { return lowered(a.name) < lowered(b.name); });
    impl.encodings = std::move(encodings);
    for (size_t i = 0; i < impl.encodings.size(); ++i) {
        impl.encodingByName.emplace(lowered(impl.encodings[i].name), i);
        // An alias shared by two records names the first one in file order of canonical names.
        if (!impl.encodings[i].canonical.empty()) impl.encodingByConverter.emplace(impl.encodings[i].canonical, i);
    }
    impl.recordsLoaded = true;
}

const EncodingRecord& findEncoding(Osl_UnicodeConfiguration::Impl& impl, const std::string& name) {
    loadRecords(impl);
    if (const EncodingRecord* r = impl.lookup(name)) return *r;
    if (const EncodingRecord* r = impl.lookup("Latin1")) return *r;
    fail("Cannot find the encoding info for " + name + " nor for Latin1", 513);
}

const WindowsRecord& findWinEncoding(Osl_UnicodeConfiguration::Impl& impl, const std::string& name) {
    loadRecords(impl);
    auto it = impl.windows.find(lowered(name));
    if (it == impl.windows.end()) fail("Cannot find the Windows encoding info for " + name, 538);
    return it->second;
}

const LanguageRecord& findLanguage(Osl_UnicodeConfiguration::Impl& impl, const std::string& name) {
    loadRecords(impl);
    auto it = impl.languages.find(lowered(name));
    if (it == impl.languages.end()) fail("Cannot find the language info for " + name, 561);
    return it->second;
}

// Text from ICU (UTF-8) in the current mode: UTF-8, or the language's Windows encoding.
std::string inModeText(const std::string& utf8, const std::string& encodingConverter) {
    if (Osl_UnicodeConfiguration::IsUnicodeMode()) return utf8;
    osl::platform::IcuConversion conversion;
    if (!conversion.open("UTF-8", encodingConverter)) return utf8;
    std::string out(utf8.size() * 4 + 4, '\0');
    size_t consumed = 0, written = 0;
    conversion.convert(utf8.data(), utf8.size(), out.data(), out.size(), consumed, written);
    out.resize(written);
    return out;
}

}  // namespace

Osl_UnicodeConfiguration::Osl_UnicodeConfiguration() : impl_(new Impl) {}
Osl_UnicodeConfiguration::~Osl_UnicodeConfiguration() { delete impl_; }

Osl_UnicodeConfiguration* Osl_UnicodeConfiguration::Instance() {
    static Osl_UnicodeConfiguration* instance = new Osl_UnicodeConfiguration;
    return instance;
}

bool Osl_UnicodeConfiguration::IsUnicodeMode() { return unicodeMode.load(std::memory_order_relaxed); }
void Osl_UnicodeConfiguration::SetUnicodeMode(bool unicode) { unicodeMode.store(unicode, std::memory_order_relaxed); }

std::string Osl_UnicodeConfiguration::GetCurrentEncoding() {
    std::lock_guard<std::mutex> guard(names().lock);
    return names().current;
}
void Osl_UnicodeConfiguration::SetCurrentEncoding(const std::string& name) {
    std::lock_guard<std::mutex> guard(names().lock);
    names().current = name;
}
std::string Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding() {
    std::lock_guard<std::mutex> guard(names().lock);
    return names().fileSystem;
}
void Osl_UnicodeConfiguration::SetOSFileSystemNativeEncoding(const std::string& name) {
    std::lock_guard<std::mutex> guard(names().lock);
    names().fileSystem = name;
}

void Osl_UnicodeConfiguration::SetSettingsReader(SettingsReader reader) {
    Impl& impl = *Instance()->impl_;
    std::lock_guard<std::mutex> guard(impl.lock);
    impl.reader = std::move(reader);
    impl.initialized = false;  // the next Init reads from the new source
}

void Osl_UnicodeConfiguration::ReadQibFdsIni() {
    SettingsReader reader;
    {
        std::lock_guard<std::mutex> guard(impl_->lock);
        reader = impl_->reader;
    }
    // Without a reader there is no settings file to read: the mode and encodings set so far stay.
    if (!reader) return;
    Osl_UnicodeSettings settings;
    try {
        settings = reader();
    } catch (const QIBError&) {  // an unreadable settings file leaves the defaults
        settings = Osl_UnicodeSettings();
    }
    ApplySettings(settings);
}

void Osl_UnicodeConfiguration::ApplySettings(const Osl_UnicodeSettings& settings) {
    bool unicode = settings.mode == "unicode";
    SetUnicodeMode(unicode);
    {
        std::lock_guard<std::mutex> guard(impl_->lock);
        impl_->localeDir = settings.localedir;
    }
    SetCurrentEncoding(settings.default_character_set);
    SetOSFileSystemNativeEncoding(settings.os_file_systemnative_character_set);
    if (unicode && settings.localedir.empty()) fail(std::string("localedir") + " is not set", 227);
}

void Osl_UnicodeConfiguration::ReadLocaleIni() {
    std::lock_guard<std::mutex> guard(impl_->lock);
    loadRecords(*impl_);
}

namespace {
// The steps of Init after the settings: ICU, the file-system encoding, the records and the UTF-8
// locale. Case mapping follows ICU's root locale, so the user's language plays no part here.
void completeInit(Osl_UnicodeConfiguration::Impl& impl, const std::string& localeDir) {
    if (int rc = osl::platform::icuStart(localeDir); rc != 0) fail("Cannot initialize the Globalc library", 82, rc);
    if (Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding().empty())
        Osl_UnicodeConfiguration::SetOSFileSystemNativeEncoding(Osl_UnicodeConfiguration::GetCurrentEncoding());
    {
        std::lock_guard<std::mutex> guard(impl.lock);
        loadRecords(impl);
        impl.initialized = true;
    }
    if (!localeDir.empty()) {
        try {
            (void)Osl_UnicodeConverter::GetLocaleUTF8();
        } catch (const QIBError& e) {
            fail("Cannot get UTF8 locale, probably there is no localedir " + e.What(), 186);
        }
    }
}
}  // namespace

void Osl_UnicodeConfiguration::Init() {
    {
        std::lock_guard<std::mutex> guard(impl_->lock);
        if (impl_->initialized || !impl_->localeDir.empty()) return;
    }
    ReadQibFdsIni();
    std::string localeDir;
    {
        std::lock_guard<std::mutex> guard(impl_->lock);
        localeDir = impl_->localeDir;
    }
    completeInit(*impl_, localeDir);
}

void Osl_UnicodeConfiguration::Init(const Osl_UnicodeSettings& settings) {
    ApplySettings(settings);
    completeInit(*impl_, settings.localedir);
}

void Osl_UnicodeConfiguration::GetEncodings(std::list<std::string>& list) {
    std::lock_guard<std::mutex> guard(impl_->lock);
    loadRecords(*impl_);
    for (const auto& r : impl_->encodings) list.push_back(r.name);
}

void Osl_UnicodeConfiguration::GetWinEncodings(std::list<std::string>& list) {
    std::lock_guard<std::mutex> guard(impl_->lock);
    loadRecords(*impl_);
    list.insert(list.end(), impl_->windowsOrder.begin(), impl_->windowsOrder.end());
}

void Osl_UnicodeConfiguration::GetLanguages(std::list<std::string>& list) {
    std::lock_guard<std::mutex> guard(impl_->lock);
    loadRecords(*impl_);
    list.insert(list.end(), impl_->languageOrder.begin(), impl_->languageOrder.end());
}

#define OSL_ENCODING_FIELD(function, type, field)                        \
    type Osl_UnicodeConfiguration::function(const std::string& name) {   \
        std::lock_guard<std::mutex> guard(impl_->lock);                  \
        return findEncoding(*impl_, name).field;                         \
    }
OSL_ENCODING_FIELD(GetEncodingDescription, std::string, description)
OSL_ENCODING_FIELD(IsLegacySupportedEncoding, bool, legacy)
OSL_ENCODING_FIELD(IsUNICODESupportedEncoding, bool, unicode)
OSL_ENCODING_FIELD(IsIBMEncoding, bool, ibm)
OSL_ENCODING_FIELD(IsDBCSEncoding, bool, dbcs)
OSL_ENCODING_FIELD(Encoding2WindowsEncoding, std::string, windowsEncoding)
OSL_ENCODING_FIELD(GetConverterName, std::string, converter)
#undef OSL_ENCODING_FIELD

void Osl_UnicodeConfiguration::WindowsEncoding2Encoding(const std::string& winName, std::list<std::string>& list) {
    std::lock_guard<std::mutex> guard(impl_->lock);
    loadRecords(*impl_);
    for (const auto& r : impl_->encodings)
        if (lowered(r.windowsEncoding) == lowered(winName)) list.push_back(r.name);
}

std::string Osl_UnicodeConfiguration::Language2WindowsEncoding(const std::string& language) {
    std::lock_guard<std::mutex> guard(impl_->lock);
    return findLanguage(*impl_, language).windowsEncoding;
}

void Osl_UnicodeConfiguration::WindowsEncoding2Language(const std::string& winName, std::list<std::string>& list) {
    std::lock_guard<std::mutex> guard(impl_->lock);
    loadRecords(*impl_);
    for (const auto& name : impl_->languageOrder)
        if (lowered(impl_->languages[lowered(name)].windowsEncoding) == lowered(winName)) list.push_back(name);
}

#define OSL_FONT_LIST(function, field)                                                           \
    void Osl_UnicodeConfiguration::function(const std::string& winName, std::list<std::string>& list) { \
        std::lock_guard<std::mutex> guard(impl_->lock);                                          \
        const WindowsRecord& w = findWinEncoding(*impl_, winName);                               \
        list.insert(list.end(), w.field.begin(), w.field.end());                                 \
    }
OSL_FONT_LIST(WindowsEncoding2FixedFonts, fixedFonts)
OSL_FONT_LIST(WindowsEncoding2VariableFonts, variableFonts)
OSL_FONT_LIST(WindowsEncoding2FixedFontFileNames, fixedFontFiles)
OSL_FONT_LIST(WindowsEncoding2VariableFontFileNames, variableFontFiles)
#undef OSL_FONT_LIST

std::string Osl_UnicodeConfiguration::GetLanguageAbbreviatedName(const std::string& language) {
    std::lock_guard<std::mutex> guard(impl_->lock);
    return findLanguage(*impl_, language).shortName;
}

bool Osl_UnicodeConfiguration::IsLegacySupportedLanguage(const std::string& language) {
    std::lock_guard<std::mutex> guard(impl_->lock);
    return findLanguage(*impl_, language).legacy;
}

bool Osl_UnicodeConfiguration::IsUNICODESupportedLanguage(const std::string& language) {
    std::lock_guard<std::mutex> guard(impl_->lock);
    return findLanguage(*impl_, language).unicode;
}

namespace {
void calendarNames(Osl_UnicodeConfiguration::Impl& impl, const std::string& language, bool months, bool abbreviated,
                   std::vector<std::string>& out, const char* failureText, long line) {
    std::string shortName, converter;
    {
        std::lock_guard<std::mutex> guard(impl.lock);
        const LanguageRecord& l = findLanguage(impl, language);
        shortName = l.shortName;
        converter = findEncoding(impl, l.windowsEncoding).converter;
    }
    std::vector<std::string> names = osl::platform::icuCalendarNames(shortName, months, abbreviated);
    if (names.size() != (months ? 12u : 7u)) fail(failureText + language, line);
    for (const auto& name : names) out.push_back(inModeText(name, converter));
}
}  // namespace

void Osl_UnicodeConfiguration::GetMonthNames(const std::string& language, std::vector<std::string>& list) {
    calendarNames(*impl_, language, true, false, list, "Cannot retrieve the month names for the language: ", 640);
}
void Osl_UnicodeConfiguration::GetAbbreviatedMonthNames(const std::string& language, std::vector<std::string>& list) {
    calendarNames(*impl_, language, true, true, list, "Cannot retrieve the abbreviated month names for the language: ",
                  662);
}
void Osl_UnicodeConfiguration::GetWeekdayNames(const std::string& language, std::vector<std::string>& list) {
    calendarNames(*impl_, language, false, false, list, "Cannot retrieve the weekday names for the language: ", 684);
}
void Osl_UnicodeConfiguration::GetAbbreviatedWeekdayNames(const std::string& language, std::vector<std::string>& list) {
    calendarNames(*impl_, language, false, true, list,
                  "Cannot retrieve the abbreviated weekday names for the language: ", 706);
}

bool Osl_UnicodeConfiguration::IsCharacterRTL(const char* p, const std::string& language) {
    std::string converter;
    {
        std::lock_guard<std::mutex> guard(impl_->lock);
        const LanguageRecord& l = findLanguage(*impl_, language);
        if (!l.rtl) return false;
        converter = findEncoding(*impl_, l.windowsEncoding).converter;
    }
    std::vector<int32_t> table;
    if (!IsUnicodeMode()) table = osl::platform::icuSingleByteToUnicode(converter);
    int32_t c = codePointAt(p, table);
    return c >= 0 && osl::platform::icuIsRightToLeft(c);
}

void Osl_UnicodeConfiguration::SetSortOrder(const std::string& language) {
    std::lock_guard<std::mutex> guard(impl_->lock);
    if (!language.empty()) (void)findLanguage(*impl_, language);
    impl_->sortOrder = language;
}

std::string Osl_UnicodeConfiguration::GetSortOrder() {
    std::lock_guard<std::mutex> guard(impl_->lock);
    return impl_->sortOrder;
}

namespace {
int compareInSortOrder(Osl_UnicodeConfiguration::Impl& impl, const std::string& a, const std::string& b,
                       bool caseless) {
    std::string locale;
    {
        std::lock_guard<std::mutex> guard(impl.lock);
        if (!impl.sortOrder.empty()) locale = findLanguage(impl, impl.sortOrder).shortName;
    }
    if (locale.empty()) {
        std::string x = a, y = b;
        if (caseless) {
            ToLower2(x);
            ToLower2(y);
        }
        int r = x.compare(y);
        return r < 0 ? -1 : (r > 0 ? 1 : 0);
    }
    auto toUtf8 = [](const std::string& s) {
        if (Osl_UnicodeConfiguration::IsUnicodeMode()) return s;
        Osl_UnicodeConverter converter;
        converter.SetCurrentEncoding(Osl_UnicodeConfiguration::GetCurrentEncoding());
        std::string out;
        converter.ConvertCurrentEncodingtoUTF8(s, out);
        return out;
    };
    std::optional<int> r = osl::platform::icuCollate(locale, caseless, toUtf8(a), toUtf8(b));
    if (!r) fail("Cannot create a GCLocale for the language " + impl.sortOrder, 752);
    return *r;
}
}  // namespace

int Osl_UnicodeConfiguration::lex_str_compare_func(const std::string& a, const std::string& b) {
    return compareInSortOrder(*Instance()->impl_, a, b, false);
}

int Osl_UnicodeConfiguration::lex_str_compare_func_nocase(const std::string& a, const std::string& b) {
    return compareInSortOrder(*Instance()->impl_, a, b, true);
}


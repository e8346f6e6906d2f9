// The process-wide Unicode configuration: the mode (legacy or Unicode), the current and file-system
// encodings, and the records of the known encodings and languages.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <functional>
#include <list>
#include <string>
#include <vector>

/// The settings of the "unicode" group of the installation settings file.
struct OSL_API Osl_UnicodeSettings {
    /// "unicode" switches Unicode mode on; any other value leaves legacy mode.
    std::string mode = "legacy";
    /// Data directory handed to ICU; required in Unicode mode.
    std::string localedir;
    /// The current (legacy) encoding, a name the encoding records know ("MS1252", "Latin1" ...).
    std::string default_character_set;
    /// Encoding of file names; empty takes default_character_set.
    std::string os_file_systemnative_character_set;
};

/// The singleton that decides the mode and knows the encodings and languages. Created on first
/// use; `Init` runs once before the string classes are used (not guarded against concurrent first
/// calls). Thread-safety: every member may be called from any thread once `Init` has run; the
/// mode and the two encoding names may be read and set from any thread at any time.
class OSL_API Osl_UnicodeConfiguration {
public:
    /// Reads the settings; returns them or throws QIBError (then the defaults stay).
    using SettingsReader = std::function<Osl_UnicodeSettings()>;

    /// The singleton, created on first call; never destroyed.
    static Osl_UnicodeConfiguration* Instance();

    /// Reads the settings (`ReadQibFdsIni`), initialises ICU, sets the encodings and reads the
    /// encoding and language records. Does nothing after a successful Init or while a locale
    /// directory is set. Throws QIBError: "localedir is not set" (98) when the settings ask for
    /// Unicode mode without a locale directory; "Cannot read the encoding records ..." when the
    /// records file is missing.
    void Init();
    /// Init from explicit settings, replacing those of an earlier Init (the records stay loaded).
    void Init(const Osl_UnicodeSettings& settings);
    /// Where `Init()` gets its settings. By default the group "unicode" of the installation
    /// settings file (QibFDSIni found from the library's path); a reader that throws QIBError
    /// (no such file, say) gives the defaults: legacy mode, no encodings. With an empty reader,
    /// `Init()` keeps the mode and encodings set so far. Installing a reader lets the next
    /// `Init()` read again.
    static void SetSettingsReader(SettingsReader reader);

    /// True in Unicode mode (text is UTF-8), false in legacy mode. One atomic load; safe anywhere.
    static bool IsUnicodeMode();
    static void SetUnicodeMode(bool unicode);

    /// The current (legacy) encoding name; empty until set.
    static std::string GetCurrentEncoding();
    static void SetCurrentEncoding(const std::string& name);
    /// The encoding of file names; Init sets it to the current encoding when not configured.
    static std::string GetOSFileSystemNativeEncoding();
    static void SetOSFileSystemNativeEncoding(const std::string& name);

    /// Names of the known encodings (sorted), of the Windows encodings and of the languages.
    void GetEncodings(std::list<std::string>& names);
    void GetWinEncodings(std::list<std::string>& names);
    void GetLanguages(std::list<std::string>& names);

    // Encoding records. An unknown name falls back to the "Latin1" record. A record is found by
    // its own name and by every ICU alias of its converter ("MS1252", "windows-1252", "cp1252").
    std::string GetEncodingDescription(const std::string& name);
    bool IsLegacySupportedEncoding(const std::string& name);
    bool IsUNICODESupportedEncoding(const std::string& name);
    bool IsIBMEncoding(const std::string& name);
    /// True for double-byte encodings with shift bytes (EBCDIC 0x0E/0x0F), such as "IBM-939".
    bool IsDBCSEncoding(const std::string& name);
    /// The Windows encoding of an encoding ("Latin1" -> "MS1252").
    std::string Encoding2WindowsEncoding(const std::string& name);
    /// The encodings whose Windows encoding is winName (appended to the list).
    void WindowsEncoding2Encoding(const std::string& winName, std::list<std::string>& names);
    /// The ICU converter name of an encoding record (after the Latin1 fallback).
    std::string GetConverterName(const std::string& name);

    // Languages. Unknown languages throw QIBError "Cannot find the language info for " NAME.
    std::string Language2WindowsEncoding(const std::string& language);
    void WindowsEncoding2Language(const std::string& winName, std::list<std::string>& languages);
    // Fonts of a Windows encoding. Unknown ones throw "Cannot find the Windows encoding info for ".
    void WindowsEncoding2FixedFonts(const std::string& winName, std::list<std::string>& fonts);
    void WindowsEncoding2VariableFonts(const std::string& winName, std::list<std::string>& fonts);
    void WindowsEncoding2FixedFontFileNames(const std::string& winName, std::list<std::string>& files);
    void WindowsEncoding2VariableFontFileNames(const std::string& winName, std::list<std::string>& files);
    /// The short name of a language ("English" -> "en").
    std::string GetLanguageAbbreviatedName(const std::string& language);
    /// Month and weekday names from ICU's locale data, in the current mode's text (UTF-8 in
    /// Unicode mode, the language's Windows encoding otherwise). Weekdays start with Sunday.
    void GetMonthNames(const std::string& language, std::vector<std::string>& names);
    void GetAbbreviatedMonthNames(const std::string& language, std::vector<std::string>& names);
    void GetWeekdayNames(const std::string& language, std::vector<std::string>& names);
    void GetAbbreviatedWeekdayNames(const std::string& language, std::vector<std::string>& names);
    /// True when the language is written right to left and the character at p is a right-to-left
    /// letter (p is UTF-8 in Unicode mode, a byte of the language's Windows encoding otherwise).
    bool IsCharacterRTL(const char* p, const std::string& language);
    bool IsLegacySupportedLanguage(const std::string& language);
    bool IsUNICODESupportedLanguage(const std::string& language);

    /// The collation of `lex_str_compare_func`: a language name, or empty for byte order.
    void SetSortOrder(const std::string& language);
    std::string GetSortOrder();
    /// Three-way comparison in the sort order (negative, 0, positive); text in the current mode.
    static int lex_str_compare_func(const std::string& a, const std::string& b);
    /// The same without regard to case.
    static int lex_str_compare_func_nocase(const std::string& a, const std::string& b);

    Osl_UnicodeConfiguration(const Osl_UnicodeConfiguration&) = delete;
    Osl_UnicodeConfiguration& operator=(const Osl_UnicodeConfiguration&) = delete;

    struct Impl;

private:
    Osl_UnicodeConfiguration();
    ~Osl_UnicodeConfiguration();

    void ReadQibFdsIni();
    void ReadLocaleIni();
    void ApplySettings(const Osl_UnicodeSettings& settings);

    Impl* impl_;
};

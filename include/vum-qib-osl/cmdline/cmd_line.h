// A scanner over one command-line text: words, -options, =values and the end.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <cstdint>

/// Splits a command-line text into tokens in place, without allocating per token. One object
/// belongs to one thread. Nothing fails: an empty text gives `tkEnd` at once.
class OSL_API CmdLine {
public:
    enum TKind : std::int32_t {
        tkNone = 0,    ///< nothing scanned yet (after construction or Reset)
        tkWord = 1,    ///< a plain word
        tkOption = 2,  ///< the token after a "-"
        tkValue = 3,   ///< the token after a "="
        tkEnd = 4      ///< no more tokens; NextToken stays here until Reset
    };

    /// Scans a copy of `text` (null is taken as the empty text).
    explicit CmdLine(const char* text);
    /// Scans the arguments 1 to argc-1, each preceded by one blank. Arguments are not quoted:
    /// blanks inside an argument split it.
    CmdLine(int argc, char* const argv[]);
    CmdLine(const CmdLine& other);
    /// Copies the text and the scanning state relative to it (each object owns its own buffer).
    CmdLine& operator=(const CmdLine& other);
    ~CmdLine();

    /// Back to the start of the current line (after compacting: of the compacted text).
    void Reset();
    /// Scans the next token and returns its kind. With `compact`, the text consumed so far (the
    /// previous token and everything before it) is first removed from the line.
    TKind NextToken(bool compact);
    /// The current token, zero-terminated, in a buffer of the object (valid until the next call).
    /// An option's first character is upper-cased. Tokens longer than 499 characters are cut.
    char* CurrentToken();
    TKind GetKind() const { return kind_; }
    /// The text being scanned; after compacting, what is left of it.
    const char* GetLine() const { return line_; }

private:
    static constexpr int kTokenSize = 500;

    char* line_;
    char* rest_;
    TKind kind_;
    char* cursor_;
    std::int32_t length_;
    char token_[kTokenSize];
};

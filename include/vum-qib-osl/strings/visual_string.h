// Text laid out in display columns: one 3-byte cell per column, a wide character taking its own
// cell and a wide-pad cell.
#pragma once

#include <vum-qib-osl/osl_api.h>
#include <vum-qib-osl/strings/utf8_string.h>

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

/// In Unicode mode the text is held in its visual form (see Osl_UnicodeConverter): every column is
/// one 3-byte cell, and a wide character is followed by the wide-pad cell. Positions come in two
/// units: narrow positions (columns, that is cells) in the members named `...InNarrowChars`, and
/// character positions in those named `...InChars`. In legacy mode one byte is one character and
/// one column, and every member is the plain byte operation. The mode is asked at every call.
///
/// A boundary that falls between the two cells of a wide character is settled by a policy, a bit
/// set of en_policy values: the start of a range by 4, else 1, else 2; its end by 64, else 16,
/// else 32. Without an applicable bit such a boundary throws std::out_of_range("Out of range"),
/// as does a position beyond the length. Every change leaves the cells well formed: no
/// wide pad without its character, the byte length a multiple of 3.
///
/// Choices of this implementation:
/// - RevertMode swaps start and end bits that move a boundary the same way (1 <-> 32, 2 <-> 16,
///   4 <-> 64). ResizeInNarrowChars, and so the fill of the n-copies members, cuts its tail with
///   the policy turned by it: the end bits of the policy decide the last column.
/// - The set searches compare whole characters: a wide pad in the set is ignored, and a wide pad
///   in the string belongs to the character before it, so every result is a character's first
///   column.
/// - == and != compare the cells, which is comparing the texts; < and > order by code point (the
///   order of Osl_UTF8String in Unicode mode); legacy mode compares bytes.
/// - CodeAt builds its value from signed bytes: for a cell whose last byte has its high bit set
///   the result is that byte as a signed char (so negative), for other cells the ASCII code.
///
/// Thread-safety: const members build the position maps on first use, so an object is not shared
/// between threads without a lock, not even for reading.
class OSL_API Osl_VisualString {
public:
    static constexpr size_t npos = std::string::npos;

    /// The cell codes, each three bytes followed by a NUL.
    static const char WideCharsPad[4];  ///< FF FF FF: second cell of a wide character
    static const char SpaceCode[4];     ///< FE FE 20: a narrow blank, written over a cut half
    static const char NposCode[4];      ///< FE FE FF: code of no character

    enum en_policy : long {
        StartLeft = 1,     ///< move the start one column left (and the count one up)
        StartRight = 2,    ///< move the start one column right (and the count one down)
        StartAccept = 4,   ///< accept; the cut half becomes SpaceCode
        EndExtend = 16,    ///< extend the end one column right
        EndShrink = 32,    ///< shrink the end one column left
        EndAccept = 64,    ///< accept; the cut half becomes SpaceCode
    };

    Osl_VisualString() = default;
    /// Unicode mode: the UTF-8 text in its visual form (a character of four or more bytes ends the
    /// text there). Legacy mode: the bytes.
    explicit Osl_VisualString(const std::string& text);
    explicit Osl_VisualString(const char* text);

    Osl_VisualString& operator=(const std::string& text);
    Osl_VisualString& operator+=(const Osl_VisualString& other) { return Append(other); }

    /// The text: UTF-8 in Unicode mode, the bytes in legacy mode.
    Osl_UTF8String ToUTF8String() const;
    /// The text as UTF-16 (from the current encoding in legacy mode).
    std::u16string ToWString() const;
    /// The cells (the bytes in legacy mode).
    const std::string& ToString() const { return cells_; }
    const char* c_str() const { return cells_.c_str(); }
    operator const std::string&() const { return cells_; }

    void ToLower();
    void ToUpper();
    void Clear();
    bool Empty() const { return cells_.empty(); }
    Osl_VisualString& Append(const Osl_VisualString& other);
    /// n columns of the first character of text at the end (see InsertInNarrowChars with n).
    Osl_VisualString& Append(size_t n, const Osl_VisualString& text, long policy = 0);

    /// Columns (cells); legacy mode: bytes.
    size_t LengthInNarrowChars() const;
    /// Characters; legacy mode: bytes.
    size_t LengthInChars() const;
    /// The first column of character charPos (its last column when policy has bit 1); the narrow
    /// length for charPos at or beyond the end; npos for npos.
    size_t GetNarrowPositionFromCharPosition(size_t charPos, long policy = 0) const;
    /// The character of column narrowPos (a wide pad belongs to its character); the character
    /// length for narrowPos at or beyond the end; npos for npos.
    size_t GetCharPositionFromNarrowPosition(size_t narrowPos) const;
    /// False for a wide-pad column. Throws "Out of range" beyond the length; legacy mode: true.
    bool IsValidPosition(size_t narrowPos) const;
    /// False when the column belongs to a wide character. Throws "Out of range" at or beyond the
    /// length; legacy mode: true.
    bool IsNarrowInNarrowPosition(size_t narrowPos) const;
    bool IsNarrowInCharPosition(size_t charPos) const;
    /// The code of the cell (see the class notes); legacy mode: the byte (0 to 255). Throws "Out
    /// of range" at or beyond the length.
    long CodeAt(size_t narrowPos) const;
    /// The policy with its start and end bits swapped (see the class notes).
    static long RevertMode(long policy);

    /// Inserts text at column pos; a pos inside a wide character: bit 4 blanks both its halves,
    /// bit 1 inserts before it, bit 2 after it.
    Osl_VisualString& InsertInNarrowChars(size_t pos, const Osl_VisualString& text, long policy = 0);
    /// Inserts n columns made of the first character of text (a blank for an empty text); a wide
    /// character that does not fit the last column is settled by the end bits of policy.
    Osl_VisualString& InsertInNarrowChars(size_t pos, size_t n, const Osl_VisualString& text, long policy = 0);
    /// Replaces n columns from pos (npos: to the end) with text, or with count columns as above.
    /// Half of a wide character left outside the range becomes SpaceCode.
    Osl_VisualString& ReplaceInNarrowChars(size_t pos, size_t n, const Osl_VisualString& text, long policy = 0);
    Osl_VisualString& ReplaceInNarrowChars(size_t pos, size_t n, size_t count, const Osl_VisualString& text,
                                           long policy = 0);
    /// Erases n columns from pos (npos: to the end); boundaries as in ReplaceInNarrowChars.
    Osl_VisualString& EraseInNarrowChars(size_t pos, size_t n = npos, long policy = 0);
    /// n columns from pos (npos: to the end); a cut half inside the result becomes SpaceCode.
    Osl_VisualString SubstrInNarrowChars(size_t pos, size_t n = npos, long policy = 0) const;
    /// Column of the first occurrence of text at or after column pos, or npos.
    size_t FindInNarrowChars(const Osl_VisualString& text, size_t pos = 0) const;
    /// Column of the last occurrence of text starting at or before column pos, or npos; an empty
    /// text gives min(pos, length).
    size_t RfindInNarrowChars(const Osl_VisualString& text, size_t pos = npos) const;
    /// Set searches over characters (see the class notes); npos when there is none.
    size_t FindFirstOfInNarrowChars(const Osl_VisualString& set, size_t pos = 0) const;
    size_t FindFirstNotOfInNarrowChars(const Osl_VisualString& set, size_t pos = 0) const;
    size_t FindLastOfInNarrowChars(const Osl_VisualString& set, size_t pos = npos) const;
    size_t FindLastNotOfInNarrowChars(const Osl_VisualString& set, size_t pos = npos) const;
    /// n columns: a longer text loses its tail (end bits of policy, turned by RevertMode, settle a
    /// cut wide character), a shorter one gets columns of fill. Legacy mode: bytes, filled with
    /// the first byte of fill (NUL when it is empty).
    void ResizeInNarrowChars(size_t n, const Osl_VisualString& fill, long policy = 0);
    /// Room for n columns (3n bytes; n bytes in legacy mode).
    void ReserveInNarrowChars(size_t n);

    /// The same in characters: positions go through GetNarrowPositionFromCharPosition, results
    /// come back through GetCharPositionFromNarrowPosition. A position beyond the character
    /// length throws "Out of range".
    Osl_VisualString& InsertInChars(size_t pos, const Osl_VisualString& text);
    Osl_VisualString& InsertInChars(size_t pos, size_t n, const Osl_VisualString& text);
    Osl_VisualString& ReplaceInChars(size_t pos, size_t n, const Osl_VisualString& text);
    Osl_VisualString& ReplaceInChars(size_t pos, size_t n, size_t count, const Osl_VisualString& text);
    Osl_VisualString& EraseInChars(size_t pos, size_t n = npos);
    Osl_VisualString SubstrInChars(size_t pos, size_t n = npos) const;
    size_t FindInChars(const Osl_VisualString& text, size_t pos = 0) const;
    size_t RfindInChars(const Osl_VisualString& text, size_t pos = npos) const;

private:
    friend class Osl_UnicodeConverter;

    void ClearMaps();
    void mapCase(void (*map)(std::string&));
    void buildMaps() const;
    bool unicode() const;
    size_t cells() const { return cells_.size() / 3; }
    bool isPad(size_t narrowPos) const;
    bool splitsWide(size_t narrowPos) const;
    void CalculateValidNarrowBounderies(long policy, size_t& start, size_t& count, bool& startCut,
                                        bool& endCut) const;
    void InitFromNarrowRange(const Osl_VisualString& source, size_t start, size_t count, long policy);
    Osl_VisualString fillOf(size_t n, const Osl_VisualString& text, long policy) const;
    Osl_VisualString& replaceCells(size_t pos, size_t n, const std::string& with, long policy);
    size_t charRange(size_t pos, size_t n, size_t& narrowCount) const;
    size_t toChars(size_t narrowPos) const;
    size_t findInSet(const Osl_VisualString& set, size_t pos, bool forward, bool member) const;

    std::string cells_;
    mutable std::vector<uint64_t> charToNarrow_;
    mutable std::vector<uint64_t> narrowToChar_;
};

/// See the class notes for the rule.
OSL_API bool operator==(const Osl_VisualString& a, const Osl_VisualString& b);
OSL_API bool operator!=(const Osl_VisualString& a, const Osl_VisualString& b);
OSL_API bool operator<(const Osl_VisualString& a, const Osl_VisualString& b);
OSL_API bool operator>(const Osl_VisualString& a, const Osl_VisualString& b);
/// Writes the text (ToUTF8String), not the cells.
OSL_API std::ostream& operator<<(std::ostream& out, const Osl_VisualString& s);

// strings/src/visual_string.cpp
// Editing and measuring text in display columns. Unicode mode works on 3-byte cells, legacy mode
// on bytes; every member asks the mode at its call. Changes go through replaceCells, which
// settles both boundaries first, so that nothing is changed when a boundary throws.
#include <vum-qib-osl/strings/visual_string.h>

#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/unicode_converter.h>

#include "strings/src/visual_cells.h"

#include <algorithm>
#include <cstring>
#include <ostream>
#include <stdexcept>

namespace {

using osl::detail::kCellBytes;

[[noreturn]] void outOfRange() { throw std::out_of_range("Out of range"); }

void setCell(std::string& cells, size_t narrowPos, const char* code) {
    std::memcpy(cells.data() + kCellBytes * narrowPos, code, kCellBytes);
}

// The text order of two visual forms: their UTF-8 bytes, that is every byte but the cell fill and
// the wide pad. Byte order of UTF-8 is code-point order.
int compareText(const std::string& a, const std::string& b) {
    const auto* p = reinterpret_cast<const unsigned char*>(a.data());
    const auto* q = reinterpret_cast<const unsigned char*>(b.data());
    const unsigned char* pEnd = p + a.size();
    const unsigned char* qEnd = q + b.size();
    for (;;) {
        while (p < pEnd && *p >= osl::detail::kCellFill) ++p;
        while (q < qEnd && *q >= osl::detail::kCellFill) ++q;
        if (p == pEnd || q == qEnd) return (p == pEnd ? 0 : 1) - (q == qEnd ? 0 : 1);
        if (*p != *q) return *p < *q ? -1 : 1;
        ++p;
        ++q;
    }
}

}  // namespace

const char Osl_VisualString::WideCharsPad[4] = {osl::detail::kWidePadCell[0], osl::detail::kWidePadCell[1],
                                                osl::detail::kWidePadCell[2], 0};
const char Osl_VisualString::SpaceCode[4] = {osl::detail::kSpaceCell[0], osl::detail::kSpaceCell[1],
                                             osl::detail::kSpaceCell[2], 0};
const char Osl_VisualString::NposCode[4] = {osl::detail::kNposCell[0], osl::detail::kNposCell[1],
                                            osl::detail::kNposCell[2], 0};

Osl_VisualString::Osl_VisualString(const std::string& text) { *this = text; }
Osl_VisualString::Osl_VisualString(const char* text) : Osl_VisualString(std::string(text == nullptr ? "" : text)) {}

Osl_VisualString& Osl_VisualString::operator=(const std::string& text) {
    ClearMaps();
    if (!unicode()) {
        cells_ = text;
    } else if (&text == &cells_) {
        const std::string copy = text;
        osl::detail::assignCells(copy.data(), copy.size(), cells_);
    } else {
        osl::detail::assignCells(text.data(), text.size(), cells_);
    }
    return *this;
}

bool Osl_VisualString::unicode() const { return Osl_UnicodeConfiguration::IsUnicodeMode(); }

void Osl_VisualString::ClearMaps() {
    charToNarrow_.clear();
    narrowToChar_.clear();
}

// One walk fills both maps: a character is one cell, or two when a wide pad follows it.
void Osl_VisualString::buildMaps() const {
    const size_t n = cells();
    if (!charToNarrow_.empty() || n == 0) return;
    narrowToChar_.assign(n, npos);
    charToNarrow_.reserve(n);
    for (size_t i = 0, ch = 0; i < n; ++ch) {
        charToNarrow_.push_back(i);
        narrowToChar_[i] = ch;
        if (++i < n && isPad(i)) narrowToChar_[i++] = ch;
    }
}

bool Osl_VisualString::isPad(size_t narrowPos) const {
    return narrowPos < cells() && osl::detail::isPadCell(cells_.data() + kCellBytes * narrowPos);
}

// A pad without a character before it (cells taken over from legacy bytes) splits nothing.
bool Osl_VisualString::splitsWide(size_t narrowPos) const {
    return narrowPos > 0 && isPad(narrowPos) && !isPad(narrowPos - 1);
}

Osl_UTF8String Osl_VisualString::ToUTF8String() const {
    if (!unicode()) return Osl_UTF8String(cells_);
    Osl_UTF8String text;
    Osl_UnicodeConverter().ConvertVisualtoUTF8(*this, text);
    return text;
}

std::u16string Osl_VisualString::ToWString() const {
    if (!unicode()) return Osl_UTF8String(cells_).ToWString();
    std::u16string text;
    Osl_UnicodeConverter().ConvertVisualtoUCS2(*this, text);
    return text;
}

// Through the text: a case mapping may change a character's width.
void Osl_VisualString::mapCase(void (*map)(std::string&)) {
    if (!unicode()) {
        map(cells_);
        return;
    }
    std::string text = ToUTF8String();
    map(text);
    *this = text;
}

void Osl_VisualString::ToLower() { mapCase(ToLower2); }
void Osl_VisualString::ToUpper() { mapCase(ToUpper2); }

void Osl_VisualString::Clear() {
    cells_.clear();
    ClearMaps();
}

Osl_VisualString& Osl_VisualString::Append(const Osl_VisualString& other) {
    cells_ += other.cells_;
    ClearMaps();
    return *this;
}

Osl_VisualString& Osl_VisualString::Append(size_t n, const Osl_VisualString& text, long policy) {
    return InsertInNarrowChars(LengthInNarrowChars(), n, text, policy);
}

// --- positions -------------------------------------------------------------------------------

size_t Osl_VisualString::LengthInNarrowChars() const { return unicode() ? cells() : cells_.size(); }

size_t Osl_VisualString::LengthInChars() const {
    if (!unicode()) return cells_.size();
    buildMaps();
    return charToNarrow_.size();
}

size_t Osl_VisualString::GetNarrowPositionFromCharPosition(size_t charPos, long policy) const {
    if (charPos == npos) return npos;
    if (!unicode()) return std::min(charPos, cells_.size());
    if (charPos >= LengthInChars()) return cells();
    size_t narrow = charToNarrow_[charPos];
    return (policy & StartLeft) != 0 && isPad(narrow + 1) ? narrow + 1 : narrow;
}

size_t Osl_VisualString::GetCharPositionFromNarrowPosition(size_t narrowPos) const {
    if (narrowPos == npos) return npos;
    if (!unicode()) return std::min(narrowPos, cells_.size());
    if (narrowPos >= cells()) return LengthInChars();
    buildMaps();
    return narrowToChar_[narrowPos];
}

bool Osl_VisualString::IsValidPosition(size_t narrowPos) const {
    if (!unicode()) return true;
    if (narrowPos > cells()) outOfRange();
    return !isPad(narrowPos);
}

bool Osl_VisualString::IsNarrowInNarrowPosition(size_t narrowPos) const {
    if (!unicode()) return true;
    if (narrowPos >= cells()) outOfRange();
    return !isPad(narrowPos) && !isPad(narrowPos + 1);
}

bool Osl_VisualString::IsNarrowInCharPosition(size_t charPos) const {
    if (!unicode()) return true;
    if (charPos >= LengthInChars()) outOfRange();
    return IsNarrowInNarrowPosition(charToNarrow_[charPos]);
}

long Osl_VisualString::CodeAt(size_t narrowPos) const {
    if (!unicode()) {
        if (narrowPos >= cells_.size()) outOfRange();
        return static_cast<unsigned char>(cells_[narrowPos]);
    }
    if (narrowPos >= cells()) outOfRange();
    const char* cell = cells_.data() + kCellBytes * narrowPos;
    const auto b0 = static_cast<signed char>(cell[0]);
    const auto b1 = static_cast<signed char>(cell[1]);
    const auto b2 = static_cast<signed char>(cell[2]);
    // Deliberate: signed bytes, as callers have always received them.
    if (b2 < 0) return static_cast<long>(b2) | static_cast<long>(b1) * 256 | static_cast<long>(b0) * 65536;
    return b2 & 0x7F;
}

long Osl_VisualString::RevertMode(long policy) {
    constexpr long pairs[][2] = {{StartLeft, EndShrink}, {StartRight, EndExtend}, {StartAccept, EndAccept}};
    long out = policy;
    for (const auto& pair : pairs) {
        out &= ~(pair[0] | pair[1]);
        if ((policy & pair[0]) != 0) out |= pair[1];
        if ((policy & pair[1]) != 0) out |= pair[0];
    }
    return out;
}

// --- boundaries and changes ------------------------------------------------------------------

void Osl_VisualString::CalculateValidNarrowBounderies(long policy, size_t& start, size_t& count, bool& startCut,
                                                      bool& endCut) const {
    startCut = endCut = false;
    if (splitsWide(start)) {
        if ((policy & StartAccept) != 0) {
            startCut = true;
        } else if ((policy & StartLeft) != 0) {
            --start;
            ++count;
        } else if ((policy & StartRight) != 0) {
            ++start;
            if (count > 0) --count;
        } else {
            outOfRange();
        }
    }
    if (count > 0 && splitsWide(start + count)) {
        if ((policy & EndAccept) != 0) endCut = true;
        else if ((policy & EndExtend) != 0) ++count;
        else if ((policy & EndShrink) != 0) --count;
        else outOfRange();
    }
}

void Osl_VisualString::InitFromNarrowRange(const Osl_VisualString& source, size_t start, size_t count, long policy) {
    if (start > source.cells()) outOfRange();
    count = std::min(count, source.cells() - start);
    bool startCut = false, endCut = false;
    source.CalculateValidNarrowBounderies(policy, start, count, startCut, endCut);
    cells_.assign(source.cells_, kCellBytes * start, kCellBytes * count);
    ClearMaps();
    if (count == 0) return;
    if (startCut) setCell(cells_, 0, SpaceCode);
    if (endCut) setCell(cells_, count - 1, SpaceCode);
}

// A wide character cut by either boundary loses both halves to blanks: the half inside the range
// goes with it, the half outside stays as a narrow blank.
Osl_VisualString& Osl_VisualString::replaceCells(size_t pos, size_t n, const std::string& with, long policy) {
    if (pos > cells()) outOfRange();
    size_t count = std::min(n, cells() - pos);
    bool startCut = false, endCut = false;
    if (count > 0) {
        CalculateValidNarrowBounderies(policy, pos, count, startCut, endCut);
    } else if (splitsWide(pos)) {  // an insertion point moves without making a range
        if ((policy & StartAccept) != 0) startCut = true;
        else if ((policy & StartLeft) != 0) --pos;
        else if ((policy & StartRight) != 0) ++pos;
        else outOfRange();
    }
    ClearMaps();
    if (startCut) {
        setCell(cells_, pos - 1, SpaceCode);
        setCell(cells_, pos, SpaceCode);
    }
    if (endCut) {
        setCell(cells_, pos + count - 1, SpaceCode);
        setCell(cells_, pos + count, SpaceCode);
    }
    cells_.replace(kCellBytes * pos, kCellBytes * count, with);
    return *this;
}

// n columns of the first character of text: repeated, then cut to n columns.
Osl_VisualString Osl_VisualString::fillOf(size_t n, const Osl_VisualString& text, long policy) const {
    std::string unit(text.cells() == 0 ? SpaceCode : text.cells_.substr(0, kCellBytes));
    if (text.isPad(1)) unit += WideCharsPad;
    Osl_VisualString fill;
    fill.cells_.reserve(n * unit.size());
    for (size_t i = 0; i < n; ++i) fill.cells_ += unit;
    if (unit.size() > kCellBytes) fill.ResizeInNarrowChars(n, text, policy);
    return fill;
}

Osl_VisualString& Osl_VisualString::InsertInNarrowChars(size_t pos, const Osl_VisualString& text, long policy) {
    if (unicode()) return replaceCells(pos, 0, text.cells_, policy);
    if (pos > cells_.size()) outOfRange();
    cells_.insert(pos, text.cells_);
    return *this;
}

Osl_VisualString& Osl_VisualString::InsertInNarrowChars(size_t pos, size_t n, const Osl_VisualString& text,
                                                        long policy) {
    if (unicode()) return replaceCells(pos, 0, fillOf(n, text, policy).cells_, policy);
    if (pos > cells_.size()) outOfRange();
    cells_.insert(pos, n, text.cells_.empty() ? ' ' : text.cells_[0]);
    return *this;
}

Osl_VisualString& Osl_VisualString::ReplaceInNarrowChars(size_t pos, size_t n, const Osl_VisualString& text,
                                                         long policy) {
    if (unicode()) return replaceCells(pos, n, text.cells_, policy);
    if (pos > cells_.size()) outOfRange();
    cells_.replace(pos, n, text.cells_);
    return *this;
}

Osl_VisualString& Osl_VisualString::ReplaceInNarrowChars(size_t pos, size_t n, size_t count,
                                                         const Osl_VisualString& text, long policy) {
    if (unicode()) return replaceCells(pos, n, fillOf(count, text, policy).cells_, policy);
    if (pos > cells_.size()) outOfRange();
    cells_.replace(pos, n, count, text.cells_.empty() ? ' ' : text.cells_[0]);
    return *this;
}

Osl_VisualString& Osl_VisualString::EraseInNarrowChars(size_t pos, size_t n, long policy) {
    if (unicode()) return replaceCells(pos, n, std::string(), policy);
    if (pos > cells_.size()) outOfRange();
    cells_.erase(pos, n);
    return *this;
}

Osl_VisualString Osl_VisualString::SubstrInNarrowChars(size_t pos, size_t n, long policy) const {
    Osl_VisualString result;
    if (unicode()) {
        result.InitFromNarrowRange(*this, pos, n, policy);
    } else {
        if (pos > cells_.size()) outOfRange();
        result.cells_ = cells_.substr(pos, n);
    }
    return result;
}

void Osl_VisualString::ResizeInNarrowChars(size_t n, const Osl_VisualString& fill, long policy) {
    if (!unicode()) {
        cells_.resize(n, fill.cells_.empty() ? '\0' : fill.cells_[0]);
        return;
    }
    const size_t length = cells();
    if (n > length) InsertInNarrowChars(length, n - length, fill, policy);
    else if (n < length) EraseInNarrowChars(n, npos, RevertMode(policy));
}

void Osl_VisualString::ReserveInNarrowChars(size_t n) { cells_.reserve(unicode() ? kCellBytes * n : n); }

// --- searches --------------------------------------------------------------------------------

size_t Osl_VisualString::FindInNarrowChars(const Osl_VisualString& text, size_t pos) const {
    if (!unicode()) return cells_.find(text.cells_, pos);
    if (pos > cells()) return npos;
    // A byte search may hit inside a cell; such a hit is passed over.
    for (size_t at = kCellBytes * pos; (at = cells_.find(text.cells_, at)) != npos; ++at) {
        if (at % kCellBytes == 0) return at / kCellBytes;
    }
    return npos;
}

size_t Osl_VisualString::RfindInNarrowChars(const Osl_VisualString& text, size_t pos) const {
    if (!unicode()) return cells_.rfind(text.cells_, pos);
    if (text.cells_.empty()) return std::min(pos, cells());
    for (size_t at = pos >= cells() ? cells_.size() : kCellBytes * pos;
         (at = cells_.rfind(text.cells_, at)) != npos; --at) {
        if (at % kCellBytes == 0) return at / kCellBytes;
        if (at == 0) break;
    }
    return npos;
}

namespace {
// Whether the character whose first cell is at cell is in the set (its wide pads are ignored).
bool inSet(const std::string& set, const char* cell) {
    for (size_t j = 0; j + kCellBytes <= set.size(); j += kCellBytes) {
        const char* member = set.data() + j;
        if (!osl::detail::isPadCell(member) && std::memcmp(member, cell, kCellBytes) == 0) return true;
    }
    return false;
}
}  // namespace

// The first (or last) character from pos on (or back) that is in the set, or is not.
size_t Osl_VisualString::findInSet(const Osl_VisualString& set, size_t pos, bool forward, bool member) const {
    const size_t n = cells();
    if (n == 0 || (forward && pos >= n)) return npos;
    const auto wanted = [&](size_t i) {
        return !isPad(i) && inSet(set.cells_, cells_.data() + kCellBytes * i) == member;
    };
    if (forward) {
        for (size_t i = pos; i < n; ++i)
            if (wanted(i)) return i;
    } else {
        for (size_t i = std::min(pos, n - 1) + 1; i-- > 0;)
            if (wanted(i)) return i;
    }
    return npos;
}

size_t Osl_VisualString::FindFirstOfInNarrowChars(const Osl_VisualString& set, size_t pos) const {
    return unicode() ? findInSet(set, pos, true, true) : cells_.find_first_of(set.cells_, pos);
}
size_t Osl_VisualString::FindFirstNotOfInNarrowChars(const Osl_VisualString& set, size_t pos) const {
    return unicode() ? findInSet(set, pos, true, false) : cells_.find_first_not_of(set.cells_, pos);
}
size_t Osl_VisualString::FindLastOfInNarrowChars(const Osl_VisualString& set, size_t pos) const {
    return unicode() ? findInSet(set, pos, false, true) : cells_.find_last_of(set.cells_, pos);
}
size_t Osl_VisualString::FindLastNotOfInNarrowChars(const Osl_VisualString& set, size_t pos) const {
    return unicode() ? findInSet(set, pos, false, false) : cells_.find_last_not_of(set.cells_, pos);
}

// --- character units -------------------------------------------------------------------------

// The columns of characters [pos, pos + n): returns the first, sets narrowCount. Legacy mode
// passes both through for the byte operations to check.
size_t Osl_VisualString::charRange(size_t pos, size_t n, size_t& narrowCount) const {
    if (!unicode()) {
        narrowCount = n;
        return pos;
    }
    const size_t chars = LengthInChars();
    if (pos > chars) outOfRange();
    const size_t start = GetNarrowPositionFromCharPosition(pos, 0);
    const size_t end = n >= chars - pos ? cells() : GetNarrowPositionFromCharPosition(pos + n, 0);
    narrowCount = end - start;
    return start;
}

size_t Osl_VisualString::toChars(size_t narrowPos) const {
    return unicode() ? GetCharPositionFromNarrowPosition(narrowPos) : narrowPos;
}

namespace {
// Columns of n characters like the first of text.
size_t columnsOf(size_t n, const Osl_VisualString& text) {
    return Osl_UnicodeConfiguration::IsUnicodeMode() && text.LengthInNarrowChars() > 1 &&
                   !text.IsNarrowInNarrowPosition(0)
               ? 2 * n
               : n;
}
}  // namespace

Osl_VisualString& Osl_VisualString::InsertInChars(size_t pos, const Osl_VisualString& text) {
    size_t none = 0;
    return InsertInNarrowChars(charRange(pos, 0, none), text, 0);
}

Osl_VisualString& Osl_VisualString::InsertInChars(size_t pos, size_t n, const Osl_VisualString& text) {
    size_t none = 0;
    return InsertInNarrowChars(charRange(pos, 0, none), columnsOf(n, text), text, 0);
}

Osl_VisualString& Osl_VisualString::ReplaceInChars(size_t pos, size_t n, const Osl_VisualString& text) {
    size_t count = 0;
    const size_t start = charRange(pos, n, count);
    return ReplaceInNarrowChars(start, count, text, 0);
}

Osl_VisualString& Osl_VisualString::ReplaceInChars(size_t pos, size_t n, size_t count, const Osl_VisualString& text) {
    size_t narrowCount = 0;
    const size_t start = charRange(pos, n, narrowCount);
    return ReplaceInNarrowChars(start, narrowCount, columnsOf(count, text), text, 0);
}

Osl_VisualString& Osl_VisualString::EraseInChars(size_t pos, size_t n) {
    size_t count = 0;
    const size_t start = charRange(pos, n, count);
    return EraseInNarrowChars(start, count, 0);
}

Osl_VisualString Osl_VisualString::SubstrInChars(size_t pos, size_t n) const {
    size_t count = 0;
    const size_t start = charRange(pos, n, count);
    return SubstrInNarrowChars(start, count, 0);
}

size_t Osl_VisualString::FindInChars(const Osl_VisualString& text, size_t pos) const {
    if (!unicode()) return FindInNarrowChars(text, pos);
    if (pos > LengthInChars()) return npos;
    return toChars(FindInNarrowChars(text, GetNarrowPositionFromCharPosition(pos, 0)));
}

size_t Osl_VisualString::RfindInChars(const Osl_VisualString& text, size_t pos) const {
    if (!unicode()) return RfindInNarrowChars(text, pos);
    return toChars(RfindInNarrowChars(text, GetNarrowPositionFromCharPosition(pos, 0)));
}

// --- comparison and output -------------------------------------------------------------------

bool operator==(const Osl_VisualString& a, const Osl_VisualString& b) { return a.ToString() == b.ToString(); }
bool operator!=(const Osl_VisualString& a, const Osl_VisualString& b) { return !(a == b); }

bool operator<(const Osl_VisualString& a, const Osl_VisualString& b) {
    if (!Osl_UnicodeConfiguration::IsUnicodeMode()) return a.ToString() < b.ToString();
    return compareText(a.ToString(), b.ToString()) < 0;
}

bool operator>(const Osl_VisualString& a, const Osl_VisualString& b) { return b < a; }

std::ostream& operator<<(std::ostream& out, const Osl_VisualString& s) {
    const Osl_UTF8String text = s.ToUTF8String();
    return out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

// strings/patterns/src/regexp.cpp
// Osl_RegularExpression on the PCRE2 bridge. Positions handed to the bridge are positions of
// the whole subject, so group ranges need no translation.
#include <vum-qib-osl/strings/regular_expression.h>

#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/unicode_configuration.h>

#include <algorithm>

#include "platform/pcre2_regex.h"

namespace {
constexpr char kWhere[] = "strings/src/regexp";
}  // namespace

struct Osl_RegularExpression::Impl {
    osl::platform::Pcre2Regex engine;
    std::int32_t options = 0;
    const char* subject = nullptr;
    std::uint64_t subjectStart = 0;
    // The UTF-8 bytes [0, checkedEnd) of the string at checkedData, of size checkedSize, are
    // known to be valid: searches that walk on through the same string do not check again.
    const char* checkedData = nullptr;
    std::size_t checkedSize = 0;
    std::size_t checkedEnd = 0;

    void forgetChecks() {
        checkedData = nullptr;
        checkedSize = checkedEnd = 0;
    }

    // Makes sure s[0, end) is known to be valid UTF-8 (legacy text needs no check).
    bool ensureChecked(const std::string& s, std::size_t pos, std::size_t end) {
        if (!engine.utf8()) return true;
        if (pos == 0 || s.data() != checkedData || s.size() != checkedSize) {
            checkedData = s.data();
            checkedSize = s.size();
            checkedEnd = 0;
        }
        if (end <= checkedEnd) return true;
        // A valid prefix ends on a character boundary, so the rest can be checked on its own.
        if (!osl::platform::isValidUtf8(s.data() + checkedEnd, end - checkedEnd)) return false;
        checkedEnd = end;
        return true;
    }

    // The span rule of search, match and replace; false when there is nothing to search.
    static bool span(const std::string& s, std::size_t pos, std::size_t& len) {
        if (pos > s.size()) return false;
        len = std::min(len, s.size() - pos);
        return len > 0;
    }

    // 1 match, 0 none, -1 error.
    int execute(const std::string& s, std::size_t pos, std::size_t len) {
        subject = s.data();
        subjectStart = pos;
        if (!engine.compiled()) return -1;
        if (!span(s, pos, len)) return 0;
        if (!ensureChecked(s, pos, pos + len)) return -1;
        return engine.exec(s.data(), pos + len, pos, true);
    }
};

Osl_RegularExpression::range Osl_RegularExpression::not_found() { return range(npos, npos); }

Osl_RegularExpression::Osl_RegularExpression() : impl_(std::make_unique<Impl>()) {}

Osl_RegularExpression::Osl_RegularExpression(const std::string& text, bool ignoreCase)
    : impl_(std::make_unique<Impl>()) {
    pattern(text, ignoreCase);
}

Osl_RegularExpression::~Osl_RegularExpression() = default;
Osl_RegularExpression::Osl_RegularExpression(Osl_RegularExpression&&) noexcept = default;
Osl_RegularExpression& Osl_RegularExpression::operator=(Osl_RegularExpression&&) noexcept = default;

void Osl_RegularExpression::SetOption(long options) {
    if (!impl_) impl_ = std::make_unique<Impl>();
    impl_->options = static_cast<std::int32_t>(options);
}

void Osl_RegularExpression::pattern(const std::string& text, bool ignoreCase) {
    if (!impl_) impl_ = std::make_unique<Impl>();
    Impl& m = *impl_;
    m.engine.clear();
    m.forgetChecks();
    // Deliberate: the bits stay in the stored word, so ignoring case is sticky.
    m.options |= static_cast<std::int32_t>(kExtendedSyntax);
    if (ignoreCase) m.options |= static_cast<std::int32_t>(kIgnoreCase);
    std::string message;
    if (!m.engine.compile(text, Osl_UnicodeConfiguration::IsUnicodeMode(), (m.options & kIgnoreCase) != 0,
                          message)) {
        throw QIBError("Invalid regular expression pattern: " + text + "\nGCError: " + message, 12, 12,
                       kWhere, 317);
    }
}

Osl_RegularExpression::range Osl_RegularExpression::search(const std::string& s, std::size_t pos,
                                                           std::size_t len) {
    if (!impl_ || impl_->execute(s, pos, len) != 1) return not_found();
    std::size_t start = 0, end = 0;
    if (!impl_->engine.group(0, start, end)) return not_found();
    return range(start, end);
}

int Osl_RegularExpression::match(const std::string& s, std::size_t pos, std::size_t len) {
    if (!impl_) return -2;
    const int rc = impl_->execute(s, pos, len);
    if (rc == 0) return -1;
    std::size_t start = 0, end = 0;
    if (rc != 1 || !impl_->engine.group(0, start, end)) return -2;
    return static_cast<int>(std::min<std::size_t>(end - start, static_cast<std::size_t>(INT32_MAX)));
}

int Osl_RegularExpression::matchShared(const std::string& s) const {
    if (!impl_) return -2;
    return static_cast<int>(std::min<long>(impl_->engine.matchLength(s.data(), s.size()), INT32_MAX));
}

std::size_t Osl_RegularExpression::groups() {
    if (!impl_) return 0;
    std::size_t n = 0, start = 0, end = 0;
    while (impl_->engine.group(n + 1, start, end)) ++n;
    return n;
}

Osl_RegularExpression::range Osl_RegularExpression::group(std::size_t i) {
    std::size_t start = 0, end = 0;
    if (!impl_ || !impl_->engine.group(i, start, end)) return not_found();
    return range(start, end);
}

std::size_t Osl_RegularExpression::replace(std::string& s, std::size_t pos, std::size_t len,
                                           const std::string& with, bool all) {
    if (!impl_) return 0;
    Impl& m = *impl_;
    m.subject = s.data();
    m.subjectStart = pos;
    if (!m.engine.compiled() || !Impl::span(s, pos, len)) return 0;
    std::size_t end = pos + len;
    // The subject and the replacement are checked once; replacing whole characters (match
    // ranges lie on character boundaries) by valid text keeps the subject valid.
    if (!m.ensureChecked(s, pos, end)) return 0;
    m.forgetChecks();
    std::size_t count = 0;
    std::size_t cur = pos;
    std::size_t start = 0, stop = 0;
    auto found = [&](const std::string& subject, std::size_t spanEnd) {
        return cur < spanEnd && m.engine.exec(subject.data(), spanEnd, cur, true) == 1 &&
               m.engine.group(0, start, stop) && start < stop;
    };
    if (!m.engine.looksBeforeStart()) {
        // Nothing before the search start can change a match: search the untouched subject
        // and build the result once, instead of moving the tail on every replacement.
        std::string out;
        while (found(s, end)) {
            if (count == 0) {
                out.reserve(s.size());
                out.append(s, 0, start);
            } else {
                out.append(s, cur, start - cur);
            }
            out += with;
            ++count;
            cur = stop;
            if (!all) break;
        }
        if (count > 0) {
            out.append(s, cur, npos);
            s.swap(out);
        }
        return count;
    }
    // Lookbehind or anchors see the inserted text: replace in place.
    while (found(s, end)) {
        s.replace(start, stop - start, with);
        ++count;
        end = end - (stop - start) + with.size();
        cur = start + with.size();
        if (!all) break;
    }
    return count;
}

// fuzz/regexp_fuzz.cpp
// Arbitrary patterns and wildcards against arbitrary subjects, in both text modes. Input: one
// flag byte (bit 0 Unicode mode, bit 1 ignore case, bit 2 replace all), then the pattern up to
// the first byte 0x00, then the subject. Bad patterns must throw QIBError, never crash; every
// range found must lie inside the subject.
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/auto_edit_string.h>
#include <vum-qib-osl/strings/regular_expression.h>
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/wildcard_string.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

void runRegex(const std::string& pattern, const std::string& subject, bool ignoreCase, bool all) {
    Osl_RegularExpression re;
    try {
        re.pattern(pattern, ignoreCase);
    } catch (const QIBError& e) {
        check(e.What().rfind("Invalid regular expression pattern: ", 0) == 0);
        check(re.match(subject) == -2);
        return;
    }
    const int length = re.match(subject);
    check(length >= -2 && length <= static_cast<int>(subject.size()));
    std::size_t pos = 0;
    for (int n = 0; n < 64 && pos <= subject.size(); ++n) {
        const Osl_RegularExpression::range r = re.search(subject, pos, std::string::npos);
        if (r == Osl_RegularExpression::not_found()) break;
        check(r.first >= pos && r.first <= r.second && r.second <= subject.size());
        for (std::size_t g = 1; g <= re.groups(); ++g) {
            const Osl_RegularExpression::range gr = re.group(g);
            check(gr.first <= gr.second && gr.second <= subject.size());
        }
        pos = r.second > r.first ? r.second : r.second + 1;
    }
    std::string copy = subject;
    const std::size_t count = re.replace(copy, 0, std::string::npos, "<>", all);
    check(count <= subject.size() + 1);
    if (count == 0) check(copy == subject);
    if (!all) check(count <= 1);

    // replace must give what a loop of searches and in-place replacements gives, whichever
    // way it takes internally.
    std::string expected = subject;
    std::size_t expectedCount = 0;
    for (std::size_t from = 0, end = expected.size(); from < end;) {
        const Osl_RegularExpression::range r = re.search(expected, from, end - from);
        if (r == Osl_RegularExpression::not_found() || r.first == r.second) break;
        expected.replace(r.first, r.second - r.first, "<>");
        ++expectedCount;
        end = end - (r.second - r.first) + 2;
        from = r.first + 2;
        if (!all) break;
    }
    check(copy == expected && count == expectedCount);
}

void runWildcard(const std::string& wildcard, const std::string& subject, bool caseSensitive) {
    try {
        WildcardString w(wildcard, caseSensitive);
        if (w.Match(subject)) check(!subject.empty());
        w.SetCase(!caseSensitive);
        w.Match(subject);
    } catch (const QIBError&) {
        // Braces and invalid UTF-8 reach the expression as they are.
    }
}

void runAutoEdit(const std::string& pattern, const std::string& value) {
    QIBAutoEditString text(pattern);
    text.AddVariable("A", value);
    text.AddVariable("B", "1");
    text.Resolve(false);
    text.Resolve(true);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::uint8_t flags = data[0];
    const std::string rest(reinterpret_cast<const char*>(data + 1), size - 1);
    const std::size_t cut = rest.find('\0');
    const std::string pattern = rest.substr(0, cut);
    const std::string subject = cut == std::string::npos ? std::string() : rest.substr(cut + 1);
    Osl_UnicodeConfiguration::SetUnicodeMode((flags & 1) != 0);
    runRegex(pattern, subject, (flags & 2) != 0, (flags & 4) != 0);
    runWildcard(pattern, subject, (flags & 2) == 0);
    runAutoEdit(pattern, subject);
    return 0;
}

// AutoEdit texts: "%%name" variables replaced by user values and the built-in date.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <iosfwd>
#include <map>
#include <string>

/// A narrow string that orders and compares without regard to ASCII case.
class OSL_API QIBNoCaseString : public std::string {
public:
    QIBNoCaseString() = default;
    QIBNoCaseString(const std::string& s) : std::string(s) {}
    QIBNoCaseString(const char* s) : std::string(s) {}
    friend OSL_API bool operator<(const QIBNoCaseString& a, const QIBNoCaseString& b);
};

/// A pattern in which variables are written "%%" (or "%%$") followed by a name of letters,
/// digits, _, # and @. Resolve replaces each by the value of the user variable of that name
/// (case ignored), else of the built-in variable "date" (today, formatted with "%s%m%d": see
/// the README for the directives), else leaves it as written. Two or more variables written
/// next to each other are a compound name: the rightmost is resolved first and its value is
/// appended to the name on its left ("%%A%%B" with B=1 is "%%A1"). A "." just before a
/// variable is a joining mark and disappears ("file.%%A" gives "filex" for A=x). Nothing is
/// reported as an error. A run of any length resolves in linear time, without recursion.
/// Thread-safety: one thread at a time per object; separate objects from separate threads.
class OSL_API QIBAutoEditString {
public:
    explicit QIBAutoEditString(const std::string& pattern);
    virtual ~QIBAutoEditString();

    /// Sets the variable, replacing an earlier value of the same name (case ignored).
    void AddVariable(const std::string& name, const std::string& value);
    /// True when the name (without "%%") is a user variable.
    bool HasUserDefinedVariable(const std::string& name) const;
    /// The resolved text. keepWidth: each variable takes the columns it was written in; a
    /// shorter value is padded with blanks, a longer one takes the blanks that follow the
    /// variable and is cut where no blank is left. Columns are characters (UTF-8 in Unicode
    /// mode).
    std::string Resolve(bool keepWidth = false);
    operator std::string() { return Resolve(false); }
    const std::string& GetPattern() const { return pattern_; }

    /// The syntax: "%%\$?", the heading followed by "[A-Za-z0-9_#@]+", and two or more
    /// variables in a row.
    static const std::string& GetVariableHeadingPattern();
    static const std::string& GetVariablePattern();
    static const std::string& GetRecursiveVariablePattern();

    /// Writes the pattern and a line end, then one line "name=value" per user variable.
    friend OSL_API std::ostream& operator<<(std::ostream& out, const QIBAutoEditString& text);

protected:
    void ResolveSequencedVariables();
    std::string FlattenSequencedVariable(const std::string& text);
    std::string RecursiveResolve(const std::string& text);
    void ResolveFlatVariables(bool keepWidth);
    void ResolveFlatVariables();
    std::string ResolveVariable(const std::string& text);
    bool IsBuildInVariable(const std::string& name) const;
    std::string ResolveBuildInVariable(const std::string& name) const;
    std::string ResolveUserDefinedVariable(const std::string& name) const;
    /// Removes every "%%." from the text being resolved.
    void EliminateConcatinationString();
    /// True when the pattern holds the heading followed by the name.
    bool PatternHasVariable(const std::string& name) const;

    std::string pattern_;
    std::string work_;
    std::string dateFormat_;
    std::map<QIBNoCaseString, std::string> variables_;
};

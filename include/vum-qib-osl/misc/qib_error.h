// The library's one exception type, and the product-wide exception-number texts.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <iosfwd>
#include <string>

/// A failure reported by the library: text, code, severity and where (source module and line).
/// Thrown by value, caught by `const&`. Severity 12 is an ordinary error, 8 an operating-system
/// failure; up to 4 marks information (see `isInfoOnly`).
class OSL_API QIBError {
public:
    /// "No error", code 0, severity 0, where "unknown".
    QIBError();
    /// An empty text with code 0 and severity 0 becomes "No error"; an empty where becomes
    /// "unknown" (line ignored); a non-zero line is appended to where after one blank.
    QIBError(const std::string& text, long code, long severity, const std::string& where, long line);
    QIBError(const QIBError&) = default;
    QIBError& operator=(const QIBError&) = default;
    virtual ~QIBError();

    const std::string& What() const { return text_; }
    long Code() const { return code_; }
    long Severity() const { return severity_; }
    const std::string& Where() const { return where_; }

    /// False when severity is 0 and code is greater than 4; otherwise true when severity <= 4.
    bool isInfoOnly() const;

    /// Equal text, code and severity; where is not compared.
    bool operator==(const QIBError& other) const;

private:
    std::string text_;
    long code_;
    long severity_;
    std::string where_;
};

/// A programming error: text "Logical Error: " + text, code 1, severity 12.
class OSL_API QIBLogicalError : public QIBError {
public:
    QIBLogicalError(const std::string& text, const std::string& where, long line);
    QIBLogicalError(const QIBLogicalError&) = default;
    QIBLogicalError& operator=(const QIBLogicalError&) = default;
    ~QIBLogicalError() override;
};

/// The one-line form: "TEXT, code C, severity S, programm WHERE" (no line end).
OSL_API std::ostream& operator<<(std::ostream& out, const QIBError& error);

/// The fixed text of a product-wide exception number, "Unknown Exception" for any other number.
/// The pointer is to static text: never free or modify it. Never null.
OSL_API const char* ExceptionToConstChar(int exceptionNumber);

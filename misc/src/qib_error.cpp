// misc/src/qib_error.cpp
// QIBError, QIBLogicalError and the product-wide exception-number texts.
#include <vum-qib-osl/misc/qib_error.h>

#include <ostream>

QIBError::QIBError() : QIBError(std::string(), 0, 0, std::string(), 0) {}

QIBError::QIBError(const std::string& text, long code, long severity, const std::string& where, long line)
    : text_(text.empty() && code == 0 && severity == 0 ? std::string("No error") : text),
      code_(code),
      severity_(severity),
      where_(where.empty() ? std::string("unknown") : where) {
    if (!where.empty() && line != 0) where_.append(1, ' ').append(std::to_string(line));
}

QIBError::~QIBError() = default;

bool QIBError::isInfoOnly() const {
    // Deliberate: severity 0 with a real code is still an error.
    if (severity_ == 0 && code_ > 4) return false;
    return severity_ <= 4;
}

bool QIBError::operator==(const QIBError& other) const {
    return text_ == other.text_ && code_ == other.code_ && severity_ == other.severity_;
}

QIBLogicalError::QIBLogicalError(const std::string& text, const std::string& where, long line)
    : QIBError("Logical Error: " + text, 1, 12, where, line) {}

QIBLogicalError::~QIBLogicalError() = default;

std::ostream& operator<<(std::ostream& out, const QIBError& error) {
    // "programm" is the published spelling; log readers match on it.
    return out << error.What() << ", code " << error.Code() << ", severity " << error.Severity()
               << ", programm " << error.Where();
}

const char* ExceptionToConstChar(int exceptionNumber) {
    struct Entry {
        int number;
        const char* text;
    };
    static constexpr Entry kTexts[] = {
        {1, "Memory allocation failure"},
        {100, "Command Line Error"},
        {600, "Delivery Error"},
        {700, "User File Does Not Exist"},
        {701, "Illegal User File"},
        {702, "Unexpected EOF in User File"},
        {710, "Syntax Error in User File"},
        {1201, "No Delegated File"},
        {1202, "Too Many Lines in Page"},
        {1203, "No Decision Table"},
        {1204, "Bad Rule"},
        {1205, "Page Line is Too Long"},
        {1301, "Attempt to Change Constant Object"},
        {1401, "Unknown Rule Type"},
        {1402, "Bad Pointer Received"},
        {1403, "Not Implemented"},
        {1453, "File name exceeds maximal length"},
        {1500, "KvlSock: Socket error"},
    };
    for (const Entry& e : kTexts) {
        if (e.number == exceptionNumber) return e.text;
    }
    return "Unknown Exception";
}

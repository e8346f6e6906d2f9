// Log messages: the severity scale, the message stream and the cheap "is anyone listening" test.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <atomic>
#include <ios>
#include <ostream>
#include <sstream>
#include <string>

class CLog;
class QIBError;

/// Severity of a message and level of a channel. Messages carry 1 to 5; a level of 7 takes none.
enum LogSeverity : int {
    SevInfo = 1,
    SevWarning = 2,
    SevError = 3,
    SevFatal = 4,
    SevSystem = 5,
    SevNone = 7,
};

/// "info", "warning", "error", "fatal" or "system" (exact, case-sensitive); 7 for any other text.
OSL_API LogSeverity StringToSev(const std::string& name);

/// A log message under construction: a string stream with a severity, a category and an "at"
/// (where the message comes from). Write the body with <<, then end it with `flush` or one of the
/// Log calls; the message then returns to its default attributes and an empty body, so one object
/// can emit many lines. One object belongs to one thread.
///
/// A message that no channel wants is dropped before its line is built, but the body has already
/// been formatted by then: use OSL_LOG below where the body costs something.
class OSL_API CLogMsg : public std::ostringstream {
public:
    /// A message to the logger singleton. A null at or category keeps the empty default.
    explicit CLogMsg(const char* at = nullptr, const char* category = nullptr, LogSeverity sev = SevInfo);
    /// A message to the logger that *log points to (it may be null: then nothing is written).
    CLogMsg(CLog** log, const char* at, const char* category, LogSeverity sev);
    ~CLogMsg() override;

    /// Copies the attributes and the logger; the body is not copied.
    CLogMsg& operator=(const CLogMsg& other);

    CLogMsg& Sev(LogSeverity sev);
    CLogMsg& Category(const char* category);
    CLogMsg& At(const char* at);
    LogSeverity GetSevirity() const { return severity_; }
    const std::string& GetCategory() const { return category_; }
    const std::string& GetAt() const { return at_; }
    int GetMaxStringLen() const { return 0; }
    int GetType() const { return 0; }

    /// The finished line (header and body) of the last message logged.
    const char* c_str() const { return line_.c_str(); }
    std::size_t size() const { return line_.size(); }

    /// Every insertion returns the message, so that `flush` can end any chain: a type that only
    /// a std::ostream prints (bool, std::string_view, a caller's type) goes through the template
    /// below.
    /// Sets the severity of the message being built.
    CLogMsg& operator<<(LogSeverity sev) { return Sev(sev); }
    /// A null pointer writes nothing.
    CLogMsg& operator<<(const char* text);
    CLogMsg& operator<<(const std::string& text);
    /// Writes the whole contents of the other stream.
    CLogMsg& operator<<(const std::ostringstream& stream);
    CLogMsg& operator<<(char c);
    CLogMsg& operator<<(short n);
    CLogMsg& operator<<(unsigned short n);
    CLogMsg& operator<<(int n);
    CLogMsg& operator<<(unsigned int n);
    CLogMsg& operator<<(long n);
    CLogMsg& operator<<(unsigned long n);
    CLogMsg& operator<<(long long n);
    CLogMsg& operator<<(unsigned long long n);
    CLogMsg& operator<<(float n);
    CLogMsg& operator<<(double n);
    CLogMsg& operator<<(bool b);
    CLogMsg& operator<<(const void* p);
    /// Writes the error's one-line form.
    CLogMsg& operator<<(const QIBError& error);
    CLogMsg& operator<<(CLogMsg& (*manipulator)(CLogMsg&)) { return manipulator(*this); }
    /// Standard manipulators (std::hex, std::setw ...) keep the chain a CLogMsg.
    CLogMsg& operator<<(std::ostream& (*manipulator)(std::ostream&));
    CLogMsg& operator<<(std::ios_base& (*manipulator)(std::ios_base&));
    /// Anything else that a std::ostream can print.
    template <typename T>
        requires requires(std::ostream& out, const T& value) { out << value; }
    CLogMsg& operator<<(const T& value) {
        static_cast<std::ostream&>(*this) << value;
        return *this;
    }

    /// When the message is enabled: header, then text (or the body written so far when text is
    /// null), then out to the logger. The attributes return to their defaults in every case.
    void Log(const char* text);
    /// As Log(const char*), but the attributes return to their defaults only when enabled.
    void Log(const std::string& text);
    /// As Log(const char*) with the contents of the given stream as the body.
    void Log(std::ostringstream& stream);
    /// A non-null category, a non-zero severity and a non-null at replace the current ones first.
    void Log(LogSeverity sev, const char* category, const char* at, const char* text);
    void Log(LogSeverity sev, const char* category, const char* at, const std::string& text);

    /// Whether the logger would take this message (severity and category).
    bool IsEnable() const;
    /// False while no logger singleton exists; else the singleton's answer.
    static bool HasSeverity(LogSeverity sev);
    static bool HasCategory(const std::string& category);

protected:
    void Reset(const char* category, LogSeverity sev, const char* at, CLog** log);
    void Flush();
    void Clear();
    void WriteHeader();
    void AppendBody();

private:
    std::string defaultCategory_;
    std::string category_;
    LogSeverity defaultSeverity_ = SevInfo;
    LogSeverity severity_ = SevInfo;
    std::string defaultAt_;
    std::string at_;
    std::string line_;
    CLog** log_ = nullptr;
};

/// Ends the message: `msg << "text" << flush;` logs it.
OSL_API CLogMsg& flush(CLogMsg& msg);

/// Logs text through a temporary message with the given severity (0 means info), category and at.
OSL_API void OslLogPrint(LogSeverity sev, const char* category, const char* at, const char* text);
OSL_API void OslLogPrint(LogSeverity sev, const char* category, const char* at, const std::string& text);
/// Writes the text to standard output.
OSL_API void LogToCout(const char* text);

namespace osl::detail {

/// The lowest severity that the logger singleton's channels take; above every severity while no
/// singleton exists. Kept by the logger; read by OSL_LOG.
OSL_API extern std::atomic<int> logGate;

/// Whether the logger singleton would take a message of this severity and category. A severity
/// below every channel's level costs one load and one compare.
inline bool logWanted(LogSeverity sev, const char* category) {
    if (static_cast<int>(sev) < logGate.load(std::memory_order_relaxed)) return false;
    return category == nullptr || *category == '\0' || CLogMsg::HasCategory(category);
}

/// The message of one OSL_LOG statement, logged when the statement ends.
class LogStatement {
public:
    LogStatement(const char* at, const char* category, LogSeverity sev) : msg_(at, category, sev) {}
    ~LogStatement() {
        try {
            msg_.Log(nullptr);
        } catch (...) {  // a statement that logs must never end the program
        }
    }
    LogStatement(const LogStatement&) = delete;
    LogStatement& operator=(const LogStatement&) = delete;
    CLogMsg& msg() { return msg_; }

private:
    CLogMsg msg_;
};

}  // namespace osl::detail

/// Logs one message whose body is formatted only when the logger wants it:
///
///     OSL_LOG(SevWarning, "ini", "Load") << "line " << n << " ignored";
///
/// When no channel takes the severity, the statement costs a load and a compare and the body's
/// expressions are not evaluated. The message is logged at the end of the statement: do not end
/// it with `flush` (that logs it, and the end of the statement would log an empty second line).
#define OSL_LOG(sev, category, at)                                    \
    if (__builtin_expect(!::osl::detail::logWanted((sev), (category)), 1)) { \
    } else                                                            \
        ::osl::detail::LogStatement((at), (category), (sev)).msg()

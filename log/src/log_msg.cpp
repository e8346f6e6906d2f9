// log/src/log_msg.cpp
// CLogMsg: building the header and the line, and handing the message to the logger.
#include <vum-qib-osl/log/log_msg.h>

#include <vum-qib-osl/log/log.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <locale>

#include "platform/clock.h"
#include "platform/process.h"

namespace osl::detail {
std::atomic<int> logGate{INT_MAX};
}  // namespace osl::detail

LogSeverity StringToSev(const std::string& name) {
    if (name == "info") return SevInfo;
    if (name == "warning") return SevWarning;
    if (name == "error") return SevError;
    if (name == "fatal") return SevFatal;
    if (name == "system") return SevSystem;
    return SevNone;
}

namespace {

const char* severityTag(LogSeverity sev) {
    switch (sev) {
        case SevInfo: return "-INFO  ";
        case SevWarning: return "-WARN  ";
        case SevError: return "-ERROR ";
        case SevFatal: return "-FATAL ";
        case SevSystem: return "-SYS   ";
        default: return "-------";
    }
}

}  // namespace

CLogMsg::CLogMsg(const char* at, const char* category, LogSeverity sev)
    : CLogMsg(&CLog::instance_, at, category, sev) {}

CLogMsg::CLogMsg(CLog** log, const char* at, const char* category, LogSeverity sev) {
    Reset(category, sev, at, log);
}

CLogMsg::~CLogMsg() = default;

CLogMsg& CLogMsg::operator=(const CLogMsg& other) {
    if (this != &other) {
        defaultCategory_ = other.defaultCategory_;
        category_ = other.category_;
        defaultSeverity_ = other.defaultSeverity_;
        severity_ = other.severity_;
        defaultAt_ = other.defaultAt_;
        at_ = other.at_;
        log_ = other.log_;
    }
    return *this;
}

void CLogMsg::Reset(const char* category, LogSeverity sev, const char* at, CLog** log) {
    if (category) category_ = defaultCategory_ = category;
    if (at) at_ = defaultAt_ = at;
    severity_ = defaultSeverity_ = sev;
    log_ = log;
}

CLogMsg& CLogMsg::Sev(LogSeverity sev) {
    severity_ = sev;
    return *this;
}

CLogMsg& CLogMsg::Category(const char* category) {
    category_ = category ? category : "";
    return *this;
}

CLogMsg& CLogMsg::At(const char* at) {
    at_ = at ? at : "";
    return *this;
}

// Most insertions into a message use no width, flag or locale of the stream: for those, the
// characters go straight into the buffer, without the stream's sentry and locale facets, which
// cost more than the rest of a log line's formatting. Anything else takes the standard path.
namespace {

bool plainText(const std::ostream& out) {
    return out.width() == 0 && out.good() && !(out.flags() & std::ios_base::unitbuf);
}

bool plainNumbers(const std::ostream& out) {
    static const std::locale classic = std::locale::classic();
    return plainText(out) && (out.flags() & (std::ios_base::basefield | std::ios_base::showpos)) == std::ios_base::dec &&
           out.getloc() == classic;
}

template <typename Integer>
void insertInteger(std::ostream& out, Integer value) {
    if (!plainNumbers(out)) {
        out << value;
        return;
    }
    char digits[24];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value);
    out.rdbuf()->sputn(digits, end.ptr - digits);
}

}  // namespace

CLogMsg& CLogMsg::operator<<(const char* text) {
    if (text == nullptr) return *this;
    if (plainText(*this)) {
        rdbuf()->sputn(text, static_cast<std::streamsize>(std::strlen(text)));
    } else {
        static_cast<std::ostream&>(*this) << text;
    }
    return *this;
}

CLogMsg& CLogMsg::operator<<(const std::string& text) {
    if (plainText(*this)) {
        rdbuf()->sputn(text.data(), static_cast<std::streamsize>(text.size()));
    } else {
        static_cast<std::ostream&>(*this) << text;
    }
    return *this;
}

CLogMsg& CLogMsg::operator<<(const std::ostringstream& stream) {
    static_cast<std::ostream&>(*this) << stream.str();
    return *this;
}

CLogMsg& CLogMsg::operator<<(const QIBError& error) {
    static_cast<std::ostream&>(*this) << error;
    return *this;
}

#define OSL_INSERT(type)                                  \
    CLogMsg& CLogMsg::operator<<(type value) {            \
        static_cast<std::ostream&>(*this) << value;       \
        return *this;                                     \
    }
OSL_INSERT(char)
OSL_INSERT(float)
OSL_INSERT(double)
OSL_INSERT(bool)
OSL_INSERT(const void*)
#undef OSL_INSERT

#define OSL_INSERT_INTEGER(type)                          \
    CLogMsg& CLogMsg::operator<<(type value) {            \
        insertInteger(*this, value);                      \
        return *this;                                     \
    }
OSL_INSERT_INTEGER(short)
OSL_INSERT_INTEGER(unsigned short)
OSL_INSERT_INTEGER(int)
OSL_INSERT_INTEGER(unsigned int)
OSL_INSERT_INTEGER(long)
OSL_INSERT_INTEGER(unsigned long)
OSL_INSERT_INTEGER(long long)
OSL_INSERT_INTEGER(unsigned long long)
#undef OSL_INSERT_INTEGER

CLogMsg& CLogMsg::operator<<(std::ostream& (*manipulator)(std::ostream&)) {
    manipulator(*this);
    return *this;
}

CLogMsg& CLogMsg::operator<<(std::ios_base& (*manipulator)(std::ios_base&)) {
    manipulator(*this);
    return *this;
}

bool CLogMsg::IsEnable() const {
    if (log_ == nullptr || *log_ == nullptr) return false;
    return (*log_)->IsEnable(*this);
}

bool CLogMsg::HasSeverity(LogSeverity sev) {
    CLog* log = CLog::instance_;
    return log != nullptr && log->HasSeverity(sev);
}

bool CLogMsg::HasCategory(const std::string& category) {
    CLog* log = CLog::instance_;
    return log != nullptr && log->HasCategory(category);
}

// Every line needs the date and the ids; formatting them costs more than writing the line, so
// each thread keeps them formatted: the date for the current second, the ids until they change.
// A change of time zone shows from the next second on.
namespace {

struct HeaderCache {
    std::int64_t second = -1;
    const osl::platform::Clock* clock = nullptr;
    char date[48] = {};  // "MM-DD-YYYY hh:mm:ss "
    std::size_t dateLength = 0;
    int pid = -1;
    long tid = -1;
    char ids[48] = {};  // "%5d/%5ld "
    std::size_t idsLength = 0;
};

std::size_t clampLength(int n, std::size_t size) {
    if (n < 0) return 0;
    return static_cast<std::size_t>(n) < size ? static_cast<std::size_t>(n) : size - 1;
}

}  // namespace

void CLogMsg::WriteHeader() {
    thread_local HeaderCache cache;
    const osl::platform::Clock* clock = &osl::platform::clock();
    const osl::platform::WallTime now = clock->now();
    if (now.seconds != cache.second || clock != cache.clock) {
        const osl::platform::LocalTime t = osl::platform::toLocal(now);
        cache.dateLength = clampLength(std::snprintf(cache.date, sizeof cache.date, "%02d-%02d-%04d %02d:%02d:%02d ",
                                                     t.month, t.day, t.year, t.hour, t.minute, t.second),
                                       sizeof cache.date);
        cache.second = now.seconds;
        cache.clock = clock;
    }
    const int pid = osl::platform::currentProcessId();
    const long tid = osl::platform::currentThreadId();
    if (pid != cache.pid || tid != cache.tid) {
        cache.idsLength = clampLength(std::snprintf(cache.ids, sizeof cache.ids, "%5d/%5ld ", pid, tid), sizeof cache.ids);
        cache.pid = pid;
        cache.tid = tid;
    }
    // The fixed part in one piece; blanks at 2..11 receive the process name in Flush.
    char head[160];
    std::size_t n = 0;
    auto put = [&head, &n](const char* text, std::size_t size) {
        if (n + size > sizeof head) size = sizeof head - n;
        std::memcpy(head + n, text, size);
        n += size;
    };
    put("A           ", 12);
    put(cache.ids, cache.idsLength);
    if (category_.size() < 5) put("     ", 5 - category_.size());
    if (category_.size() <= 32) {
        put(category_.data(), category_.size());
        put(" ", 1);
        put(cache.date, cache.dateLength);
        put(severityTag(severity_), 7);
        line_.assign(head, n);
    } else {
        line_.assign(head, n);
        line_ += category_;
        line_ += ' ';
        line_.append(cache.date, cache.dateLength);
        line_.append(severityTag(severity_), 7);
    }
    line_ += at_;
    line_ += " : ";
}

void CLogMsg::AppendBody() {
    // The body ends at the write position: Clear only rewinds, so the buffer may still hold the
    // tail of a longer earlier message. Like the terminating NUL it stands for, an embedded NUL
    // also ends the body.
    const std::streampos written = tellp();
    std::string_view contents = rdbuf()->view();
    std::size_t length = written > 0 ? static_cast<std::size_t>(written) : 0;
    if (length > contents.size()) length = contents.size();
    contents = contents.substr(0, length);
    std::size_t nul = contents.find('\0');
    if (nul != std::string_view::npos) contents = contents.substr(0, nul);
    line_.append(contents.data(), contents.size());
}

void CLogMsg::Flush() {
    if (log_ == nullptr || *log_ == nullptr) return;
    if (line_.size() > 1) line_.replace(2, 10, (*log_)->GetProcessName());
    (*log_)->Log(*this);
}

void CLogMsg::Clear() {
    category_ = defaultCategory_;
    severity_ = defaultSeverity_;
    at_ = defaultAt_;
    clear();
    seekp(0);
}

void CLogMsg::Log(const char* text) {
    if (IsEnable()) {
        WriteHeader();
        if (text) {
            line_ += text;
        } else {
            AppendBody();
        }
        Flush();
    }
    Clear();
}

void CLogMsg::Log(const std::string& text) {
    if (!IsEnable()) return;  // deliberate: a disabled message keeps its attributes
    WriteHeader();
    line_ += text;
    Flush();
    Clear();
}

void CLogMsg::Log(std::ostringstream& stream) {
    if (IsEnable()) {
        WriteHeader();
        line_ += stream.str();
        Flush();
    }
    Clear();
}

void CLogMsg::Log(LogSeverity sev, const char* category, const char* at, const char* text) {
    if (category) category_ = category;
    if (sev != 0) severity_ = sev;
    if (at) at_ = at;
    Log(text);
}

void CLogMsg::Log(LogSeverity sev, const char* category, const char* at, const std::string& text) {
    if (category) category_ = category;
    if (sev != 0) severity_ = sev;
    if (at) at_ = at;
    Log(text);
}

CLogMsg& flush(CLogMsg& msg) {
    msg.Log(static_cast<const char*>(nullptr));
    return msg;
}

void OslLogPrint(LogSeverity sev, const char* category, const char* at, const char* text) {
    CLogMsg msg(nullptr, nullptr, SevInfo);
    msg.Log(sev, category, at, text);
}

void OslLogPrint(LogSeverity sev, const char* category, const char* at, const std::string& text) {
    CLogMsg msg(nullptr, nullptr, SevInfo);
    msg.Log(sev, category, at, text);
}

void LogToCout(const char* text) {
    if (text) std::cout << text;
}

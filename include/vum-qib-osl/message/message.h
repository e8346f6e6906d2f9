// Messages fetched from the process-wide catalog and filled with arguments.
#pragma once

#include <vum-qib-osl/message/format_string.h>
#include <vum-qib-osl/osl_api.h>

#include <cstdint>
#include <string>

class QIBError;

/// A message text taken from the process-wide catalog (SingleMapFileMT) by key, then filled by
/// position: msg["E12"] << file << line. Not shared between threads; the catalog is.
class OSL_API Message : public FormatString {
public:
    /// Appends `catalogFile` to the process-wide catalog (see Append). When that fails, writes
    /// "Message file NAME is invalid" to standard error; nothing is thrown.
    explicit Message(const std::string& catalogFile = "");
    Message(const Message&) = default;
    Message& operator=(const Message&) = default;
    ~Message() override;

    /// Reads a catalog file into the process-wide catalog. Keys already known keep their text: the
    /// first catalog wins. The file is looked up in the directory named by the environment variable
    /// MESSAGE_PATH ("MESSAGE_PATH/NAME") when it is set and not empty, else as given. An empty
    /// name does nothing and returns true. False when the file is unreadable or malformed.
    bool Append(const std::string& catalogFile);
    bool HasEntry(const std::string& key) const;
    /// The number of placeholders of the key's text (see FormatString); 0 when the key is missing.
    std::uint16_t GetArgumentsNumber(const std::string& key) const;
    /// Whether a looked-up text is preceded by its key and one blank (on after construction).
    void PrintCode(bool on) { printCode = on; }

    /// Takes the key's text ("Message KEY not found" when missing), preceded by "KEY " while
    /// printing codes, and starts filling its placeholders from "%1".
    Message& operator[](const std::string& key);
    std::string& Text() { return m_Text; }
    operator std::string&() { return m_Text; }  // NOLINT(google-explicit-constructor): published

    Message& operator<<(const std::string& argument);
    Message& operator<<(const char* argument);
    Message& operator<<(char argument);
    Message& operator<<(int argument);
    Message& operator<<(long argument);
    /// Fills the next four placeholders with the error's text, code, severity and where.
    Message& operator<<(const QIBError& error);

private:
    bool printCode;
};

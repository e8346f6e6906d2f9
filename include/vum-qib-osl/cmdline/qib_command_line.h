// Program options as a queue of -NAME=value elements, and usage texts from a message catalog.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <iosfwd>
#include <list>
#include <string>
#include <vector>

/// The arguments of a program as a queue of elements such as "-OUT=x.txt", "-v" or a bare word,
/// read in order, peeked at, looked up by name, pushed and rewound. Nothing is validated and
/// nothing is thrown: unknown options simply stay in the queue. One object, one thread.
///
/// An element splits into a name and a value: a bare word (not starting with "-") has an empty
/// name and is all value; otherwise the name is the text before the first "=" (all of it when
/// there is none), upper-cased, dash included, and the value is the text after that "=".
/// Name arguments are given with their dash and compared without regard to case.
/// In Unicode mode every text is UTF-8.
class OSL_API QIBCommandLine {
public:
    using Position = std::list<std::string>::iterator;
    using ConstPosition = std::list<std::string>::const_iterator;

    QIBCommandLine();
    QIBCommandLine(const QIBCommandLine& other);
    QIBCommandLine& operator=(const QIBCommandLine& other);
    virtual ~QIBCommandLine();

    /// argv[0] becomes arg0; the others are joined into elements and appended to the queue:
    /// [-OUT, =, f], [-OUT=, f] and [-OUT=f] each give -OUT=f, while [-OUT, f] stays two elements
    /// and a value starting with "-" is never joined. Empty arguments are dropped. In Unicode mode
    /// the arguments are converted from the file-system encoding to UTF-8.
    void Init(int argc, char* const argv[]);
    /// As the narrow form, from UTF-16 arguments; empty arguments are kept (as empty bare words).
    /// In legacy mode each argument is narrowed byte by byte (plain ASCII comes through as is).
    void Init(int argc, char16_t* const argv[]);

    /// Appends the history (every element read so far) to the end of the queue. The history is
    /// kept, so a second Reset appends it again.
    void Reset();
    bool IsMore() const { return !m_Pending.empty(); }
    /// Takes the first element into the history and splits it. False (arguments unchanged) when
    /// the queue is empty.
    bool ReadOption(std::string& name, std::string& value);
    /// As ReadOption, leaving the queue and history as they are.
    bool PeakOption(std::string& name, std::string& value) const;
    /// Appends name + "=" + value (always with the "=").
    void PushOption(const std::string& name, const std::string& value);
    /// value := the value of the first element named `name` (cleared first); false if none.
    bool FindAndPeekOption(const std::string& name, std::string& value) const;
    /// As FindAndPeekOption, and moves the element from the queue to the history.
    bool FindAndReadOption(const std::string& name, std::string& value);
    std::string GetArg0() { return m_Arg0; }
    bool HasOption(const std::string& name) const;
    /// Some element of that name has an empty value (-v or -v=).
    bool HasFlag(const std::string& name) const;
    /// The value of the first element of that name; "" if none.
    std::string GetOptionValue(const std::string& name) const;
    /// The values of every element of that name, in queue order.
    std::vector<std::string> GetOptionValues(const std::string& name) const;
    /// Erases the first element of that name, or every one with `all`; the history is untouched.
    void RemoveOption(const std::string& name, bool all);
    /// The queued elements separated by one blank.
    std::string tos() const;

    friend OSL_API std::ostream& operator<<(std::ostream& out, const QIBCommandLine& line);

protected:
    /// The second stage of both Init forms: `count` arguments, the first of them the program name.
    void Init(int count, const std::vector<std::string>& args);
    /// The first queued element at or after `start` whose name equals `name`; end() if none.
    Position FindInputOption(const std::string& name);
    Position FindInputOption(const std::string& name, Position start);
    ConstPosition FindInputOption(const std::string& name) const;
    ConstPosition FindInputOption(const std::string& name, ConstPosition start) const;

    std::string m_Arg0;
    std::list<std::string> m_Pending;
    std::list<std::string> m_History;
    Position m_Saved;
};

/// Writes every queued element followed by ", " (the last one too).
OSL_API std::ostream& operator<<(std::ostream& out, const QIBCommandLine& line);

/// Prints the usage text of `set` from `catalog` (see the next form).
OSL_API bool DisplayUsage(std::ostream& out, std::string set, std::string catalog);

/// Prints a usage text from a message catalog, appended to the process-wide catalog first (see
/// Message::Append; "" uses what is loaded). For n = 1, 2, ... until neither key exists:
/// - "usage_xN" is a header: for k = 1, 2, ... every set S with a key "S_xN_k" writes, at k = 1,
///   the header and "\n", then "\t", the entry and "\n";
/// - else "usage_N" is a format text whose placeholders take, in order, the texts "S_N_a" of
///   each set that has one ("" when none has), then is written with "\n".
/// Codes are not printed. The output is flushed. Always returns true.
OSL_API bool DisplayUsage(std::ostream& out, const std::vector<std::string>& sets, const std::string& catalog);

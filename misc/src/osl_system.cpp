// misc/src/osl_system.cpp
// Osl_System: the shell forms, and the timed form that splits the command line into words the way
// the product's command lines are written (double quotes, backslash before a quote) and reports
// failures as log lines and numbers, never exceptions.
#include <vum-qib-osl/misc/osl_system.h>

#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/strings/unicode_configuration.h>

#include "platform/child_process.h"
#include "platform/dynamic_library.h"

#include <cerrno>
#include <vector>

namespace {

constexpr int kTimedOut = -666;
// The command buffer holds 2048 characters with the terminating zero.
constexpr std::size_t kLongestCommand = 2047;

// UTF-16 units in Unicode mode (a four-byte UTF-8 sequence needs two), bytes otherwise.
std::size_t commandLength(const std::string& command) {
    if (!Osl_UnicodeConfiguration::IsUnicodeMode()) return command.size();
    std::size_t units = 0;
    for (unsigned char c : command) {
        if ((c & 0xC0) != 0x80) ++units;
        if (c >= 0xF0) ++units;
    }
    return units;
}

// Blanks and tabs separate words; a double quote switches grouping on and off and is dropped;
// backslashes count only before a double quote: 2n give n and the quote groups, 2n+1 give n and
// a literal quote.
std::vector<std::string> splitWords(const std::string& command) {
    std::vector<std::string> words;
    std::string word;
    bool inWord = false;
    bool quoted = false;
    for (std::size_t i = 0; i < command.size();) {
        const char c = command[i];
        if (!quoted && (c == ' ' || c == '\t')) {
            if (inWord) words.push_back(std::move(word));
            word.clear();
            inWord = false;
            ++i;
            continue;
        }
        inWord = true;
        if (c == '\\') {
            const std::size_t end = command.find_first_not_of('\\', i);
            const std::size_t count = (end == std::string::npos ? command.size() : end) - i;
            if (end != std::string::npos && command[end] == '"') {
                word.append(count / 2, '\\');
                if (count % 2 == 1) word += '"';
                i = count % 2 == 1 ? end + 1 : end;
            } else {
                word.append(count, '\\');
                i += count;
            }
        } else if (c == '"') {
            quoted = !quoted;
            ++i;
        } else {
            word += c;
            ++i;
        }
    }
    if (inWord) words.push_back(std::move(word));
    return words;
}

int startFailed(const std::string& command, int error) {
    std::string text = "Error(" + std::to_string(error) + ")";
    if (const std::string system = osl::platform::systemErrorText(error); !system.empty())
        text += " " + system;
    OSL_LOG(SevError, nullptr, "System") << "Failed to invoke extern program (" << command << ") "
                                         << " Because " << text;
    return error;
}

}  // namespace

int Osl_System(const char* command) { return osl::platform::runShellCommand(command); }

int Osl_System(const std::string& command) {
    return osl::platform::runShellCommand(command.c_str());
}

int Osl_System(const std::string& command, int timeout) {
    OSL_LOG(SevInfo, nullptr, "System") << "FullCommand: " << command;
    if (commandLength(command) > kLongestCommand) return startFailed(command, E2BIG);
    if (command.find('\0') != std::string::npos) return startFailed(command, EINVAL);

    using osl::platform::ChildGroup;
    const ChildGroup group = timeout == -2 ? ChildGroup::OwnSession
                             : timeout > 0 ? ChildGroup::OwnGroup
                                           : ChildGroup::Caller;
    osl::platform::ChildProcess child;
    if (const std::error_code ec = child.start(splitWords(command), group))
        return startFailed(command, ec.value());
    if (timeout < 0) {
        child.detach();
        return 0;
    }
    std::optional<std::chrono::milliseconds> limit;
    if (timeout > 0) limit = std::chrono::seconds(timeout);
    if (const std::optional<int> result = child.wait(limit)) return *result;
    child.killGroup();
    OSL_LOG(SevError, nullptr, "System")
        << "Time out elapced for extern program executing (" << command << ") "
        << " Because timeout: " << timeout << " sec";
    return kTimedOut;
}

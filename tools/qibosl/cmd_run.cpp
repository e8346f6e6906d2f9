// tools/qibosl/cmd_run.cpp
// qibosl run: a program with a time-out, so that shell scripts get the guarantee of Osl_System:
// on expiry the program and everything it started are gone. Also the demo's part on programs.
#include <vum-qib-osl/log/log.h>
#include <vum-qib-osl/misc/osl_system.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstring>
#include <iomanip>
#include <iostream>
#include <optional>

#include "tools/qibosl/commands.h"

namespace qibosl {
namespace {

constexpr int kTimedOutStatus = 124;
constexpr int kNoStatus = 125;
constexpr int kNotStartedStatus = 127;

bool notStarted = false;

// Osl_System's error lines go to standard error. A start failure is told from an exit code only
// by its line: both are positive numbers.
void toStandardError(const char* line) {
    std::cerr << line << "\n";
    if (std::strstr(line, "Failed to invoke extern program (") != nullptr) notStarted = true;
}

// The word as Osl_System splits it back: in double quotes when it holds blanks or quotes (or is
// empty), with the backslashes before a quote doubled and the quote escaped.
std::string quoted(const std::string& word) {
    if (!word.empty() && word.find_first_of(" \t\"") == std::string::npos) return word;
    std::string out = "\"";
    std::size_t backslashes = 0;
    for (char c : word) {
        if (c == '\\') {
            ++backslashes;
            continue;
        }
        out.append(c == '"' ? backslashes * 2 + 1 : backslashes, '\\');
        backslashes = 0;
        out += c;
    }
    out.append(backslashes * 2, '\\');
    return out + "\"";
}

bool isTimeoutOption(const std::string& arg) {
    static const std::string kName = "-timeout=";
    return arg.size() >= kName.size() &&
           std::equal(kName.begin(), kName.end(), arg.begin(), [](char a, char b) {
               return a == std::tolower(static_cast<unsigned char>(b));
           });
}

}  // namespace

int cmdRun(const Args& args) {
    std::optional<int> timeout;
    std::size_t first = 0;
    for (; first < args.size(); ++first) {
        const std::string& arg = args[first];
        if (arg == "--") {
            ++first;
            break;
        }
        if (arg.empty() || arg[0] != '-') break;
        if (!isTimeoutOption(arg)) throw UsageError("unknown option " + arg);
        const std::string value = arg.substr(std::strlen("-timeout="));
        std::size_t used = 0;
        try {
            timeout = std::stoi(value, &used);
        } catch (const std::exception&) {
            used = 0;
        }
        if (used == 0 || used != value.size()) throw UsageError("bad time-out '" + value + "'");
    }
    if (!timeout) throw UsageError("run needs -timeout=SECONDS");
    if (first >= args.size()) throw UsageError("run needs a command");
    std::string command;
    for (std::size_t i = first; i < args.size(); ++i)
        command += (i > first ? " " : "") + quoted(args[i]);

    CLog::Instance()->SetFunctionChannel(toStandardError, SevError, "", false);
    const int result = Osl_System(command, *timeout);
    if (result == -666) return kTimedOutStatus;
    if (notStarted) return kNotStartedStatus;
    return result < 0 ? kNoStatus : result;
}

void demoPrograms() {
    std::cout << "\n== external programs with a time-out\n";
    std::cout << "Osl_System(\"sh -c \\\"exit 3\\\"\", 5) = " << Osl_System("sh -c \"exit 3\"", 5)
              << "   (the program's exit code)\n";
    const auto start = std::chrono::steady_clock::now();
    const int result = Osl_System("sleep 30", 1);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    std::cout << "Osl_System(\"sleep 30\", 1) = " << result << " after " << std::fixed
              << std::setprecision(1) << took.count()
              << " s   (killed when the time-out elapsed)\n";
}

}  // namespace qibosl

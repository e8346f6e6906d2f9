// fuzz/cmdline_fuzz.cpp
// Arbitrary argument vectors through QIBCommandLine (narrow and UTF-16 forms) and arbitrary texts
// through the CmdLine tokenizer. Input: the arguments separated by bytes 0x00; the same bytes are
// also one command-line text. Nothing may crash; every option read must have come from the input,
// and the tokenizer must end.
#include <vum-qib-osl/cmdline/cmd_line.h>
#include <vum-qib-osl/cmdline/qib_command_line.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

std::vector<std::string> split(const std::string& bytes) {
    std::vector<std::string> words{"program"};
    std::size_t start = 0;
    for (std::size_t i = 0; i <= bytes.size(); ++i) {
        if (i == bytes.size() || bytes[i] == '\0') {
            words.push_back(bytes.substr(start, i - start));
            start = i + 1;
        }
    }
    return words;
}

void commandLine(std::vector<std::string> words) {
    std::vector<char*> argv;
    for (std::string& w : words) argv.push_back(w.data());
    QIBCommandLine line;
    line.Init(static_cast<int>(argv.size()), argv.data());
    const std::string text = line.tos();
    std::string name, value;
    if (line.PeakOption(name, value)) (void)line.HasOption(name);
    (void)line.GetOptionValues("in");
    (void)line.HasFlag("v");
    QIBCommandLine copy = line;
    copy.RemoveOption("out", true);
    std::size_t read = 0;
    while (line.ReadOption(name, value)) {
        check(++read <= words.size());  // every element is read at most once
    }
    check(!line.IsMore());
    line.Reset();

    std::vector<std::u16string> wide;
    for (const std::string& w : words) wide.emplace_back(w.begin(), w.end());  // bytes as units
    std::vector<char16_t*> wargv;
    for (std::u16string& w : wide) wargv.push_back(w.data());
    QIBCommandLine fromWide;
    fromWide.Init(static_cast<int>(wargv.size()), wargv.data());
    (void)fromWide.tos();
}

void tokenizer(const std::string& text) {
    CmdLine scanner(text.c_str());
    std::size_t tokens = 0;
    bool compact = false;
    for (CmdLine::TKind kind = scanner.NextToken(compact); kind != CmdLine::tkEnd;
         kind = scanner.NextToken(compact)) {
        check(kind == CmdLine::tkWord || kind == CmdLine::tkOption || kind == CmdLine::tkValue);
        check(std::strlen(scanner.CurrentToken()) <= 499);
        check(++tokens <= text.size() + 1);  // each token consumes at least one byte
        compact = (tokens % 3) == 0;
    }
    CmdLine copy = scanner;
    copy.Reset();
    (void)copy.NextToken(false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    commandLine(split(bytes));
    tokenizer(bytes.substr(0, bytes.find('\0')));
    return 0;
}

// fuzz/files_env_fuzz.cpp
// Arbitrary bytes as environment entries and as the head of a file: WEnv must refuse or store
// them consistently, and signature detection must agree between its FILE* and stream forms.
#include <vum-qib-osl/file/unicode_signature.h>
#include <vum-qib-osl/ini/general_configuration.h>
#include <vum-qib-osl/misc/wenv.h>

#include <stdio.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

// Input: name 0x01 value. Names get a prefix so that no real variable of the process changes.
void fuzzEnvironment(const std::string& input) {
    const std::size_t split = input.find('\x01');
    const std::string name = "OSLFZ_" + input.substr(0, split);
    const std::string value = split == std::string::npos ? "" : input.substr(split + 1);
    const int rc = WEnv::WPutEnv(name, value);
    const std::string entry = name + "=" + value;
    const std::size_t equals = entry.find('=');
    const std::string entryName = entry.substr(0, equals);
    const std::string entryValue = entry.substr(equals + 1);
    const bool hasNul = entry.find('\0') != std::string::npos;
    check((rc == 0) == !hasNul);
    std::string got;
    const WEnv::EnvStatus status = WEnv::WGetEnv(entryName, got);
    if (rc == 0 && entryValue.empty()) check(status == WEnv::EnvNotSet);
    if (rc == 0 && !entryValue.empty()) check(status == WEnv::EnvSet && got == entryValue);
    WEnv::WClearEnv(entryName);
    check(WEnv::WGetEnv(entryName, got) == WEnv::EnvNotSet && got.empty());

    const std::string fixed = GeneralConfiguration::GetFixedDirectoryPath(input);
    check(!fixed.empty() && fixed.back() == '/');
}

void fuzzSignature(const std::string& input) {
    int fileKind = 0;
    if (FILE* file = fmemopen(const_cast<char*>(input.data()), input.size(), "rb")) {
        fileKind = Osl_FILE_SkipSignature(file);
        const long pos = ftell(file);
        check(pos == (fileKind == 0 ? 0 : fileKind == 1 ? 3 : 2));
        fclose(file);
    } else {
        check(input.empty());  // fmemopen refuses an empty buffer
    }
    std::istringstream in(input);
    const int streamKind = Osl_Ifstream_SkipSignature(in);
    check(streamKind >= 0 && streamKind <= 3);
    // The forms differ only on short input, where the stream form stays failed and answers 0.
    if (input.size() >= 3) check(streamKind == fileKind);
    if (input.size() < 3) check(streamKind == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    fuzzEnvironment(input);
    fuzzSignature(input);
    return 0;
}

// file/src/unicode_signature.cpp
// Signature detection on C files and input streams, and Osl_Fopen.
#include <vum-qib-osl/file/unicode_signature.h>

#include <vum-qib-osl/file/osl_file.h>

#include <cerrno>
#include <cstring>

const char UTF8_Header[4] = {'\xEF', '\xBB', '\xBF', '\0'};
const char UNICODE_Header[4] = {'\xFF', '\xFE', '\0', '\0'};
const char UNICODE_BE_Header[4] = {'\xFE', '\xFF', '\0', '\0'};

namespace {

// The kind of a 2-byte signature in a zero-padded buffer, 0 for none.
int utf16Kind(const char* buffer) {
    if (std::memcmp(buffer, UNICODE_Header, 2) == 0) return 2;
    if (std::memcmp(buffer, UNICODE_BE_Header, 2) == 0) return 3;
    return 0;
}

}  // namespace

FILE* Osl_Fopen(const char* path, const char* mode) {
    if (path == nullptr || mode == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    // File names are bytes here: in Unicode mode the UTF-8 name is converted to the file-system
    // encoding, which is UTF-8 itself on most installations. The mode is ASCII in both modes.
    std::string name;
    if (!Osl_FileSystemName(path, name)) return nullptr;  // errno EILSEQ
    return std::fopen(name.c_str(), mode);
}

int Osl_FILE_SkipSignature(FILE* file) {
    if (file == nullptr) return 0;
    const long start = std::ftell(file);
    // Without a position to return to, reading would lose the bytes of a pipe.
    if (start < 0) return 0;
    char buffer[3] = {0, 0, 0};
    if (std::fread(buffer, 1, 3, file) == 3 && std::memcmp(buffer, UTF8_Header, 3) == 0) return 1;
    // fseek also clears the end-of-file condition, so a 2-byte file is still read here.
    std::fseek(file, start, SEEK_SET);
    std::memset(buffer, 0, sizeof buffer);
    if (std::fread(buffer, 1, 2, file) == 2) {
        if (const int kind = utf16Kind(buffer)) return kind;
    }
    std::fseek(file, start, SEEK_SET);
    return 0;
}

int Osl_Ifstream_SkipSignature(std::istream& in) {
    const std::istream::pos_type start = in.tellg();
    if (start == std::istream::pos_type(-1)) return 0;
    char buffer[3] = {0, 0, 0};
    in.read(buffer, 3);
    if (std::memcmp(buffer, UTF8_Header, 3) == 0) return 1;
    // Deliberate: the state is not cleared. After a short first read the stream stays failed, the
    // seek and the second read do nothing, and the answer is 0; callers rely on that.
    in.seekg(start);
    std::memset(buffer, 0, sizeof buffer);
    in.read(buffer, 2);
    if (const int kind = utf16Kind(buffer)) return kind;
    in.seekg(start);
    return 0;
}

// file/src/osl_fstream.cpp
// The three file streams: UTF-8 names converted to the file-system encoding. Linux files have no
// share modes, so opening without a lock already denies nothing to other openers.
#include <vum-qib-osl/file/osl_fstream.h>

#include <vum-qib-osl/file/osl_file.h>
#include <vum-qib-osl/file/unicode_signature.h>

namespace {

// A null path or a name that does not convert leaves the stream failed and opens nothing.
template <typename Stream>
bool fileSystemName(Stream& stream, const char* path, std::string& native) {
    if (path != nullptr && Osl_FileSystemName(path, native)) return true;
    stream.setstate(std::ios_base::failbit);
    return false;
}

std::ios_base::openmode openMode(int mode) { return static_cast<std::ios_base::openmode>(mode); }

}  // namespace

Osl_Fstream::Osl_Fstream() = default;
Osl_Fstream::Osl_Fstream(const char* path, int mode) { open(path, mode); }
Osl_Fstream::Osl_Fstream(const std::string& path, int mode) { open(path, mode); }
Osl_Fstream::~Osl_Fstream() = default;

void Osl_Fstream::open(const char* path, int mode) {
    std::string native;
    if (fileSystemName(*this, path, native)) std::fstream::open(native, openMode(mode));
}
void Osl_Fstream::open(const std::string& path, int mode) { open(path.c_str(), mode); }
void Osl_Fstream::open(const std::filesystem::path& path, int mode) { open(path.c_str(), mode); }

int Osl_Fstream::SkipSignature() { return Osl_Ifstream_SkipSignature(*this); }

Osl_Ifstream::Osl_Ifstream() = default;
Osl_Ifstream::Osl_Ifstream(const char* path, int mode) { open(path, mode); }
Osl_Ifstream::Osl_Ifstream(const std::string& path, int mode) { open(path, mode); }
Osl_Ifstream::~Osl_Ifstream() = default;

void Osl_Ifstream::open(const char* path, int mode) {
    std::string native;
    if (fileSystemName(*this, path, native)) std::ifstream::open(native, openMode(mode) | std::ios_base::in);
}
void Osl_Ifstream::open(const std::string& path, int mode) { open(path.c_str(), mode); }
void Osl_Ifstream::open(const std::filesystem::path& path, int mode) { open(path.c_str(), mode); }

int Osl_Ifstream::SkipSignature() { return Osl_Ifstream_SkipSignature(*this); }

Osl_Ofstream::Osl_Ofstream() = default;
Osl_Ofstream::Osl_Ofstream(const char* path, int mode) { open(path, mode); }
Osl_Ofstream::Osl_Ofstream(const std::string& path, int mode) { open(path, mode); }
Osl_Ofstream::~Osl_Ofstream() {
    // Flushes and closes while this object is still whole, before the base classes go.
    if (is_open()) close();
}

void Osl_Ofstream::open(const char* path, int mode) {
    std::string native;
    if (fileSystemName(*this, path, native)) std::ofstream::open(native, openMode(mode) | std::ios_base::out);
}
void Osl_Ofstream::open(const std::string& path, int mode) { open(path.c_str(), mode); }
void Osl_Ofstream::open(const std::filesystem::path& path, int mode) { open(path.c_str(), mode); }

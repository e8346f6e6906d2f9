// File streams opened by a UTF-8 name.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <filesystem>
#include <fstream>
#include <string>

// Every open takes the path as UTF-8 text and converts it to the file-system encoding with
// Osl_FileSystemName (in legacy mode the bytes are used as they are); a name that does not convert
// opens nothing and leaves the stream failed. The mode is an std::ios openmode given as int. Nothing is
// locked or denied: other streams and processes may open the same file at the same time.
// Failure is the stream's fail state; nothing is thrown.

/// A file stream for reading and writing; opens with exactly the caller's mode.
class OSL_API Osl_Fstream : public std::fstream {
public:
    Osl_Fstream();
    Osl_Fstream(const char* path, int mode = std::ios::in | std::ios::out);
    Osl_Fstream(const std::string& path, int mode = std::ios::in | std::ios::out);
    ~Osl_Fstream() override;

    void open(const char* path, int mode = std::ios::in | std::ios::out);
    void open(const std::string& path, int mode = std::ios::in | std::ios::out);
    void open(const std::filesystem::path& path, int mode = std::ios::in | std::ios::out);

    /// Osl_Ifstream_SkipSignature(*this): 0 none, 1 UTF-8, 2 UTF-16LE, 3 UTF-16BE.
    int SkipSignature();
};

/// An input file stream; std::ios::in is added to the caller's mode.
class OSL_API Osl_Ifstream : public std::ifstream {
public:
    Osl_Ifstream();
    Osl_Ifstream(const char* path, int mode = std::ios::in);
    Osl_Ifstream(const std::string& path, int mode = std::ios::in);
    ~Osl_Ifstream() override;

    void open(const char* path, int mode = std::ios::in);
    void open(const std::string& path, int mode = std::ios::in);
    void open(const std::filesystem::path& path, int mode = std::ios::in);

    /// Osl_Ifstream_SkipSignature(*this): 0 none, 1 UTF-8, 2 UTF-16LE, 3 UTF-16BE.
    int SkipSignature();
};

/// An output file stream; std::ios::out is added to the caller's mode. Closed on destruction.
class OSL_API Osl_Ofstream : public std::ofstream {
public:
    Osl_Ofstream();
    Osl_Ofstream(const char* path, int mode = std::ios::out);
    Osl_Ofstream(const std::string& path, int mode = std::ios::out);
    ~Osl_Ofstream() override;

    void open(const char* path, int mode = std::ios::out);
    void open(const std::string& path, int mode = std::ios::out);
    void open(const std::filesystem::path& path, int mode = std::ios::out);
};

// file/src/file_name.cpp
// UTF-8 names to file-system names, and the errors of the file wrappers.
#include <vum-qib-osl/file/osl_file.h>

#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/unicode_configuration.h>
#include <vum-qib-osl/strings/unicode_converter.h>

#include "file/src/file_errors.h"
#include "strings/src/utf_transform.h"

#include <cerrno>

namespace {

bool isAscii(const std::string& s) {
    for (const char c : s) {
        if (static_cast<unsigned char>(c) >= 0x80) return false;
    }
    return true;
}

bool isUtf8(const std::string& s) {
    for (std::size_t at = 0, len = 0; at < s.size(); at += len) {
        if (osl::detail::decodeUtf8(s.data() + at, s.size() - at, len) < 0) return false;
    }
    return true;
}

}  // namespace

bool Osl_FileSystemName(const std::string& name, std::string& nativeName) {
    nativeName.clear();
    // A NUL would end the name at the system call: the file opened would be another one.
    if (name.find('\0') != std::string::npos) {
        errno = EINVAL;
        return false;
    }
    // Every file-system encoding in use keeps ASCII as it is.
    if (!Osl_UnicodeConfiguration::IsUnicodeMode() || isAscii(name)) {
        nativeName = name;
        return true;
    }
    // A UTF-8 file system takes the bytes unchecked, so invalid text is caught here.
    if (!isUtf8(name)) {
        errno = EILSEQ;
        return false;
    }
    try {
        Osl_UnicodeConverter converter;
        converter.SetCurrentEncoding(Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding());
        std::string converted;
        if (converter.ConvertUTF8toCurrentEncoding(name, converted) == ConversionOK &&
            static_cast<std::size_t>(converter.GetHandledLength()) == name.size() &&
            converted.find('\0') == std::string::npos) {
            nativeName = std::move(converted);
            return true;
        }
    } catch (const QIBError&) {
        // An encoding without a converter converts nothing.
    }
    errno = EILSEQ;
    return false;
}

namespace osl::detail {

void throwFileError(const char* operation, const std::string& name, std::error_code ec, const char* where,
                    long line) {
    throw QIBError(std::string(operation) + " " + name + ": " + ec.message(), ec.value(), 8, where, line);
}

std::string nativeNameOrThrow(const char* operation, const std::string& name, const char* where, long line) {
    std::string native;
    if (!Osl_FileSystemName(name, native)) throwFileError(operation, name, {errno, std::generic_category()}, where, line);
    return native;
}

}  // namespace osl::detail

// file/src/osl_file_system.cpp
// Directories, whole files, path status and the search handles, on the platform seam.
#include <vum-qib-osl/file/find_file.h>
#include <vum-qib-osl/file/osl_directory.h>
#include <vum-qib-osl/file/osl_file.h>
#include <vum-qib-osl/file/osl_file_system.h>
#include <vum-qib-osl/file/osl_io_status.h>

#include <vum-qib-osl/ini/general_configuration.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/strings/wildcard_string.h>

#include "file/src/file_errors.h"
#include "platform/environment.h"
#include "platform/fs.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <memory>
#include <utility>

namespace {

constexpr char kWhere[] = "file/src/osl_file_system";

using osl::detail::nativeNameOrThrow;
using osl::detail::throwFileError;

std::error_code errorOf(std::errc e) { return std::make_error_code(e); }

Osl_File_System::time_point timeOf(std::int64_t ns) {
    return Osl_File_System::time_point(
        std::chrono::duration_cast<Osl_File_System::time_point::duration>(std::chrono::nanoseconds(ns)));
}

osl::platform::PathStatus statusOrThrow(const char* operation, const std::string& path) {
    osl::platform::PathStatus status;
    if (auto ec = osl::platform::pathStatus(nativeNameOrThrow(operation, path, kWhere, __LINE__), true, status)) {
        throwFileError(operation, path, ec, kWhere, __LINE__);
    }
    return status;
}

void sayInPlaceOnce(const std::string& path) {
    static std::atomic<bool> said{false};
    if (said.exchange(true)) return;
    std::fprintf(stderr, "vum-qib-osl: %s was rewritten in place: its directory takes no temporary file\n",
                 path.c_str());
}

void replaceContent(const std::string& path, const std::function<void(Osl_File&)>& writer, unsigned newPermissions) {
    const std::string native = nativeNameOrThrow("Osl_File_System::replace", path, kWhere, __LINE__);
    std::exception_ptr thrown;
    bool inPlace = false;
    const std::error_code ec = osl::platform::replaceFile(
        native, newPermissions,
        [&](int fd) -> std::error_code {
            Osl_File file = Osl_File::adopt(fd, path);
            try {
                writer(file);
            } catch (...) {
                thrown = std::current_exception();
            }
            file.release();
            return thrown ? errorOf(std::errc::operation_canceled) : std::error_code{};
        },
        inPlace);
    if (thrown) std::rethrow_exception(thrown);
    if (ec) throwFileError("Osl_File_System::replace", path, ec, kWhere, __LINE__);
    if (inPlace) sayInPlaceOnce(path);
}

}  // namespace

// --- Osl_Directory ---------------------------------------------------------------------------

bool Osl_Directory::exists(const std::string& path) {
    std::string native;
    osl::platform::PathStatus status;
    return Osl_FileSystemName(path, native) && !osl::platform::pathStatus(native, true, status) &&
           status.type == osl::platform::PathType::directory;
}

void Osl_Directory::create(const std::string& path, unsigned permissions) {
    const std::string native = nativeNameOrThrow("Osl_Directory::create", path, kWhere, __LINE__);
    // Parents first, each tolerating a directory that another process made meanwhile.
    for (std::size_t end = native.find('/', 1);; end = native.find('/', end + 1)) {
        const std::string part = native.substr(0, end);
        if (!part.empty() && part.back() != '/') {
            std::error_code ec = osl::platform::makeDirectory(part, permissions & 07777);
            if (ec == std::errc::file_exists) {
                osl::platform::PathStatus status;
                if (osl::platform::pathStatus(part, true, status) || status.type != osl::platform::PathType::directory) {
                    throwFileError("Osl_Directory::create", path,
                                   errorOf(end == std::string::npos ? std::errc::file_exists : std::errc::not_a_directory),
                                   kWhere, __LINE__);
                }
                ec.clear();
            }
            if (ec) throwFileError("Osl_Directory::create", path, ec, kWhere, __LINE__);
        }
        if (end == std::string::npos) break;
    }
}

void Osl_Directory::remove(const std::string& path) {
    if (auto ec = osl::platform::removeDirectory(nativeNameOrThrow("Osl_Directory::remove", path, kWhere, __LINE__))) {
        throwFileError("Osl_Directory::remove", path, ec, kWhere, __LINE__);
    }
}

std::vector<std::string> Osl_Directory::list(const std::string& path, const std::string& wildcard,
                                             bool caseSensitive) {
    const WildcardString pattern(wildcard, caseSensitive);
    osl::platform::DirectoryReader reader;
    if (auto ec = reader.open(nativeNameOrThrow("Osl_Directory::list", path, kWhere, __LINE__))) {
        throwFileError("Osl_Directory::list", path, ec, kWhere, __LINE__);
    }
    std::vector<std::string> names;
    std::string name;
    std::error_code ec;
    while (reader.next(name, ec)) {
        if (pattern.Match(name)) names.push_back(name);
    }
    if (ec) throwFileError("Osl_Directory::list", path, ec, kWhere, __LINE__);
    std::sort(names.begin(), names.end());
    return names;
}

// --- Osl_File_System -------------------------------------------------------------------------

bool Osl_File_System::exists(const std::string& path) {
    std::string native;
    osl::platform::PathStatus status;
    return Osl_FileSystemName(path, native) && !osl::platform::pathStatus(native, true, status);
}

bool Osl_File_System::is_directory(const std::string& path) { return Osl_Directory::exists(path); }

void Osl_File_System::remove(const std::string& path) {
    if (auto ec = osl::platform::removeFile(nativeNameOrThrow("Osl_File_System::remove", path, kWhere, __LINE__))) {
        throwFileError("Osl_File_System::remove", path, ec, kWhere, __LINE__);
    }
}

bool Osl_File_System::remove_if_exists(const std::string& path) {
    const std::error_code ec =
        osl::platform::removeFile(nativeNameOrThrow("Osl_File_System::remove_if_exists", path, kWhere, __LINE__));
    if (ec == std::errc::no_such_file_or_directory) return false;
    if (ec) throwFileError("Osl_File_System::remove_if_exists", path, ec, kWhere, __LINE__);
    return true;
}

void Osl_File_System::rename(const std::string& from, const std::string& to) {
    const std::string nativeFrom = nativeNameOrThrow("Osl_File_System::rename", from, kWhere, __LINE__);
    const std::string nativeTo = nativeNameOrThrow("Osl_File_System::rename", to, kWhere, __LINE__);
    if (auto ec = osl::platform::renameFile(nativeFrom, nativeTo)) {
        throwFileError("Osl_File_System::rename", from + " -> " + to, ec, kWhere, __LINE__);
    }
}

void Osl_File_System::copy(const std::string& from, const std::string& to) {
    Osl_File source(from, Osl_File::mode_read);
    replaceContent(to, [&](Osl_File& target) {
        char chunk[65536];
        while (const std::size_t got = source.read(chunk, sizeof chunk)) target.write(chunk, got);
    }, statusOrThrow("Osl_File_System::copy", from).permissions & 0777);
}

std::uint64_t Osl_File_System::size(const std::string& path) {
    return statusOrThrow("Osl_File_System::size", path).size;
}

Osl_File_System::time_point Osl_File_System::modification_time(const std::string& path) {
    return timeOf(statusOrThrow("Osl_File_System::modification_time", path).modifiedNs);
}

void Osl_File_System::replace(const std::string& path, const std::string& content) {
    replace(path, [&content](Osl_File& file) { file.write(content); });
}

void Osl_File_System::replace(const std::string& path, const std::function<void(Osl_File&)>& writer) {
    replaceContent(path, writer, 0666);
}

// --- Osl_IO_Status ---------------------------------------------------------------------------

Osl_IO_Status::Osl_IO_Status(const std::string& path, bool followLinks) : path_(path), followLinks_(followLinks) {
    refresh();
}

void Osl_IO_Status::refresh() {
    const std::string native = nativeNameOrThrow("Osl_IO_Status", path_, kWhere, __LINE__);
    osl::platform::PathStatus status;
    const std::error_code ec = osl::platform::pathStatus(native, followLinks_, status);
    if (ec && ec != std::errc::no_such_file_or_directory) throwFileError("Osl_IO_Status", path_, ec, kWhere, __LINE__);
    type_ = static_cast<Type>(status.type);
    size_ = status.size;
    modified_ = timeOf(status.modifiedNs);
    accessed_ = timeOf(status.accessedNs);
    changed_ = timeOf(status.changedNs);
    owner_ = status.owner;
    group_ = status.group;
    permissions_ = status.permissions;
    links_ = status.links;
}

std::string Osl_IO_Status::owner_name() const { return osl::platform::userName(owner_); }

std::string Osl_IO_Status::permissions_text() const {
    std::string text = "---------";
    const char letters[] = "rwx";
    for (int bit = 0; bit < 9; ++bit) {
        if (permissions_ & (0400u >> bit)) text[static_cast<std::size_t>(bit)] = letters[bit % 3];
    }
    auto special = [&](unsigned flag, std::size_t at, char set, char unset) {
        if (permissions_ & flag) text[at] = text[at] == 'x' ? set : unset;
    };
    special(04000, 2, 's', 'S');
    special(02000, 5, 's', 'S');
    special(01000, 8, 't', 'T');
    return text;
}

// --- find-file handles and temporary files ---------------------------------------------------

struct Osl_FindData {
    explicit Osl_FindData(const std::string& wildcard, bool caseSensitive) : pattern(wildcard, caseSensitive) {}
    WildcardString pattern;
    osl::platform::DirectoryReader reader;
};

FHANDLE OslFindFirstFile(const std::string& directory, const std::string& wildcard, std::string& name,
                         bool caseSensitive) {
    std::string native;
    if (!Osl_FileSystemName(directory, native)) return nullptr;
    auto search = std::make_unique<Osl_FindData>(wildcard, caseSensitive);
    if (auto ec = search->reader.open(native)) {
        errno = ec.value();
        return nullptr;
    }
    if (!OslFindNextFile(search.get(), name)) {
        if (errno == 0) errno = ENOENT;
        return nullptr;
    }
    return search.release();
}

bool OslFindNextFile(FHANDLE handle, std::string& name) {
    if (handle == nullptr) {
        errno = EINVAL;
        return false;
    }
    std::error_code ec;
    while (handle->reader.next(name, ec)) {
        if (handle->pattern.Match(name)) return true;
    }
    errno = ec.value();
    return false;
}

void OslFindClose(FHANDLE handle) { delete handle; }

std::string CreateTempFile(const std::string& prefix, Osl_File* file) {
    const std::string stem = osl::platform::tempDirectory() + prefix;
    std::string native = nativeNameOrThrow("CreateTempFile", stem, kWhere, __LINE__) + "XXXXXX";
    int fd = -1;
    if (auto ec = osl::platform::makeTemporaryFile(native, fd)) throwFileError("CreateTempFile", stem, ec, kWhere, __LINE__);
    // The six characters mkstemp chose are ASCII: the UTF-8 name is the stem and them.
    const std::string path = stem + native.substr(native.size() - 6);
    if (file != nullptr) {
        *file = Osl_File::adopt(fd, path);
    } else if (auto ec = osl::platform::closeFile(fd)) {
        throwFileError("CreateTempFile", path, ec, kWhere, __LINE__);
    }
    return path;
}

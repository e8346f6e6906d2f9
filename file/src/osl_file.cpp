// file/src/osl_file.cpp
// Osl_File on a bare descriptor: no buffering of its own, so a lock, a sync or another process
// sees exactly what was written.
#include <vum-qib-osl/file/osl_file.h>

#include <vum-qib-osl/misc/qib_error.h>

#include "file/src/file_errors.h"
#include "platform/fs.h"

#include <utility>

namespace {

constexpr char kWhere[] = "file/src/osl_file";

static_assert(Osl_File::mode_read == osl::platform::kOpenRead && Osl_File::mode_write == osl::platform::kOpenWrite &&
              Osl_File::mode_create == osl::platform::kOpenCreate && Osl_File::mode_truncate == osl::platform::kOpenTruncate &&
              Osl_File::mode_append == osl::platform::kOpenAppend && Osl_File::mode_exclusive == osl::platform::kOpenExclusive);

}  // namespace

using osl::detail::throwFileError;

Osl_File::Osl_File() noexcept = default;

Osl_File::Osl_File(const std::string& name, unsigned mode, unsigned permissions) { open(name, mode, permissions); }

Osl_File::~Osl_File() { osl::platform::closeFile(fd_); }

Osl_File::Osl_File(Osl_File&& other) noexcept : fd_(std::exchange(other.fd_, -1)), name_(std::move(other.name_)) {}

Osl_File& Osl_File::operator=(Osl_File&& other) noexcept {
    if (this != &other) {
        osl::platform::closeFile(fd_);
        fd_ = std::exchange(other.fd_, -1);
        name_ = std::move(other.name_);
    }
    return *this;
}

Osl_File Osl_File::adopt(int fd, std::string name) noexcept {
    Osl_File file;
    file.fd_ = fd;
    file.name_ = std::move(name);
    return file;
}

int Osl_File::release() noexcept { return std::exchange(fd_, -1); }

void Osl_File::open(const std::string& name, unsigned mode, unsigned permissions) {
    close();
    name_ = name;
    if ((mode & mode_read_write) == 0) {
        throwFileError("Osl_File::open", name, std::make_error_code(std::errc::invalid_argument), kWhere, __LINE__);
    }
    const std::string native = osl::detail::nativeNameOrThrow("Osl_File::open", name, kWhere, __LINE__);
    int fd = -1;
    if (auto ec = osl::platform::openFile(native, mode, permissions & 0777, fd)) {
        throwFileError("Osl_File::open", name, ec, kWhere, __LINE__);
    }
    fd_ = fd;
}

void Osl_File::close() {
    if (fd_ < 0) return;
    if (auto ec = osl::platform::closeFile(std::exchange(fd_, -1))) throwFileError("Osl_File::close", name_, ec, kWhere, __LINE__);
}

void Osl_File::requireOpen(const char* operation) const {
    if (fd_ < 0) throwFileError(operation, name_, std::make_error_code(std::errc::bad_file_descriptor), kWhere, __LINE__);
}

std::size_t Osl_File::read(void* buffer, std::size_t size) {
    requireOpen("Osl_File::read");
    std::size_t got = 0;
    if (auto ec = osl::platform::readFile(fd_, buffer, size, got)) throwFileError("Osl_File::read", name_, ec, kWhere, __LINE__);
    return got;
}

std::string Osl_File::read_all() {
    std::string all;
    char chunk[65536];
    while (const std::size_t got = read(chunk, sizeof chunk)) all.append(chunk, got);
    return all;
}

void Osl_File::write(const void* data, std::size_t size) {
    requireOpen("Osl_File::write");
    if (auto ec = osl::platform::writeFile(fd_, data, size)) throwFileError("Osl_File::write", name_, ec, kWhere, __LINE__);
}

std::uint64_t Osl_File::seek(std::int64_t offset, Origin origin) {
    requireOpen("Osl_File::seek");
    std::uint64_t position = 0;
    if (auto ec = osl::platform::seekFile(fd_, offset, static_cast<int>(origin), position)) {
        throwFileError("Osl_File::seek", name_, ec, kWhere, __LINE__);
    }
    return position;
}

std::uint64_t Osl_File::tell() const {
    requireOpen("Osl_File::tell");
    std::uint64_t position = 0;
    if (auto ec = osl::platform::seekFile(fd_, 0, 1, position)) throwFileError("Osl_File::tell", name_, ec, kWhere, __LINE__);
    return position;
}

std::uint64_t Osl_File::size() const {
    requireOpen("Osl_File::size");
    std::uint64_t bytes = 0;
    if (auto ec = osl::platform::fileSize(fd_, bytes)) throwFileError("Osl_File::size", name_, ec, kWhere, __LINE__);
    return bytes;
}

void Osl_File::flush() {
    requireOpen("Osl_File::flush");
    if (auto ec = osl::platform::syncFile(fd_, true)) throwFileError("Osl_File::flush", name_, ec, kWhere, __LINE__);
}

void Osl_File::sync() {
    requireOpen("Osl_File::sync");
    if (auto ec = osl::platform::syncFile(fd_, false)) throwFileError("Osl_File::sync", name_, ec, kWhere, __LINE__);
}

void Osl_File::lock(LockKind kind) {
    requireOpen("Osl_File::lock");
    if (auto ec = osl::platform::lockFile(fd_, kind == LockKind::shared, true)) {
        throwFileError("Osl_File::lock", name_, ec, kWhere, __LINE__);
    }
}

bool Osl_File::try_lock(LockKind kind) {
    requireOpen("Osl_File::try_lock");
    const std::error_code ec = osl::platform::lockFile(fd_, kind == LockKind::shared, false);
    if (ec == std::errc::resource_unavailable_try_again) return false;
    if (ec) throwFileError("Osl_File::try_lock", name_, ec, kWhere, __LINE__);
    return true;
}

void Osl_File::unlock() {
    requireOpen("Osl_File::unlock");
    if (auto ec = osl::platform::unlockFile(fd_)) throwFileError("Osl_File::unlock", name_, ec, kWhere, __LINE__);
}

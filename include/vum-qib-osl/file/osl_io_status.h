// The status of a path: type, size, times, owner and permission bits.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <chrono>
#include <cstdint>
#include <string>

/// The status of one path at the time of the call (or of refresh()). Never throws for a
/// missing path: exists() is then false and the rest zero. Other failures (EACCES on a parent,
/// a name that does not convert) throw QIBError with severity 8 and the errno as code. A plain value; copy it freely.
class OSL_API Osl_IO_Status {
public:
    enum class Type { none, regular, directory, symlink, character_device, block_device, fifo, socket };
    using time_point = std::chrono::system_clock::time_point;

    Osl_IO_Status() = default;
    /// With followLinks false, a symlink reports itself (type symlink) rather than its target.
    explicit Osl_IO_Status(const std::string& path, bool followLinks = true);
    void refresh();

    const std::string& path() const noexcept { return path_; }
    bool exists() const noexcept { return type_ != Type::none; }
    Type type() const noexcept { return type_; }
    bool is_regular() const noexcept { return type_ == Type::regular; }
    bool is_directory() const noexcept { return type_ == Type::directory; }
    /// Bytes (a symlink's: the length of its target text).
    std::uint64_t size() const noexcept { return size_; }
    time_point modified() const noexcept { return modified_; }
    time_point accessed() const noexcept { return accessed_; }
    /// The last change of the status (owner, mode, links) or content.
    time_point changed() const noexcept { return changed_; }
    std::uint32_t owner() const noexcept { return owner_; }
    std::uint32_t group() const noexcept { return group_; }
    /// The owner's user name; empty when the system knows none.
    std::string owner_name() const;
    /// The permission bits, 07777 (set-user-id, set-group-id, sticky, rwx for user, group, other).
    unsigned permissions() const noexcept { return permissions_; }
    std::uint64_t links() const noexcept { return links_; }
    /// "rwxr-x---" style text of the permission bits, with s/S and t/T as ls(1) shows them.
    std::string permissions_text() const;

private:
    std::string path_;
    bool followLinks_ = true;
    Type type_ = Type::none;
    std::uint64_t size_ = 0;
    time_point modified_{}, accessed_{}, changed_{};
    std::uint32_t owner_ = 0, group_ = 0;
    unsigned permissions_ = 0;
    std::uint64_t links_ = 0;
};

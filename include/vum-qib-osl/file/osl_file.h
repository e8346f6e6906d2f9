// Files opened by a UTF-8 name: reading, writing, positions and whole-file locks.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Converts a UTF-8 file name to the bytes the operating system takes: in Unicode mode the text
/// is converted to the file-system encoding (Osl_UnicodeConfiguration), in legacy mode the bytes
/// are used as they are. Returns false, with errno EILSEQ, when the name is not valid UTF-8 or a
/// character has no counterpart in that encoding, and EINVAL when the name holds a NUL byte;
/// nativeName is then empty. A name is never shortened or altered to make it convert.
/// Thread-safe.
OSL_API bool Osl_FileSystemName(const std::string& name, std::string& nativeName);

/// An open file, by descriptor: unbuffered, close-on-exec, closed by the destructor. Movable, not
/// copyable. Every failure throws QIBError with severity 8, the errno as code and a text naming
/// the operation, the file and the system's message; a name that does not convert throws code
/// EILSEQ. One object is not to be used by two threads at once; different objects may.
class OSL_API Osl_File {
public:
    /// Open modes, combined with |. One of mode_read, mode_write or mode_read_write is
    /// needed.
    enum Mode : unsigned {
        mode_read = 1,
        mode_write = 2,
        mode_read_write = 3,
        mode_create = 4,     ///< create a missing file with the given permission bits (less the umask)
        mode_truncate = 8,   ///< empty an existing file
        mode_append = 16,    ///< every write goes to the end of the file
        mode_exclusive = 32  ///< with create: fail (EEXIST) when the name exists, never follow a symlink
    };
    enum class Origin { begin, current, end };
    enum class LockKind { shared, exclusive };

    Osl_File() noexcept;
    /// Opens as open() does.
    Osl_File(const std::string& name, unsigned mode, unsigned permissions = 0666);
    /// Closes; errors are swallowed (call close() to see them). A held lock goes with the file.
    ~Osl_File();
    Osl_File(Osl_File&& other) noexcept;
    Osl_File& operator=(Osl_File&& other) noexcept;
    Osl_File(const Osl_File&) = delete;
    Osl_File& operator=(const Osl_File&) = delete;

    /// Opens name (UTF-8) with the mode; an open file is closed first. permissions are the 0777
    /// bits of a file that create makes.
    void open(const std::string& name, unsigned mode, unsigned permissions = 0666);
    /// Closes the file; a failed close still releases the descriptor. Nothing when not open.
    void close();
    bool is_open() const noexcept { return fd_ >= 0; }
    /// The name as given to open (UTF-8).
    const std::string& name() const noexcept { return name_; }

    /// Reads up to size bytes at the position; fewer only at the end of the file, 0 there.
    std::size_t read(void* buffer, std::size_t size);
    /// Everything from the position to the end of the file.
    std::string read_all();
    /// Writes all bytes or throws (a full disk is ENOSPC).
    void write(const void* data, std::size_t size);
    void write(std::string_view data) { write(data.data(), data.size()); }
    /// Moves the position (bytes) and returns the new one, from the start of the file.
    std::uint64_t seek(std::int64_t offset, Origin origin = Origin::begin);
    std::uint64_t tell() const;
    /// The file's size in bytes now.
    std::uint64_t size() const;
    /// Writes are not buffered here; flush hands the data (not the metadata) to the disk
    /// (fdatasync), sync the data and metadata (fsync).
    void flush();
    void sync();

    /// A whole-file lock on flock(2), shared or exclusive, that other processes (util-linux
    /// flock(1) too) see. It belongs to this open file: a second Osl_File on the same name in the
    /// same process is excluded like another process, and a forked child shares it. lock waits;
    /// try_lock returns false at once when another holder excludes it. Taking the other kind
    /// converts the lock (not atomically).
    void lock(LockKind kind);
    bool try_lock(LockKind kind);
    void unlock();

    /// The descriptor, -1 when closed; it stays owned by this object.
    int native_handle() const noexcept { return fd_; }
    /// An Osl_File that owns an open descriptor (closes it); name is what errors show.
    static Osl_File adopt(int fd, std::string name) noexcept;
    /// Gives the descriptor up without closing it; the object is then closed.
    int release() noexcept;

private:
    void requireOpen(const char* operation) const;

    int fd_ = -1;
    std::string name_;
};

// file/tests/osl_file_test.cpp
#include <vum-qib-osl/file/find_file.h>
#include <vum-qib-osl/file/osl_directory.h>
#include <vum-qib-osl/file/osl_file.h>
#include <vum-qib-osl/file/osl_file_system.h>
#include <vum-qib-osl/file/osl_io_status.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <set>
#include <thread>

#include "tests/support/scoped_unicode_mode.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using osl::test::readFile;
using osl::test::writeFile;

class OslFileTest : public ::testing::Test {
protected:
    osl::test::TempDir dir_;
    std::string path(const std::string& name) const { return dir_.file(name); }
};

// The errno of the QIBError that action throws, 0 when it throws none.
long errorCode(const std::function<void()>& action) {
    try {
        action();
    } catch (const QIBError& e) {
        EXPECT_EQ(e.Severity(), 8) << e.What();
        return e.Code();
    }
    return 0;
}

TEST_F(OslFileTest, FailuresCarryTheErrno) {
    writeFile(path("file"), "x");
    fs::create_directory(path("dir"));
    fs::create_symlink(path("victim"), path("planted"));
    const struct { const char* trace; std::function<void()> action; long code; } cases[] = {
        {"open missing", [&] { Osl_File(path("missing"), Osl_File::mode_read); }, ENOENT},
        {"open directory for writing", [&] { Osl_File(path("dir"), Osl_File::mode_write); }, EISDIR},
        {"exclusive create of an existing name",
         [&] { Osl_File(path("file"), Osl_File::mode_write | Osl_File::mode_create | Osl_File::mode_exclusive); }, EEXIST},
        {"exclusive create through a planted symlink",
         [&] { Osl_File(path("planted"), Osl_File::mode_write | Osl_File::mode_create | Osl_File::mode_exclusive); },
         EEXIST},
        {"no access mode", [&] { Osl_File(path("file"), Osl_File::mode_create); }, EINVAL},
        {"read a closed file", [&] { char c; Osl_File().read(&c, 1); }, EBADF},
        {"remove missing", [&] { Osl_File_System::remove(path("missing")); }, ENOENT},
        {"size of missing", [&] { Osl_File_System::size(path("missing")); }, ENOENT},
        {"create a directory over a file", [&] { Osl_Directory::create(path("file/sub")); }, ENOTDIR},
        {"remove a directory that is not empty", [&] { Osl_Directory::remove(dir_.path().string()); }, ENOTEMPTY},
        {"replace a directory", [&] { Osl_File_System::replace(path("dir"), "x"); }, EISDIR},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.trace);
        EXPECT_EQ(errorCode(c.action), c.code);
    }
    EXPECT_FALSE(fs::exists(path("victim")));
}

TEST_F(OslFileTest, NamesThatDoNotConvertAreRefusedNotShortened) {
    osl::test::ScopedUnicodeMode latin1(true, "MS1252", "ISO-8859-1");
    std::string native;
    EXPECT_TRUE(Osl_FileSystemName("caf\xC3\xA9", native));
    EXPECT_EQ(native, "caf\xE9");
    const std::string bad[] = {"report_\xE2\x82\xAC.ini", "report_\xFF.ini", std::string("report_\0.ini", 12)};
    for (const std::string& name : bad) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(Osl_FileSystemName(name, native));
        const long want = name.find('\0') == std::string::npos ? EILSEQ : EINVAL;
        EXPECT_EQ(errorCode([&] { Osl_File(path(name), Osl_File::mode_write | Osl_File::mode_create); }), want);
        EXPECT_EQ(errorCode([&] { Osl_File_System::replace(path(name), "x"); }), want);
    }
    EXPECT_TRUE(fs::is_empty(dir_.path()));
}

TEST_F(OslFileTest, ReadsWritesAndPositions) {
    Osl_File file(path("f"), Osl_File::mode_read_write | Osl_File::mode_create);
    EXPECT_TRUE(fcntl(file.native_handle(), F_GETFD) & FD_CLOEXEC);
    file.write("hello world");
    EXPECT_EQ(file.seek(6), 6u);
    EXPECT_EQ(file.read_all(), "world");
    EXPECT_EQ(file.seek(-5, Osl_File::Origin::end), 6u);
    file.write("there");
    EXPECT_EQ(file.tell(), 11u);
    Osl_File moved = std::move(file);
    EXPECT_FALSE(file.is_open());
    moved.close();
    Osl_File appender(path("f"), Osl_File::mode_write | Osl_File::mode_append);
    appender.write("!");
    EXPECT_EQ(appender.size(), 12u);
    EXPECT_EQ(readFile(path("f")), "hello there!");
}

TEST_F(OslFileTest, LocksAreSeenByFlockCommand) {
    const std::string name = path("lock");
    Osl_File file(name, Osl_File::mode_read_write | Osl_File::mode_create);
    auto flockCommandGets = [&](const char* kind) {
        return std::system(("flock -n " + std::string(kind) + " " + name + " true").c_str()) == 0;
    };
    for (const auto kind : {Osl_File::LockKind::exclusive, Osl_File::LockKind::shared}) {
        const bool shared = kind == Osl_File::LockKind::shared;
        SCOPED_TRACE(shared ? "shared" : "exclusive");
        file.lock(kind);
        EXPECT_EQ(flockCommandGets("-s"), shared);
        EXPECT_FALSE(flockCommandGets("-x"));
        Osl_File other(name, Osl_File::mode_read);
        EXPECT_FALSE(other.try_lock(Osl_File::LockKind::exclusive));
        EXPECT_EQ(other.try_lock(Osl_File::LockKind::shared), shared);
        other.close();
        file.unlock();
        EXPECT_TRUE(flockCommandGets("-x"));
    }
}

TEST_F(OslFileTest, ReplaceKeepsModeOwnerAndSymlinkAndIgnoresPlantedNames) {
    const std::string real = path("real.ini");
    writeFile(real, "old");
    ::chmod(real.c_str(), 0640);
    const bool root = ::geteuid() == 0;
    if (root) { ASSERT_EQ(::chown(real.c_str(), 65534, 65534), 0); }
    fs::create_symlink("real.ini", path("link.ini"));
    writeFile(path("victim"), "untouched");
    for (int n = 1; n <= 3; ++n) fs::create_symlink(path("victim"), real + ".tmp" + std::to_string(n));

    Osl_File_System::replace(path("link.ini"), "new");

    EXPECT_TRUE(fs::is_symlink(path("link.ini")));
    EXPECT_EQ(readFile(real), "new");
    EXPECT_EQ(readFile(path("victim")), "untouched");
    const Osl_IO_Status status(real);
    EXPECT_EQ(status.permissions(), 0640u);
    if (root) { EXPECT_EQ(std::pair(status.owner(), status.group()), std::pair(65534u, 65534u)); }
    EXPECT_EQ(Osl_Directory::list(dir_.path().string(), "real.ini*").size(), 4u);  // the file and the 3 planted links
}

TEST_F(OslFileTest, ReaderNeverSeesHalfACopy) {
    const std::string a(1 << 20, 'a'), b(1 << 20, 'b');
    writeFile(path("a"), a);
    writeFile(path("b"), b);
    Osl_File_System::copy(path("a"), path("to"));
    std::atomic<bool> done{false};
    std::atomic<int> torn{0};
    std::thread reader([&] {
        while (!done) {
            const std::string seen = readFile(path("to"));
            if (seen != a && seen != b) ++torn;
        }
    });
    for (int i = 0; i < 40; ++i) Osl_File_System::copy(path(i % 2 ? "a" : "b"), path("to"));
    done = true;
    reader.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(Osl_Directory::list(dir_.path().string(), "*.tmp*").size(), 0u);
}

TEST_F(OslFileTest, DirectoriesListAndSearchWithWildcards) {
    Osl_Directory::create(path("x/y/z"), 0750);
    Osl_Directory::create(path("x/y/z"));  // exists already: fine
    EXPECT_TRUE(Osl_Directory::exists(path("x/y/z")));
    for (const char* name : {"b.txt", "a.txt", "A.TXT", "c.csv"}) writeFile(path(name), name);
    EXPECT_EQ(Osl_Directory::list(dir_.path().string(), "*.txt"), (std::vector<std::string>{"a.txt", "b.txt"}));
    EXPECT_EQ(Osl_Directory::list(dir_.path().string(), "*.txt", false).size(), 3u);

    std::set<std::string> found;
    std::string name;
    FHANDLE handle = OslFindFirstFile(dir_.path().string(), "?.*", name);
    ASSERT_NE(handle, nullptr);
    for (found.insert(name); OslFindNextFile(handle, name);) found.insert(name);
    OslFindClose(handle);
    EXPECT_EQ(found, (std::set<std::string>{"a.txt", "b.txt", "A.TXT", "c.csv"}));
    errno = 0;
    EXPECT_EQ(OslFindFirstFile(dir_.path().string(), "*.none", name), nullptr);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(OslFindFirstFile(path("missing"), "*", name), nullptr);
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(OslFileTest, StatusReportsTypeSizeOwnerAndBits) {
    writeFile(path("f"), "12345");
    ::chmod(path("f").c_str(), 04754);
    fs::create_symlink("f", path("l"));
    using T = Osl_IO_Status::Type;
    const struct { std::string path; bool follow; T type; std::uint64_t size; } cases[] = {
        {path("f"), true, T::regular, 5}, {path("l"), true, T::regular, 5}, {path("l"), false, T::symlink, 1},
        {dir_.path().string(), true, T::directory, 0}, {path("missing"), true, T::none, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        const Osl_IO_Status status(c.path, c.follow);
        EXPECT_EQ(status.type(), c.type);
        if (c.type != T::directory) { EXPECT_EQ(status.size(), c.size); }
    }
    const Osl_IO_Status status(path("f"));
    EXPECT_EQ(status.permissions_text(), "rwsr-xr--");
    EXPECT_EQ(status.owner(), ::geteuid());
    EXPECT_EQ(status.modified(), Osl_File_System::modification_time(path("f")));
}

TEST_F(OslFileTest, TempFilesAreNewPrivateAndUnpredictable) {
    setenv("TMPDIR", dir_.path().c_str(), 1);
    Osl_File file;
    const std::string first = CreateTempFile("job", &file);
    const std::string second = CreateTempFile("job");
    unsetenv("TMPDIR");
    EXPECT_NE(first, second);
    EXPECT_EQ(fs::path(first).parent_path(), dir_.path());
    EXPECT_EQ(fs::path(first).filename().string().rfind("job", 0), 0u);
    EXPECT_EQ(Osl_IO_Status(first).permissions(), 0600u);
    file.write("x");
    EXPECT_EQ(readFile(first), "x");
}

}  // namespace

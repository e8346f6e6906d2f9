// misc/tests/dloadlib_test.cpp
#include <vum-qib-osl/misc/dloadlib.h>

#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <functional>

namespace {

// Runs f, which must throw QIBError, and returns the error.
QIBError thrownBy(const std::function<void()>& f) {
    try {
        f();
    } catch (const QIBError& e) {
        return e;
    }
    ADD_FAILURE() << "no QIBError thrown";
    return QIBError();
}

TEST(OslLoadlibraryTest, FailuresCarryThePublishedTextCodeSeverityAndWhere) {
    OslLoadlibrary notLoaded, missing, plugin;
    plugin.loadLibrary(OSL_TEST_PLUGIN_PATH);
    const std::string path = "/nonexistent/osl/libmissing.so";
    const struct { std::function<void()> action; std::string start, contains; long code; const char* where; } cases[] = {
        {[&] { notLoaded.getProcAddress("x"); }, "getProcAddress: library not loaded ", "", 1, "misc\\src\\dloadlib 49"},
        {[&] { missing.loadLibrary(path); }, "loadLibrary:LoadLibrary failed - " + path + ":", "No such file", 2,
         "misc\\src\\dloadlib 38"},
        // The loader sets no errno for a missing symbol.
        {[&] { plugin.getProcAddress("osl_no_such_function"); }, "getProcAddress: GetProcAddress failed - ",
         "osl_no_such_function", -1, "misc\\src\\dloadlib 76"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.where);
        const QIBError e = thrownBy(c.action);
        if (c.contains.empty()) { EXPECT_EQ(e.What(), c.start); }
        EXPECT_EQ(e.What().rfind(c.start, 0), 0u) << e.What();
        EXPECT_NE(e.What().find(c.contains), std::string::npos) << e.What();
        EXPECT_EQ(e.Code(), c.code);
        EXPECT_EQ(e.Severity(), 8);
        EXPECT_EQ(e.Where(), c.where);
    }
}

TEST(OslLoadlibraryTest, ResolvesAndFreesAndBadFilesAndNamesLeaveNoLibrary) {
    OslLoadlibrary lib;
    const QIBError notElf = thrownBy([&] { lib.loadLibrary(OSL_SOURCE_DIR "/CMakeLists.txt"); });
    EXPECT_EQ(notElf.Code(), -1);  // no errno for a file that is no library
    EXPECT_NE(notElf.What().find("CMakeLists.txt"), std::string::npos) << notElf.What();
    const std::string withNul = std::string(OSL_TEST_PLUGIN_PATH) + '\0' + "x";
    EXPECT_EQ(thrownBy([&] { lib.loadLibrary(withNul); }).Where(), "misc\\src\\dloadlib 38");

    lib.loadLibrary(OSL_TEST_PLUGIN_PATH);
    auto answer = reinterpret_cast<int (*)(int)>(lib.getProcAddress("osl_test_plugin_answer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(20), 41);
    const std::string symbolWithNul("osl_test_plugin_answer\0", 23);
    EXPECT_EQ(thrownBy([&] { lib.getProcAddress(symbolWithNul); }).Where(), "misc\\src\\dloadlib 76");
    thrownBy([&] { lib.loadLibrary("/nonexistent/libother.so"); });
    EXPECT_EQ(thrownBy([&] { lib.getProcAddress("osl_test_plugin_answer"); }).Code(), 1);

    lib.loadLibrary(OSL_TEST_PLUGIN_PATH);
    lib.freeLibrary();
    lib.freeLibrary();  // harmless the second time
    EXPECT_EQ(thrownBy([&] { lib.getProcAddress("osl_test_plugin_answer"); }).Code(), 1);
}

TEST(OslLoadlibraryTest, FormatNtErrorGivesTheSystemTextOrNothing) {
    struct : OslLoadlibrary {
        using OslLoadlibrary::FormatNtError;
    } lib;
    EXPECT_EQ(lib.FormatNtError(2), "No such file or directory");
    for (int code : {0, -1, 99999}) EXPECT_EQ(lib.FormatNtError(code), "") << code;
}

}  // namespace

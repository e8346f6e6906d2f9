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

class ExposedLoadlibrary : public OslLoadlibrary {
public:
    using OslLoadlibrary::FormatNtError;
};

TEST(OslLoadlibraryTest, FailuresCarryThePublishedTextCodeSeverityAndWhere) {
    OslLoadlibrary notLoaded;
    const QIBError noLibrary = thrownBy([&] { notLoaded.getProcAddress("x"); });
    EXPECT_EQ(noLibrary.What(), "getProcAddress: library not loaded ");
    EXPECT_EQ(noLibrary.Code(), 1);
    EXPECT_EQ(noLibrary.Severity(), 8);
    EXPECT_EQ(noLibrary.Where(), "misc\\src\\dloadlib 49");

    OslLoadlibrary missing;
    const std::string path = "/nonexistent/osl/libmissing.so";
    const QIBError noFile = thrownBy([&] { missing.loadLibrary(path); });
    EXPECT_EQ(noFile.What().rfind("loadLibrary:LoadLibrary failed - " + path + ":", 0), 0u)
        << noFile.What();
    EXPECT_NE(noFile.What().find("No such file"), std::string::npos) << noFile.What();
    EXPECT_EQ(noFile.Code(), 2);
    EXPECT_EQ(noFile.Severity(), 8);
    EXPECT_EQ(noFile.Where(), "misc\\src\\dloadlib 38");

    OslLoadlibrary plugin;
    plugin.loadLibrary(OSL_TEST_PLUGIN_PATH);
    const QIBError noSymbol = thrownBy([&] { plugin.getProcAddress("osl_no_such_function"); });
    EXPECT_EQ(noSymbol.What().rfind("getProcAddress: GetProcAddress failed - ", 0), 0u);
    EXPECT_NE(noSymbol.What().find("osl_no_such_function"), std::string::npos) << noSymbol.What();
    EXPECT_EQ(noSymbol.Code(), -1);  // the loader sets no errno for a missing symbol
    EXPECT_EQ(noSymbol.Severity(), 8);
    EXPECT_EQ(noSymbol.Where(), "misc\\src\\dloadlib 76");
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
    EXPECT_STREQ(static_cast<const char*>(lib.getProcAddress("osl_test_plugin_name")), "test_plugin");
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
    ExposedLoadlibrary lib;
    EXPECT_EQ(lib.FormatNtError(2), "No such file or directory");
    for (int code : {0, -1, 99999}) EXPECT_EQ(lib.FormatNtError(code), "") << code;
}

}  // namespace

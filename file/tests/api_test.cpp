// file/tests/api_test.cpp
// Against the shared library: every call here fails to link when its OSL_API is missing.
#include <vum-qib-osl/file/osl_fstream.h>
#include <vum-qib-osl/file/unicode_signature.h>

#include <gtest/gtest.h>

#include <sstream>

TEST(FileApiTest, ExportedFromTheSharedLibrary) {
    std::istringstream in(std::string(UNICODE_Header, 2) + "x");
    EXPECT_EQ(Osl_Ifstream_SkipSignature(in), 2);
    EXPECT_EQ(Osl_FILE_SkipSignature(nullptr), 0);
    EXPECT_EQ(Osl_Fopen(nullptr, "r"), nullptr);
    // The signature bytes, zero padded.
    EXPECT_EQ(std::string(UTF8_Header, 4), std::string("\xEF\xBB\xBF\0", 4));
    EXPECT_EQ(std::string(UNICODE_Header, 4), std::string("\xFF\xFE\0\0", 4));
    EXPECT_EQ(std::string(UNICODE_BE_Header, 4), std::string("\xFE\xFF\0\0", 4));
    Osl_Fstream f;
    Osl_Ifstream i("/nonexistent/file");
    Osl_Ofstream o;
    EXPECT_TRUE(i.fail());
    EXPECT_EQ(f.SkipSignature() + i.SkipSignature(), 0);
}

// ini/tests/remote_ini_test.cpp
// RemoteIni and the transfers against lighttpd, started by the test on a loopback port with a
// configuration of its own, running vum-qib-http-file-cgi.exe as its CGI program.
#include <gtest/gtest.h>
#include <vum-qib-osl/ini/http_file.h>
#include <vum-qib-osl/ini/remote_ini.h>
#include <vum-qib-osl/misc/osl_init.h>

#include <memory>

#include "ini/tests/http_file_server.h"
#include "ini/tests/thrown.h"
#include "tests/support/temp_dir.h"

namespace {

using osl::test::readFile, osl::test::thrown, osl::test::writeFile;

// /qib and /secret (basic authentication, user qib, password "s3cret") run the endpoint on the
// file remote.ini; /probe runs a script that answers with the client's port as an INI file.
class RemoteIniTest : public ::testing::Test {
protected:
    void SetUp() override {
        InitOSL();
        setenv("no_proxy", "*", 1);  // loopback, whatever proxy the machine has
        writeFile(dir_.file("endpoint.ini"), "[http_file]\nfile=" + d_ + "/remote.ini\nmax_body=4096\n");
        writeFile(dir_.file("users"), "qib:s3cret\n");
        for (const char* base : {"www", "www/qib", "www/secret", "www/probe"})
            std::filesystem::create_directory(dir_.file(base));
        for (const char* base : {"qib", "secret"})
            std::filesystem::create_symlink(OSL_HTTP_FILE_CGI, d_ + "/www/" + base + "/vum-qib-http-file-cgi.exe");
        const std::string probe = d_ + "/www/probe/vum-qib-http-file-cgi.exe";
        writeFile(probe, "#!/bin/sh\nprintf 'Content-Type: text/plain\\r\\n\\r\\n[connection]\\nport=%s\\n' \"$REMOTE_PORT\"\n");
        std::filesystem::permissions(probe, std::filesystem::perms::owner_all);
    }

    void start(bool tls = false) {
        std::string config = R"(server.modules += ("mod_auth", "mod_authn_file")
auth.backend = "plain"
auth.backend.plain.userfile = "@/users"
auth.require = ("/secret/" => ("method" => "basic", "realm" => "qib", "require" => "valid-user"))
)";
        if (tls) {
            const std::string openssl = "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes "
                                        "-days 1 -subj /CN=localhost -keyout '" + d_ + "/key.pem' -out '" + d_ +
                                        "/cert.pem' 2>'" + d_ + "/openssl.out'";
            ASSERT_EQ(std::system(openssl.c_str()), 0) << readFile(d_ + "/openssl.out");
            config += R"(server.modules += ("mod_openssl")
ssl.engine = "enable"
ssl.pemfile = "@/cert.pem"
ssl.privkey = "@/key.pem"
)";
        }
        server_ = std::make_unique<osl::test::HttpFileServer>(d_, config);
        ASSERT_EQ(server_->failure(), "");
    }

    std::string server() const { return server_->address(); }

    osl::test::TempDir dir_;
    const std::string d_ = dir_.path().string();
    std::unique_ptr<osl::test::HttpFileServer> server_;
};

TEST_F(RemoteIniTest, StoredValuesComeBackUnchanged) {
    start();
    writeFile(dir_.file("remote.ini"), "[app]\nname = old ; a comment\n");
    RemoteIni ini(server(), "/secret", "qib", "s3cret");
    EXPECT_EQ(ini.GetString("app", "name", "", nullptr), "old");
    const std::pair<std::string, std::string> values[] = {
        {"amp", "a&b&&c"}, {"eq", "x=y=z"}, {"pct", "100% %41 %%"},
        {"utf8", "Gr\xC3\xBC\xC3\x9F" "e \xE2\x82\xAC"}, {"value", "a;b; c"}};
    for (const auto& [key, value] : values) ini.SetKeyValue("app", key, value);
    ini.FlushIniDataToFile("ignored");
    EXPECT_EQ(readFile(dir_.file("remote.ini")), "[app]\namp=a&b&&c\neq=x=y=z\nname=old\npct=100% %41 %%\n"
                                                 "utf8=Gr\xC3\xBC\xC3\x9F" "e \xE2\x82\xAC\nvalue=a;b; c\n\n");
    const RemoteIni again(server(), "/secret", "qib", "s3cret");
    for (const auto& [key, value] : values)
        EXPECT_EQ(again.GetString("app", key, "", nullptr), value) << key;
}

TEST_F(RemoteIniTest, FailuresCarryTheirTextAndCode) {
    start();
    struct Case { const char *name, *file; std::string server; const char *path, *user, *password; std::string error; };
    const std::string transfer = ", severity 0, programm unknown";  // a transfer error has no module
    const Case cases[] = {
        {"empty file", "\n ; only a comment\n", server(), "/qib", "", "",
         "Ini file is empty, code 5, severity 12, programm ini/src/qib_http_ini"},
        {"endpoint error body", nullptr, server(), "/qib", "", "",
         "Error: cannot read the file: No such file or directory, code -5" + transfer},
        {"wrong password", "[a]\n", server(), "/secret", "qib", "wrong", "Authenticate failed, code -7" + transfer},
        {"server down", "[a]\n", "127.0.0.1:" + std::to_string(osl::test::freePort(SOCK_STREAM)),
         "/qib", "", "", "Send Request failed. Last Error is 7, code -3" + transfer},
        {"no endpoint", "[a]\n", server(), "/nowhere", "", "", "Send Request failed. Status 404, code -3" + transfer},
        {"bad port", "[a]\n", "127.0.0.1:http", "/qib", "", "", "Internet Connect failed, code -2" + transfer},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::filesystem::remove(dir_.file("remote.ini"));
        if (c.file) writeFile(dir_.file("remote.ini"), c.file);
        EXPECT_EQ(thrown([&] { RemoteIni(c.server, c.path, c.user, c.password); }), c.error);
    }
}

TEST_F(RemoteIniTest, EndpointHonoursTextModeAndItsBodyLimit) {
    start();
    const std::string endpoint = "/qib/vum-qib-http-file-cgi.exe", crlf = "[a]\r\nk=1&2\r\n";
    for (const bool text : {true, false}) {
        std::string content = crlf;
        HTTP_PutFile(server(), endpoint, text, content, "", "");
        EXPECT_EQ(readFile(dir_.file("remote.ini")), text ? "[a]\nk=1&2\n" : crlf);
    }
    std::string fetched;
    HTTP_GetFile(server(), endpoint, false, fetched, "", "");
    EXPECT_EQ(fetched, crlf);

    std::string big = "[a]\nk=" + std::string(4100, 'x') + "\n";
    const std::string error = thrown([&] { HTTP_PutFile(server(), endpoint, true, big, "", ""); });
    EXPECT_EQ(error.rfind("Error: the request of ", 0), 0u) << error;
    EXPECT_NE(error.find(", code -5, severity 0,"), std::string::npos) << error;
    EXPECT_EQ(readFile(dir_.file("remote.ini")), crlf);
}

TEST_F(RemoteIniTest, PlainRefusalIsRetriedOverHttps) {
    start(true);
    writeFile(dir_.file("remote.ini"), "[a]\nk=over tls\n");
    RemoteIni ini(server(), "/qib", "", "");
    EXPECT_EQ(ini.GetString("a", "k", "", nullptr), "over tls");
}

TEST_F(RemoteIniTest, EndSessionClosesTheKeptConnection) {
    start();
    auto clientPort = [this] { return RemoteIni(server(), "/probe", "", "").GetString("connection", "port", "", nullptr); };
    const std::string first = clientPort();
    EXPECT_EQ(clientPort(), first);
    EndSession();
    EXPECT_NE(clientPort(), first);
}

TEST_F(RemoteIniTest, QiboslChangesAndPrintsTheRemoteFile) {
    start();
    writeFile(dir_.file("remote.ini"), "[b]\nk=1\n[a]\nx=2\n");
    const std::string qibosl = std::string("QIBOSL_REMOTE_PASSWORD=s3cret ") + OSL_QIBOSL + " remote-ini ";
    const std::string where = " -server=" + server() + " -path=/secret -user=qib";
    ASSERT_EQ(std::system((qibosl + "set" + where + " a x 'p&q'").c_str()), 0);
    std::unique_ptr<FILE, int (*)(FILE*)> out(popen((qibosl + "get" + where).c_str(), "r"), pclose);
    std::string printed(256, '\0');
    printed.resize(std::fread(printed.data(), 1, printed.size(), out.get()));
    EXPECT_EQ(printed, "[a]\nx=p&q\n\n[b]\nk=1\n\n");
}

}  // namespace

// ini/tests/remote_ini_test.cpp
// RemoteIni and the transfers against lighttpd, started by the test on a loopback port with a
// configuration of its own, running vum-qib-http-file-cgi.exe as its CGI program.
#include <gtest/gtest.h>
#include <vum-qib-osl/ini/http_file.h>
#include <vum-qib-osl/ini/remote_ini.h>
#include <vum-qib-osl/misc/osl_init.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <memory>

#include "ini/tests/http_file_server.h"
#include "tests/support/temp_dir.h"

namespace {

using osl::test::readFile;
using osl::test::writeFile;

// /qib and /secret (basic authentication, user qib, password "s3cret") run the endpoint on the
// file remote.ini; /probe runs a script that answers with the client's port as an INI file.
class RemoteIniTest : public ::testing::Test {
protected:
    void SetUp() override {
        InitOSL();
        setenv("no_proxy", "*", 1);  // loopback, whatever proxy the machine has
        const std::string d = dir_.path().string();
        writeFile(dir_.file("endpoint.ini"), "[http_file]\nfile=" + d + "/remote.ini\nmax_body=4096\n");
        writeFile(dir_.file("users"), "qib:s3cret\n");
        for (const char* base : {"www", "www/qib", "www/secret", "www/probe"})
            std::filesystem::create_directory(dir_.file(base));
        for (const char* base : {"qib", "secret"})
            std::filesystem::create_symlink(OSL_HTTP_FILE_CGI, d + "/www/" + base + "/vum-qib-http-file-cgi.exe");
        const std::string probe = d + "/www/probe/vum-qib-http-file-cgi.exe";
        writeFile(probe, "#!/bin/sh\nprintf 'Content-Type: text/plain\\r\\n\\r\\n[connection]\\nport=%s\\n' \"$REMOTE_PORT\"\n");
        std::filesystem::permissions(probe, std::filesystem::perms::owner_all);
    }

    void start(bool tls = false) {
        const std::string d = dir_.path().string();
        std::string config = R"(server.modules += ("mod_auth", "mod_authn_file")
auth.backend = "plain"
auth.backend.plain.userfile = "@/users"
auth.require = ("/secret/" => ("method" => "basic", "realm" => "qib", "require" => "valid-user"))
)";
        if (tls) {
            const std::string openssl = "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes "
                                        "-days 1 -subj /CN=localhost -keyout '" + d + "/key.pem' -out '" + d +
                                        "/cert.pem' 2>'" + d + "/openssl.out'";
            ASSERT_EQ(std::system(openssl.c_str()), 0) << readFile(d + "/openssl.out");
            config += R"(server.modules += ("mod_openssl")
ssl.engine = "enable"
ssl.pemfile = "@/cert.pem"
ssl.privkey = "@/key.pem"
)";
        }
        server_ = std::make_unique<osl::test::HttpFileServer>(d, config);
        ASSERT_EQ(server_->failure(), "");
    }

    std::string server() const { return server_->address(); }

    osl::test::TempDir dir_;
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
    struct Case {
        const char *name, *file;  // file null: no file
        std::string server;
        const char *path, *user, *password;
        long code;
        std::string text;
    };
    const Case cases[] = {
        {"empty file", "\n ; only a comment\n", server(), "/qib", "", "", 5, "Ini file is empty"},
        {"endpoint error body", nullptr, server(), "/qib", "", "", -5,
         "Error: cannot read the file: No such file or directory"},
        {"wrong password", "[a]\n", server(), "/secret", "qib", "wrong", -7, "Authenticate failed"},
        {"server down", "[a]\n", "127.0.0.1:" + std::to_string(osl::test::freePort(SOCK_STREAM)),
         "/qib", "", "", -3, "Send Request failed. Last Error is 7"},
        {"no endpoint", "[a]\n", server(), "/nowhere", "", "", -3, "Send Request failed. Status 404"},
        {"bad port", "[a]\n", "127.0.0.1:http", "/qib", "", "", -2, "Internet Connect failed"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::filesystem::remove(dir_.file("remote.ini"));
        if (c.file) writeFile(dir_.file("remote.ini"), c.file);
        try {
            RemoteIni ini(c.server, c.path, c.user, c.password);
            ADD_FAILURE() << "no error";
        } catch (const QIBError& e) {
            EXPECT_EQ(e.Code(), c.code);
            EXPECT_EQ(e.What(), c.text);
        }
    }
}

TEST_F(RemoteIniTest, EndpointHonoursTextModeAndItsBodyLimit) {
    start();
    std::string content = "[a]\r\nk=1&2\r\n";
    HTTP_PutFile(server(), "/qib/vum-qib-http-file-cgi.exe", true, content, "", "");
    EXPECT_EQ(readFile(dir_.file("remote.ini")), "[a]\nk=1&2\n");
    content = "[a]\r\nk=1&2\r\n";
    HTTP_PutFile(server(), "/qib/vum-qib-http-file-cgi.exe", false, content, "", "");
    EXPECT_EQ(readFile(dir_.file("remote.ini")), "[a]\r\nk=1&2\r\n");
    std::string fetched;
    HTTP_GetFile(server(), "/qib/vum-qib-http-file-cgi.exe", false, fetched, "", "");
    EXPECT_EQ(fetched, "[a]\r\nk=1&2\r\n");

    content = "[a]\nk=" + std::string(4100, 'x') + "\n";
    try {
        HTTP_PutFile(server(), "/qib/vum-qib-http-file-cgi.exe", true, content, "", "");
        ADD_FAILURE() << "a body over the limit was stored";
    } catch (const QIBError& e) {
        EXPECT_EQ(e.Code(), -5);
        EXPECT_EQ(e.What().rfind("Error: the request of ", 0), 0u) << e.What();
    }
    EXPECT_EQ(readFile(dir_.file("remote.ini")), "[a]\r\nk=1&2\r\n");
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

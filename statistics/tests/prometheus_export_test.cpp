// statistics/tests/prometheus_export_test.cpp
// The exported file read back by Debian's prometheus-node-exporter, on a free loopback port.
#include <vum-qib-osl/statistics/statistics_thread.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>

#include "statistics/src/statistics_state.h"
#include "tests/support/fake_clock.h"
#include "tests/support/temp_dir.h"

extern char** environ;

namespace {

constexpr char kExporter[] = "/usr/bin/prometheus-node-exporter";

int freePort() {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t len = sizeof addr;
    ::bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len);
    ::close(fd);
    return ntohs(addr.sin_port);
}

std::string fetch(const std::string& url) {
    const std::string command =
        "python3 -c 'import sys,urllib.request; sys.stdout.write(urllib.request.urlopen(sys.argv[1], timeout=5)"
        ".read().decode())' " + url + " 2>/dev/null";
    std::string out;
    if (FILE* pipe = ::popen(command.c_str(), "r")) {
        char buffer[4096];
        for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
        ::pclose(pipe);
    }
    return out;
}

TEST(PrometheusExportTest, NodeExporterServesTheCounters) {
    ASSERT_TRUE(std::filesystem::exists(kExporter)) << "install the test packages of deps/debian-packages";
    osl::test::TempDir dir;
    osl::test::FakeClock clock(2024, 6, 1, 10, 0, 30);
    EXPECT_FALSE(CQibOsl_Statistics_PrometheusExport::Enable(dir.path().string(), "a/b"));
    ASSERT_TRUE(CQibOsl_Statistics_PrometheusExport::Enable(dir.path().string(), "qib"));
    CQibOsl_Statistics_Thread().Start();
    CQibOsl_Statistics_Thread::EnableStatistics();
    ASSERT_TRUE(clock.waitForSleeps(1));
    CQibOsl_Statistics_EventPerMinuteCounter requests("req/s"), twin("req s");
    CQibOsl_Statistics_UpDownCounter sessions("sessions");
    for (long v : {10, 20, 30}) requests.ReportEventA(v);
    twin.ReportEventA(1);
    sessions.Inc();
    sessions.Inc();
    ASSERT_TRUE(clock.step(60));
    requests.ReportEventA(40);
    ASSERT_TRUE(clock.step(30));
    ASSERT_TRUE(clock.step(30));  // the next minute adds onto the totals
    osl::detail::resetStatistics();

    const std::string port = std::to_string(freePort());
    const std::string listen = "--web.listen-address=127.0.0.1:" + port;
    const std::string textfiles = "--collector.textfile.directory=" + dir.path().string();
    const char* argv[] = {kExporter, listen.c_str(), "--collector.disable-defaults", "--collector.textfile",
                          textfiles.c_str(), nullptr};
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    const int spawned = ::posix_spawn(&pid, kExporter, &quiet, nullptr, const_cast<char**>(argv), environ);
    posix_spawn_file_actions_destroy(&quiet);
    ASSERT_EQ(spawned, 0);
    std::string metrics;
    for (int i = 0; i < 100 && metrics.find("qib_") == std::string::npos; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        metrics = fetch("http://127.0.0.1:" + port + "/metrics");
    }
    ::kill(pid, SIGTERM);
    ::waitpid(pid, nullptr, 0);
    for (const char* line : {"\nqib_req_s_events_total 4\n", "\nqib_req_s_sum_total 100\n", "\nqib_req_s_2_events_total 1\n",
                             "\nqib_sessions 2\n", "# TYPE qib_sessions gauge\n", "\nnode_textfile_scrape_error 0\n"}) {
        EXPECT_NE(metrics.find(line), std::string::npos) << line << " missing from\n" << metrics;
    }
}

}  // namespace

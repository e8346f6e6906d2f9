// statistics/src/prometheus_export.cpp
// The counters in the Prometheus text exposition format, for the node exporter's textfile
// collector, which wants each file replaced in one step (it may read at any moment).
#include <vum-qib-osl/file/osl_file_system.h>
#include <vum-qib-osl/log/log.h>
#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/statistics/statistics_thread.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "statistics/src/statistics_state.h"

namespace {

struct Totals {
    std::int64_t events = 0;
    std::int64_t sum = 0;
};

struct ExportState {
    std::mutex lock;  // guards every field
    std::string directory;
    std::string name;
    std::map<const CQibOsl_Statistics_Counter*, Totals> totals;
    bool failureReported = false;
};

ExportState& exportState() {
    static ExportState* state = new ExportState;
    return *state;
}

std::string metricName(const std::string& counter) {
    std::string name = "qib_";
    for (unsigned char c : counter) {
        const bool valid = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
        name += valid ? static_cast<char>(c) : '_';
    }
    return name;
}

std::string helpText(const std::string& counter) {
    std::string out;
    for (char c : counter) out += c == '\\' ? "\\\\" : c == '\n' ? "\\n" : std::string(1, c);
    return out;
}

void family(std::string& out, const std::string& name, const char* type, const std::string& help,
            std::int64_t value) {
    out += "# HELP " + name + " " + help + "\n# TYPE " + name + " " + type + "\n" + name + " " +
           std::to_string(value) + "\n";
}

void reportOnce(ExportState& state, const QIBError& error) {
    if (state.failureReported) return;
    state.failureReported = true;
    if (!CLog::Instance()->HasSeverity(SevWarning)) return;
    CLogMsg msg("PrometheusExport", "OSL", SevWarning);
    msg << error << flush;
}

}  // namespace

void osl::detail::exportMinute(const std::vector<ClosedMinute>& closedMinutes) {
    ExportState& state = exportState();
    std::lock_guard<std::mutex> lock(state.lock);
    std::string text;
    std::set<std::string> taken;
    for (const auto& [counter, closed] : closedMinutes) {
        // Two counters whose names differ only in characters that become "_" get _2, _3 ...
        std::string name = metricName(counter->Name());
        for (int n = 2; !taken.insert(name).second; ++n) name = metricName(counter->Name()) + "_" + std::to_string(n);
        const std::string help = "statistics counter " + helpText(counter->Name());
        if (dynamic_cast<const CQibOsl_Statistics_UpDownCounter*>(counter) != nullptr) {
            family(text, name, "gauge", "Level of the " + help, closed.count);
            continue;
        }
        Totals& totals = state.totals[counter];
        totals.events += closed.count;
        totals.sum += closed.sum;
        family(text, name + "_events_total", "counter", "Events of the " + help, totals.events);
        family(text, name + "_sum_total", "counter", "Sum of the values (milliseconds for durations) of the " + help,
               totals.sum);
    }
    if (state.directory.empty()) return;
    // The temporary file's name does not end in ".prom": the collector never reads it.
    try {
        Osl_File_System::replace(state.directory + "/" + state.name + ".prom", text);
    } catch (const QIBError& e) {
        reportOnce(state, e);
    }
}

void osl::detail::resetPrometheusExport() {
    ExportState& state = exportState();
    std::lock_guard<std::mutex> lock(state.lock);
    state.directory.clear();
    state.name.clear();
    state.totals.clear();
    state.failureReported = false;
}

bool CQibOsl_Statistics_PrometheusExport::Enable(const std::string& directory, const std::string& name) {
    if (directory.empty() || name.empty() || name.find('/') != std::string::npos) return false;
    ExportState& state = exportState();
    std::lock_guard<std::mutex> lock(state.lock);
    state.directory = directory;
    state.name = name;
    state.failureReported = false;
    return true;
}

void CQibOsl_Statistics_PrometheusExport::Disable() {
    ExportState& state = exportState();
    std::lock_guard<std::mutex> lock(state.lock);
    state.directory.clear();
}

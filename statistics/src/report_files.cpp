// statistics/src/report_files.cpp
// The comma-separated report files. A report is built in memory and appended with one write, so
// that reports of several processes sharing the files never interleave.
#include <vum-qib-osl/statistics/statistics_thread.h>

#include <vum-qib-osl/file/osl_file.h>
#include <vum-qib-osl/file/osl_file_system.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <atomic>
#include <cerrno>
#include <string>

#include "statistics/src/statistics_state.h"

namespace {

enum Kind { kHour, kDay, kMonth };

// Per report kind, the most counters a header of this process has named so far.
std::atomic<std::size_t>& largestHeader(Kind kind) {
    static std::atomic<std::size_t>* largest = new std::atomic<std::size_t>[3]{};
    return largest[kind];
}

// A double quote inside a name is doubled, as CSV readers expect.
std::string quoted(const std::string& name, const char* suffix) {
    std::string out = "\"";
    for (char c : name) out += c == '"' ? std::string("\"\"") : std::string(1, c);
    return out + suffix + "\"";
}

// Appends with one write. A missing file is created exclusively, never through a planted
// symlink; when another process creates it first, the report goes into that file.
void append(const std::string& path, const std::string& text) {
    Osl_File file;
    for (int attempt = 0; !file.is_open(); ++attempt) {
        try {
            file.open(path, Osl_File::mode_write | Osl_File::mode_append);
        } catch (const QIBError& e) {
            if (e.Code() != ENOENT || attempt == 2) throw;
            try {
                file.open(path, Osl_File::mode_write | Osl_File::mode_append | Osl_File::mode_create |
                                    Osl_File::mode_exclusive, 0666);
            } catch (const QIBError& created) {
                if (created.Code() != EEXIST) throw;
            }
        }
    }
    file.write(text);
}

void writeReport(Kind kind, const std::string& path, const CQibOsl_Statistics_RingList& rings, long year,
                 long month, long day, long hour) {
    bool header = !Osl_File_System::exists(path);
    std::atomic<std::size_t>& largest = largestHeader(kind);
    std::size_t seen = largest.load();
    while (rings.size() > seen) {
        if (largest.compare_exchange_weak(seen, rings.size())) {
            header = true;
            break;
        }
    }
    std::string text;
    if (header) {
        text += "\"Time\"";
        for (const CQibOsl_Statistics_Ring& ring : rings) {
            text += ',' + quoted(ring.first, "(Count)") + ',' + quoted(ring.first, "(Duration)");
        }
        text += '\n';
    }
    const long rows = kind == kHour ? 60 : kind == kDay ? 24 : 31;
    const std::string date = std::to_string(year) + "/" + std::to_string(month) + "/";
    for (long slot = 0; slot < rows; ++slot) {
        switch (kind) {
            case kHour:
                text += date + std::to_string(day) + " " + std::to_string(hour) + ":" + std::to_string(slot);
                break;
            case kDay: text += date + std::to_string(day) + " " + std::to_string(slot) + ":00"; break;
            case kMonth: text += date + std::to_string(slot + 1); break;
        }
        for (const CQibOsl_Statistics_Ring& ring : rings) {
            const bool inRing = slot < ring.second.Size();
            text += ',' + std::to_string(inRing ? ring.second[slot].count : 0) + ',' +
                    std::to_string(inRing ? ring.second[slot].sum : 0);
        }
        text += '\n';
    }
    try {
        append(path, text);
    } catch (const QIBError&) {
        // A file that cannot be opened or written skips the report.
    }
}

}  // namespace

void osl::detail::resetReportHeaders() {
    for (Kind kind : {kHour, kDay, kMonth}) largestHeader(kind).store(0);
}

CQibOsl_Statistics_OutputReportToFiles::CQibOsl_Statistics_OutputReportToFiles(const std::string& hourFile,
                                                                               const std::string& dayFile,
                                                                               const std::string& monthFile)
    : hourFile_(hourFile), dayFile_(dayFile), monthFile_(monthFile) {}

void CQibOsl_Statistics_OutputReportToFiles::HourReport(const CQibOsl_Statistics_RingList& rings, long year,
                                                        long month, long day, long hour) {
    writeReport(kHour, hourFile_, rings, year, month, day, hour);
}

void CQibOsl_Statistics_OutputReportToFiles::DayReport(const CQibOsl_Statistics_RingList& rings, long year,
                                                       long month, long day, long hour) {
    writeReport(kDay, dayFile_, rings, year, month, day, hour);
}

void CQibOsl_Statistics_OutputReportToFiles::MonthReport(const CQibOsl_Statistics_RingList& rings, long year,
                                                         long month, long day, long hour) {
    writeReport(kMonth, monthFile_, rings, year, month, day, hour);
}

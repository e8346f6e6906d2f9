// The statistics thread, its switches and the report writers.
#pragma once

#include <vum-qib-osl/osl_api.h>
#include <vum-qib-osl/statistics/statistics_counter.h>

#include <string>

/// Receives the finished rings of every registered counter, in registration order. Month and day
/// count from 1; the values are those of the period that just closed.
class OSL_API CQibOsl_Statistics_OutputReport {
public:
    virtual ~CQibOsl_Statistics_OutputReport() = default;
    /// The 60 minutes of an hour.
    virtual void HourReport(const CQibOsl_Statistics_RingList& rings, long year, long month, long day,
                            long hour) = 0;
    /// The 24 hours of a day.
    virtual void DayReport(const CQibOsl_Statistics_RingList& rings, long year, long month, long day,
                           long hour) = 0;
    /// The 31 days of a month.
    virtual void MonthReport(const CQibOsl_Statistics_RingList& rings, long year, long month, long day,
                             long hour) = 0;
};

/// Appends comma-separated tables to three files (hourly, daily, monthly). A header line
/// "Time","A(Count)","A(Duration)",... goes first into a new file, into every file at the first
/// report of its kind in a process, and again whenever the report has more counters than any
/// header of its kind so far. Rows: 60 labelled Y/M/D h:m, 24 labelled Y/M/D h:00, and always 31
/// labelled Y/M/d, each followed by ,count,sum per counter. A report whose file cannot be opened
/// is skipped. Each report is appended with one write, so several processes may share the files.
class OSL_API CQibOsl_Statistics_OutputReportToFiles : public CQibOsl_Statistics_OutputReport {
public:
    CQibOsl_Statistics_OutputReportToFiles(const std::string& hourFile, const std::string& dayFile,
                                           const std::string& monthFile);

    void HourReport(const CQibOsl_Statistics_RingList& rings, long year, long month, long day,
                    long hour) override;
    void DayReport(const CQibOsl_Statistics_RingList& rings, long year, long month, long day,
                   long hour) override;
    void MonthReport(const CQibOsl_Statistics_RingList& rings, long year, long month, long day,
                     long hour) override;

private:
    std::string hourFile_;
    std::string dayFile_;
    std::string monthFile_;
};

/// The process's statistics thread and its switches. Every object shares one process-wide state:
/// the registry of counters, the reporter and four switches, all off at first (nothing is counted
/// and nothing written until the program enables them).
///
/// The thread wakes every 30 seconds (60 while statistics are disabled), closes minutes, hours,
/// days and months on every registered counter and hands hour, day and month reports to the
/// reporter. It never ends.
class OSL_API CQibOsl_Statistics_Thread {
public:
    /// A non-null reporter becomes the process-wide reporter (not owned: it must outlive the thread).
    explicit CQibOsl_Statistics_Thread(CQibOsl_Statistics_OutputReport* reporter = nullptr);

    static void SetReporter(CQibOsl_Statistics_OutputReport* reporter);
    /// Creates the registry, then starts a statistics thread. Each call starts another one.
    void Start();

    static void EnableStatistics();
    static void DisableStatistics();
    static void EnableHourReport();
    static void DisableHourReport();
    static void EnableDayReport();
    static void DisableDayReport();
    static void EnableMonthReport();
    static void DisableMonthReport();
};

/// Writes the counters in the Prometheus text format to DIR/NAME.prom at every minute boundary,
/// for the node exporter's textfile collector. Off until enabled. The file is replaced in one
/// step (written beside it as NAME.prom.tmpN, then renamed). Event counters give
/// qib_<counter>_events_total and qib_<counter>_sum_total (since the process started), up/down
/// counters the gauge qib_<counter>; characters outside [A-Za-z0-9_] become "_".
class OSL_API CQibOsl_Statistics_PrometheusExport {
public:
    /// False, changing nothing, for an empty directory or a name that is empty or holds a "/".
    static bool Enable(const std::string& directory, const std::string& name);
    static void Disable();
};

// Statistics counters: samples, rings of samples and the counters that the statistics thread
// closes per minute, hour, day and month.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <utility>

/// A count of events and the sum of their values (milliseconds for durations). For an up/down
/// counter the count is its level. Both fields are signed 32-bit numbers and wrap on overflow.
class OSL_API CQibOsl_Statistics_Sample {
public:
    std::int32_t count = 0;
    std::int32_t sum = 0;

    void Reset();
    /// Adds count to count and sum to sum.
    CQibOsl_Statistics_Sample& operator+=(const CQibOsl_Statistics_Sample& other);
};

/// A ring of a fixed number of samples, all zero at first. Copies copy the samples.
class OSL_API CQibOsl_Statistics_SampleCollection {
public:
    /// An empty collection: no samples, size 0.
    CQibOsl_Statistics_SampleCollection();
    explicit CQibOsl_Statistics_SampleCollection(long size);
    CQibOsl_Statistics_SampleCollection(const CQibOsl_Statistics_SampleCollection& other);
    CQibOsl_Statistics_SampleCollection& operator=(const CQibOsl_Statistics_SampleCollection& other);
    ~CQibOsl_Statistics_SampleCollection();

    long Size() const;
    /// The sample at index; the index is not checked.
    CQibOsl_Statistics_Sample& operator[](long index);
    const CQibOsl_Statistics_Sample& operator[](long index) const;
    /// Zeroes every sample.
    void Reset();

    /// True only for the same storage and size: a collection equals itself, never a copy.
    bool operator==(const CQibOsl_Statistics_SampleCollection& other) const;
    /// Always false. Both comparisons only let collections stand in standard containers.
    bool operator<(const CQibOsl_Statistics_SampleCollection& other) const;

private:
    std::unique_ptr<CQibOsl_Statistics_Sample[]> samples_;
    long size_ = 0;
};

/// One entry of a report: a counter's name and a copy of one of its rings.
using CQibOsl_Statistics_Ring = std::pair<std::string, CQibOsl_Statistics_SampleCollection>;
using CQibOsl_Statistics_RingList = std::list<CQibOsl_Statistics_Ring>;

/// The base of the counters: what happened since the last minute boundary and the rings of the
/// last 60 minutes, 24 hours, 31 days (by day of month - 1) and 12 months (by month - 1).
///
/// A counter registers itself with the statistics thread at its first event. The registry keeps
/// a pointer to it and the destructor does not remove it: a counter that reports events must
/// live as long as the process (give it static storage).
class OSL_API CQibOsl_Statistics_Counter {
public:
    explicit CQibOsl_Statistics_Counter(const std::string& name);
    CQibOsl_Statistics_Counter(const CQibOsl_Statistics_Counter& other) = default;
    CQibOsl_Statistics_Counter& operator=(const CQibOsl_Statistics_Counter& other) = default;
    ~CQibOsl_Statistics_Counter() = default;

    /// Closes a minute (0..59), hour (0..23), day (day of month - 1) or month (month - 1).
    /// Called by the statistics thread.
    virtual void SampleMinute(long minute) = 0;
    virtual void SampleHour(long hour) = 0;
    virtual void SampleDay(long dayIndex) = 0;
    virtual void SampleMonth(long monthIndex) = 0;

    /// Each appends (name, a copy of the minutes, hours, days or months ring) to out.
    void ReportMinutes(CQibOsl_Statistics_RingList& out) const;
    void ReportHours(CQibOsl_Statistics_RingList& out) const;
    void ReportDays(CQibOsl_Statistics_RingList& out) const;
    void ReportMonths(CQibOsl_Statistics_RingList& out) const;

    const std::string& Name() const { return name_; }
    /// Events (or the level) since the last minute boundary.
    const CQibOsl_Statistics_Sample& Current() const { return current_; }

protected:
    /// Adds this counter to the registry of the statistics thread once. False, changing nothing,
    /// before the thread's Start created the registry; a later call tries again.
    bool RegisterCounter();
    /// Whether statistics are on and the counter is (now) registered: the guard of every event.
    bool ReadyForEvents();

    CQibOsl_Statistics_Sample current_;
    CQibOsl_Statistics_SampleCollection minutes_;
    CQibOsl_Statistics_SampleCollection hours_;
    CQibOsl_Statistics_SampleCollection days_;
    CQibOsl_Statistics_SampleCollection months_;
    std::string name_;
    bool registered_ = false;
};

/// Counts events, each with a value (typically a duration in milliseconds). The rings hold the
/// events of each minute, hour, day and month. The months ring is never emptied: a month adds
/// onto what the same month of earlier years left there.
class OSL_API CQibOsl_Statistics_EventPerMinuteCounter : public CQibOsl_Statistics_Counter {
public:
    explicit CQibOsl_Statistics_EventPerMinuteCounter(const std::string& name);

    /// One event with its value. Lock-free, from any thread; does nothing while statistics are
    /// disabled or before the statistics thread was started. Count and value are two separate
    /// atomic additions.
    void ReportEventA(long value);

    void SampleMinute(long minute) override;
    void SampleHour(long hour) override;
    void SampleDay(long dayIndex) override;
    void SampleMonth(long monthIndex) override;
};

/// A level that goes up and down; the rings hold the level at each boundary.
class OSL_API CQibOsl_Statistics_UpDownCounter : public CQibOsl_Statistics_Counter {
public:
    explicit CQibOsl_Statistics_UpDownCounter(const std::string& name);

    /// Raise or lower the level by one; same guards as ReportEventA, lock-free.
    void Inc();
    void Dec();

    void SampleMinute(long minute) override;
    void SampleHour(long hour) override;
    void SampleDay(long dayIndex) override;
    void SampleMonth(long monthIndex) override;
};

/// Measures one duration and reports it, in milliseconds, as an event of the counter.
class OSL_API CQibOsl_Statistics_EventDuration {
public:
    /// Keeps a reference to the counter; the start is the epoch until Started.
    explicit CQibOsl_Statistics_EventDuration(CQibOsl_Statistics_EventPerMinuteCounter& counter);

    void Started();
    /// Reports (now - start) in milliseconds. The microseconds are taken as a signed 32-bit
    /// number first, so a duration of more than about 35 minutes reports a wrong value.
    void Ended();

private:
    CQibOsl_Statistics_EventPerMinuteCounter& counter_;
    std::int64_t startMicros_ = 0;
};

/// An EventDuration over a scope: started by the constructor, ended by the destructor.
class OSL_API CQibOsl_Statistics_AutoEventDuration : public CQibOsl_Statistics_EventDuration {
public:
    explicit CQibOsl_Statistics_AutoEventDuration(CQibOsl_Statistics_EventPerMinuteCounter& counter);
    ~CQibOsl_Statistics_AutoEventDuration();
    CQibOsl_Statistics_AutoEventDuration(const CQibOsl_Statistics_AutoEventDuration&) = delete;
    CQibOsl_Statistics_AutoEventDuration& operator=(const CQibOsl_Statistics_AutoEventDuration&) = delete;
};

// statistics/src/statistics_counter.cpp
// Samples, rings and counters. Events are counted with atomic additions on the plain fields
// (std::atomic_ref), so that counters stay copyable and reporting never takes a lock.
#include <vum-qib-osl/statistics/statistics_counter.h>

#include <algorithm>
#include <atomic>

#include "platform/clock.h"
#include "statistics/src/statistics_state.h"

namespace {

std::int32_t load(std::int32_t& field) { return std::atomic_ref<std::int32_t>(field).load(std::memory_order_relaxed); }
void add(std::int32_t& field, std::int32_t value) {
    std::atomic_ref<std::int32_t>(field).fetch_add(value, std::memory_order_relaxed);
}

CQibOsl_Statistics_Sample snapshot(CQibOsl_Statistics_Sample& sample) {
    CQibOsl_Statistics_Sample copy;
    copy.count = load(sample.count);
    copy.sum = load(sample.sum);
    return copy;
}

// Takes the sample and leaves zero: an event reported meanwhile stays for the next minute.
CQibOsl_Statistics_Sample takeSample(CQibOsl_Statistics_Sample& sample) {
    CQibOsl_Statistics_Sample taken;
    taken.count = std::atomic_ref<std::int32_t>(sample.count).exchange(0, std::memory_order_relaxed);
    taken.sum = std::atomic_ref<std::int32_t>(sample.sum).exchange(0, std::memory_order_relaxed);
    return taken;
}

void addAll(const CQibOsl_Statistics_SampleCollection& from, CQibOsl_Statistics_Sample& into) {
    for (long i = 0; i < from.Size(); ++i) into += from[i];
}

}  // namespace

void CQibOsl_Statistics_Sample::Reset() {
    count = 0;
    sum = 0;
}

CQibOsl_Statistics_Sample& CQibOsl_Statistics_Sample::operator+=(const CQibOsl_Statistics_Sample& other) {
    // Wraps like the 32-bit fields they stand for.
    count = static_cast<std::int32_t>(static_cast<std::uint32_t>(count) + static_cast<std::uint32_t>(other.count));
    sum = static_cast<std::int32_t>(static_cast<std::uint32_t>(sum) + static_cast<std::uint32_t>(other.sum));
    return *this;
}

CQibOsl_Statistics_SampleCollection::CQibOsl_Statistics_SampleCollection() = default;

CQibOsl_Statistics_SampleCollection::CQibOsl_Statistics_SampleCollection(long size)
    : samples_(size > 0 ? new CQibOsl_Statistics_Sample[static_cast<std::size_t>(size)]() : nullptr),
      size_(size > 0 ? size : 0) {}

CQibOsl_Statistics_SampleCollection::CQibOsl_Statistics_SampleCollection(
    const CQibOsl_Statistics_SampleCollection& other)
    : CQibOsl_Statistics_SampleCollection(other.size_) {
    std::copy(other.samples_.get(), other.samples_.get() + size_, samples_.get());
}

CQibOsl_Statistics_SampleCollection& CQibOsl_Statistics_SampleCollection::operator=(
    const CQibOsl_Statistics_SampleCollection& other) {
    if (this != &other) {
        CQibOsl_Statistics_SampleCollection copy(other);
        samples_ = std::move(copy.samples_);
        size_ = copy.size_;
    }
    return *this;
}

CQibOsl_Statistics_SampleCollection::~CQibOsl_Statistics_SampleCollection() = default;

long CQibOsl_Statistics_SampleCollection::Size() const { return size_; }

CQibOsl_Statistics_Sample& CQibOsl_Statistics_SampleCollection::operator[](long index) { return samples_[static_cast<std::size_t>(index)]; }

const CQibOsl_Statistics_Sample& CQibOsl_Statistics_SampleCollection::operator[](long index) const {
    return samples_[static_cast<std::size_t>(index)];
}

void CQibOsl_Statistics_SampleCollection::Reset() {
    for (long i = 0; i < size_; ++i) samples_[static_cast<std::size_t>(i)].Reset();
}

bool CQibOsl_Statistics_SampleCollection::operator==(const CQibOsl_Statistics_SampleCollection& other) const {
    return samples_ == other.samples_ && size_ == other.size_;
}

bool CQibOsl_Statistics_SampleCollection::operator<(const CQibOsl_Statistics_SampleCollection&) const {
    return false;
}

CQibOsl_Statistics_Counter::CQibOsl_Statistics_Counter(const std::string& name)
    : minutes_(60), hours_(24), days_(31), months_(12), name_(name) {}

bool CQibOsl_Statistics_Counter::RegisterCounter() {
    osl::detail::StatisticsState& state = osl::detail::statisticsState();
    if (!state.registryExists.load(std::memory_order_acquire)) return false;
    std::lock_guard<std::recursive_mutex> lock(state.registryLock);
    std::atomic_ref<bool> registered(registered_);
    if (!registered.load(std::memory_order_relaxed)) {
        if (std::find(state.registry.begin(), state.registry.end(), this) == state.registry.end()) {
            state.registry.push_back(this);
        }
        registered.store(true, std::memory_order_release);
    }
    return true;
}

bool CQibOsl_Statistics_Counter::ReadyForEvents() {
    if (!osl::detail::statisticsState().enabled.load(std::memory_order_relaxed)) return false;
    return std::atomic_ref<bool>(registered_).load(std::memory_order_acquire) || RegisterCounter();
}

void CQibOsl_Statistics_Counter::ReportMinutes(CQibOsl_Statistics_RingList& out) const { out.emplace_back(name_, minutes_); }
void CQibOsl_Statistics_Counter::ReportHours(CQibOsl_Statistics_RingList& out) const { out.emplace_back(name_, hours_); }
void CQibOsl_Statistics_Counter::ReportDays(CQibOsl_Statistics_RingList& out) const { out.emplace_back(name_, days_); }
void CQibOsl_Statistics_Counter::ReportMonths(CQibOsl_Statistics_RingList& out) const { out.emplace_back(name_, months_); }

CQibOsl_Statistics_EventPerMinuteCounter::CQibOsl_Statistics_EventPerMinuteCounter(const std::string& name)
    : CQibOsl_Statistics_Counter(name) {}

void CQibOsl_Statistics_EventPerMinuteCounter::ReportEventA(long value) {
    if (!ReadyForEvents()) return;
    add(current_.count, 1);
    add(current_.sum, static_cast<std::int32_t>(value));
}

void CQibOsl_Statistics_EventPerMinuteCounter::SampleMinute(long minute) { minutes_[minute] = takeSample(current_); }

void CQibOsl_Statistics_EventPerMinuteCounter::SampleHour(long hour) {
    addAll(minutes_, hours_[hour]);
    minutes_.Reset();
}

void CQibOsl_Statistics_EventPerMinuteCounter::SampleDay(long dayIndex) {
    addAll(hours_, days_[dayIndex]);
    hours_.Reset();
}

// Months are never emptied: a month adds onto the same month of the years before.
void CQibOsl_Statistics_EventPerMinuteCounter::SampleMonth(long monthIndex) {
    addAll(days_, months_[monthIndex]);
    days_.Reset();
}

CQibOsl_Statistics_UpDownCounter::CQibOsl_Statistics_UpDownCounter(const std::string& name)
    : CQibOsl_Statistics_Counter(name) {}

void CQibOsl_Statistics_UpDownCounter::Inc() {
    if (ReadyForEvents()) add(current_.count, 1);
}

void CQibOsl_Statistics_UpDownCounter::Dec() {
    if (ReadyForEvents()) add(current_.count, -1);
}

// The level persists: current is never reset.
void CQibOsl_Statistics_UpDownCounter::SampleMinute(long minute) { minutes_[minute] = snapshot(current_); }

void CQibOsl_Statistics_UpDownCounter::SampleHour(long hour) {
    hours_[hour] = snapshot(current_);
    minutes_.Reset();
}

void CQibOsl_Statistics_UpDownCounter::SampleDay(long dayIndex) {
    days_[dayIndex] = snapshot(current_);
    hours_.Reset();
}

void CQibOsl_Statistics_UpDownCounter::SampleMonth(long monthIndex) {
    months_[monthIndex] = snapshot(current_);
    days_.Reset();
}

CQibOsl_Statistics_EventDuration::CQibOsl_Statistics_EventDuration(CQibOsl_Statistics_EventPerMinuteCounter& counter)
    : counter_(counter) {}

namespace {
std::int64_t nowMicros() {
    const osl::platform::WallTime t = osl::platform::clock().now();
    return t.seconds * 1000000 + t.micros;
}
}  // namespace

void CQibOsl_Statistics_EventDuration::Started() { startMicros_ = nowMicros(); }

void CQibOsl_Statistics_EventDuration::Ended() {
    // Deliberate: the microseconds pass through a signed 32-bit number, as they always did, so
    // durations past 2^31 microseconds (about 35 minutes) report wrapped values.
    const auto micros = static_cast<std::int32_t>(static_cast<std::uint32_t>(nowMicros() - startMicros_));
    counter_.ReportEventA(micros / 1000);
}

CQibOsl_Statistics_AutoEventDuration::CQibOsl_Statistics_AutoEventDuration(
    CQibOsl_Statistics_EventPerMinuteCounter& counter)
    : CQibOsl_Statistics_EventDuration(counter) {
    Started();
}

CQibOsl_Statistics_AutoEventDuration::~CQibOsl_Statistics_AutoEventDuration() { Ended(); }

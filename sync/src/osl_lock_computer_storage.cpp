// sync/src/osl_lock_computer_storage.cpp
// Computer-scope locks: an in-process reader/writer lock per name, then a flock(2) lock on the
// name's lock file, and the collector thread that deletes the files no thread here uses.
#include <vum-qib-osl/sync/osl_lock_computer_storage.h>

#include <vum-qib-osl/file/osl_file.h>
#include <vum-qib-osl/file/osl_file_system.h>
#include <vum-qib-osl/ini/general_configuration.h>
#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/misc/qib_error.h>

#include "platform/fork_handlers.h"
#include "platform/lock_file.h"
#include "sync/src/storage_singleton.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <ostream>
#include <shared_mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace {

constexpr char kWhere[] = "sync\\src\\osl_lock_computer_storage";  // as published; never __FILE__
constexpr char kCategory[] = "OSL";
constexpr int kOpenAttempts = 10;
constexpr std::chrono::milliseconds kCollectorDelay{100};
constexpr char kCollectorTitle[] = "OslLockComputerStorage::GarbageCollector";
constexpr char kCollectorThreadTitle[] = "OslLockComputerStorage::GarbageCollectorThread";

Osl_File::LockKind kindOf(bool shared) { return shared ? Osl_File::LockKind::shared : Osl_File::LockKind::exclusive; }

// A symbolic link, a device planted under the name or a name that does not convert stays as it
// is: retrying only delays the error.
bool isPermanent(const std::error_code& ec) {
    return ec == std::errc::too_many_symbolic_link_levels || ec == std::errc::invalid_argument ||
           ec == std::errc::illegal_byte_sequence;
}

std::string describe(const std::error_code& ec) {
    if (ec == std::errc::too_many_symbolic_link_levels) return "the lock file is a symbolic link, not followed";
    if (ec == std::errc::invalid_argument) return "the lock file is not a regular file";
    return ec.message();
}

// The lock is not free: another process holds the file, or a thread here is taking it.
struct Busy {};

}  // namespace

// One lock file. The file lock belongs to the open file, which every holder in this process
// shares: the first holder takes it and the last one releases it.
class OslLockComputerStorage::FLock {
public:
    FLock(std::string path, bool defaultDirectory) : path_(std::move(path)), defaultDirectory_(defaultDirectory) {
        Init();
    }
    virtual ~FLock() {
        // Delete the file only while holding it exclusively: nobody else holds it then, and a
        // process that opened it before the deletion notices when its lock is granted.
        try {
            if (file_.is_open() && file_.try_lock(Osl_File::LockKind::exclusive) &&
                osl::platform::isFileAtPath(file_.native_handle(), nativePath_)) {
                Osl_File_System::remove_if_exists(path_);
            }
        } catch (...) {
        }
        try {
            file_.close();
        } catch (...) {
        }
    }
    FLock(const FLock&) = delete;
    FLock& operator=(const FLock&) = delete;

    // Opens the file unless it is open, with up to 10 attempts a second apart. Called under the
    // map guard; skipped while a holder is (re)opening it under fileGuard_.
    void Init() {
        std::unique_lock files(fileGuard_, std::try_to_lock);
        if (!files || file_.is_open()) return;
        for (int attempt = 1;; ++attempt) {
            const std::error_code ec = open();
            if (!ec) return;
            if (attempt == kOpenAttempts || isPermanent(ec)) {
                OSL_LOG(SevError, kCategory, "FLock::Init") << describe(ec) << " (" << path_ << ")";
                throw QIBError("OslLock: FLock::Init: Failed to open/create file" + path_, 1, 8, kWhere, 373);
            }
            std::this_thread::sleep_for(std::chrono::seconds(1));
        }
    }

    void AddRef() {
        std::lock_guard counts(countGuard_);
        ++count_;
    }
    int Count() {
        std::lock_guard counts(countGuard_);
        return count_;
    }

    bool Lock(OslLockShare share) {
        const bool shared = share != OslLockShareExclusive;
        if (shared) semaphore_.lock_shared(); else semaphore_.lock();
        try {
            takeFile(shared, true);
        } catch (const QIBError& e) {
            OSL_LOG(SevWarning, kCategory, "FLock::Lock") << e.What() << " (" << path_ << ")";
            release(shared);
            return false;
        }
        held(shared);
        return true;
    }

    bool TryLock(OslLockShare share) {
        const bool shared = share != OslLockShareExclusive;
        if (!(shared ? semaphore_.try_lock_shared() : semaphore_.try_lock())) {
            dropCount();
            return false;
        }
        try {
            takeFile(shared, false);
        } catch (const Busy&) {
            release(shared);
            return false;
        } catch (const QIBError& e) {
            OSL_LOG(SevError, kCategory, "FLock::TryLock") << e.What() << " (" << path_ << ")";
            release(shared);
            return false;
        }
        held(shared);
        return true;
    }

    void Unlock(OslLockShare share) {
        const bool shared = share != OslLockShareExclusive;
        {
            std::lock_guard counts(countGuard_);
            // The count also holds waiters: a kind that nobody holds has nothing to release.
            if (count_ <= 0 || (shared ? sharedHolders_ == 0 : !exclusiveHeld_)) {
                OSL_LOG(SevWarning, kCategory, "FLock::Unlock")
                    << "the Object was already unlocked!" << " (" << path_ << ")";
                return;
            }
            if (shared) --sharedHolders_; else exclusiveHeld_ = false;
        }
        {
            std::lock_guard files(fileGuard_);
            try {
                if (fileHolders_ > 0 && --fileHolders_ == 0) file_.unlock();
            } catch (const QIBError& e) {
                OSL_LOG(SevError, kCategory, "FLock::Unlock") << e.What() << " (" << path_ << ")";
            }
        }
        release(shared);
    }

    // In a forked child: the descriptor shares the parent's open file and lock, so it is closed
    // without unlocking.
    void Abandon() {
        try {
            file_.close();
        } catch (...) {
        }
    }

private:
    std::error_code open() {
        if (nativePath_.empty() && !Osl_FileSystemName(path_, nativePath_)) {
            return std::make_error_code(std::errc::illegal_byte_sequence);
        }
        int fd = -1;
        if (std::error_code ec = osl::platform::openLockFile(nativePath_, defaultDirectory_, fd)) return ec;
        file_ = Osl_File::adopt(fd, path_);
        return {};
    }

    // The file lock for one more holder; shared holders join a lock this process already has.
    // Throws QIBError, or Busy when not waiting and the lock is not free.
    void takeFile(bool shared, bool wait) {
        std::unique_lock files(fileGuard_, std::defer_lock);
        if (wait) {
            files.lock();
        } else if (!files.try_lock()) {
            throw Busy{};
        }
        if (fileHolders_ > 0) {
            ++fileHolders_;
            return;
        }
        for (;;) {
            if (!file_.is_open()) {
                if (const std::error_code ec = open()) {
                    throw QIBError(describe(ec), ec.value(), 8, kWhere, __LINE__);
                }
            }
            if (wait) {
                file_.lock(kindOf(shared));
            } else if (!file_.try_lock(kindOf(shared))) {
                throw Busy{};
            }
            // A collector elsewhere may have deleted the file between our open and our lock, and
            // a newcomer may hold its replacement: only the file at the path counts.
            if (osl::platform::isFileAtPath(file_.native_handle(), nativePath_)) break;
            file_.close();
        }
        fileHolders_ = 1;
    }

    void held(bool shared) {
        std::lock_guard counts(countGuard_);
        if (shared) ++sharedHolders_; else exclusiveHeld_ = true;
    }
    void dropCount() {
        std::lock_guard counts(countGuard_);
        --count_;
    }
    void release(bool shared) {
        if (shared) semaphore_.unlock_shared(); else semaphore_.unlock();
        dropCount();
    }

    std::string path_;
    std::string nativePath_;  // path_ in the file-system encoding
    bool defaultDirectory_;
    std::int32_t count_ = 0;  // holders and waiters of this process
    std::int32_t sharedHolders_ = 0;
    bool exclusiveHeld_ = false;
    std::mutex countGuard_;  // guards count_, sharedHolders_, exclusiveHeld_
    std::shared_mutex semaphore_;
    Osl_File file_;
    int fileHolders_ = 0;
    std::mutex fileGuard_;  // guards file_, nativePath_ and fileHolders_
};

// The collector thread and its wake-up event (pulse semantics).
struct OslLockComputerStorage::Collector {
    std::mutex mutex;  // guards pulses, waiters and stop
    std::condition_variable event;
    std::uint64_t pulses = 0;
    int waiters = 0;  // threads waiting for a pulse (the collector when idle, callers of Wait)
    bool stop = false;
    std::thread thread;
};

std::atomic<OslLockComputerStorage*> OslLockComputerStorage::m_pInstance{nullptr};

std::mutex& OslLockComputerStorage::GetSingletonLock() {
    static std::mutex lock;
    return lock;
}

OslLockComputerStorage* OslLockComputerStorage::Instance() {
    return osl::detail::lazyInstance(m_pInstance, GetSingletonLock(), [] { return new OslLockComputerStorage; });
}

OslLockComputerStorage::OslLockComputerStorage() {
    try {
        static const bool forkHandled = [] {
            osl::platform::registerForkHandlers(BeforeFork, AfterForkInParent, AfterForkInChild);
            return true;
        }();
        (void)forkHandled;
        std::string temp = GeneralConfiguration::GetSystemTempDirectory();
        if (temp.empty() || temp.back() != '/') temp += '/';
        m_LockPath = temp + "osl_locks";
        if (const std::error_code ec = osl::platform::ensureSharedDirectory(m_LockPath)) {
            // Deliberate: the storage still serves locks (each open of a file in the default
            // directory reports the failure), but without exit pass and collector.
            OSL_LOG(SevError, kCategory, "OslLockComputerStorage") << ec.message() << " (" << m_LockPath << ")";
            return;
        }
        static const bool exitHandled = std::atexit(AtExit) == 0;
        (void)exitHandled;
        StartCollector();
    } catch (...) {
    }
}

OslLockComputerStorage::~OslLockComputerStorage() {
    if (Collector* collector = m_Collector.load()) {
        {
            std::lock_guard lock(collector->mutex);
            collector->stop = true;
        }
        collector->event.notify_all();
        if (collector->thread.joinable()) collector->thread.join();
        delete collector;
    }
    std::lock_guard guard(m_LockMap_Guard);
    // Entries still held keep their file locked until the process ends; the holders' Unlock
    // goes to the next storage and finds nothing to release.
    for (auto& [name, flock] : m_LockMap) {
        if (flock->Count() > 0) (void)flock.release();
    }
    m_LockMap.clear();
}

void OslLockComputerStorage::Destroy() {
    osl::detail::forgetInstance(m_pInstance, GetSingletonLock(), this);
    delete this;
}

void OslLockComputerStorage::StartCollector() {
    auto* collector = new Collector;
    m_Collector.store(collector);
    try {
        collector->thread = std::thread([this] { GarbageCollectorThread(this); });
    } catch (...) {
        m_Collector.store(nullptr);
        delete collector;
        throw;
    }
}

OslLockComputerStorage::FLock* OslLockComputerStorage::GetOrCreateFLock(const OslLock& lock, bool addRef) {
    std::lock_guard guard(m_LockMap_Guard);
    if (m_CollectorLost) {
        m_CollectorLost = false;
        try {
            StartCollector();
        } catch (...) {
        }
    }
    auto it = m_LockMap.find(lock.GetName());
    FLock* flock;
    if (it != m_LockMap.end()) {
        flock = it->second.get();  // the first path used for a name wins while the entry lives
        flock->Init();
    } else {
        const bool defaultDirectory = lock.GetPath().empty();
        const std::string path = (defaultDirectory ? m_LockPath : lock.GetPath()) + "/" + lock.GetName();
        std::unique_ptr<FLock> made;
        try {
            made = std::make_unique<FLock>(path, defaultDirectory);
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
        flock = made.get();
        m_LockMap.emplace(lock.GetName(), std::move(made));
    }
    if (addRef) flock->AddRef();
    return flock;
}

bool OslLockComputerStorage::Lock(const OslLock& lock, OslLockShare share) {
    FLock* flock = GetOrCreateFLock(lock, true);
    return flock != nullptr && flock->Lock(share);
}

bool OslLockComputerStorage::TryLock(const OslLock& lock, OslLockShare share) {
    FLock* flock = GetOrCreateFLock(lock, true);
    return flock != nullptr && flock->TryLock(share);
}

void OslLockComputerStorage::Unlock(const OslLock& lock, OslLockShare share) {
    try {
        if (FLock* flock = GetOrCreateFLock(lock, false)) flock->Unlock(share);
    } catch (...) {
        Pulse();
        throw;
    }
    Pulse();
}

int OslLockComputerStorage::GetNumCount(const OslLock& lock) {
    std::lock_guard guard(m_LockMap_Guard);
    FLock* flock = GetOrCreateFLock(lock, false);
    return flock == nullptr ? -1 : flock->Count();
}

void OslLockComputerStorage::Pulse() {
    Collector* collector = m_Collector.load();
    if (collector == nullptr) return;
    bool waited;
    {
        std::lock_guard lock(collector->mutex);
        ++collector->pulses;
        waited = collector->waiters > 0;
    }
    if (waited) collector->event.notify_all();  // a busy collector sees the count on its next wait
}

void OslLockComputerStorage::Wait() {
    Collector* collector = m_Collector.load();
    if (collector == nullptr) return;
    std::unique_lock lock(collector->mutex);
    const std::uint64_t seen = collector->pulses;
    ++collector->waiters;
    collector->event.wait(lock, [&] { return collector->pulses != seen || collector->stop; });
    --collector->waiters;
}

void OslLockComputerStorage::GarbageCollector() {
    OSL_LOG(SevInfo, kCategory, kCollectorTitle) << "Wait for m_LockMap_Guard";
    std::lock_guard guard(m_LockMap_Guard);
    try {
        OSL_LOG(SevInfo, kCategory, kCollectorTitle) << "Garbage collector is started";
        std::vector<std::string> removed;
        for (auto& [name, flock] : m_LockMap) {
            if (flock->Count() == 0) {
                flock.reset();
                removed.push_back(name);
            }
        }
        for (const std::string& name : removed) m_LockMap.erase(name);
        OSL_LOG(SevInfo, kCategory, kCollectorTitle)
            << "Garbage collector is finished, " << removed.size() << " items were removed, "
            << m_LockMap.size() << " items were kept ";
    } catch (const std::exception& e) {
        OSL_LOG(SevError, kCategory, kCollectorTitle) << e.what() << " continue...";
    } catch (...) {
        OSL_LOG(SevError, kCategory, kCollectorTitle) << "Exception, continue";
    }
}

void* OslLockComputerStorage::GarbageCollectorThread(void* arg) {
    auto* storage = static_cast<OslLockComputerStorage*>(arg);
    Collector* collector = storage->m_Collector.load();
    OSL_LOG(SevInfo, kCategory, kCollectorThreadTitle) << "Garbage collector thread is started";
    // Pulses are counted from the collector's creation, not from each wait: an Unlock before the
    // thread first waits, or during a pass, still gets its pass.
    std::uint64_t seen = 0;
    for (;;) {
        try {
            {
                std::unique_lock lock(collector->mutex);
                ++collector->waiters;
                collector->event.wait(lock, [&] { return collector->pulses != seen || collector->stop; });
                --collector->waiters;
                // Unlocks come in bursts: one pass shortly after the first serves the whole burst,
                // instead of deleting a file that the next Lock of a loop creates again.
                collector->event.wait_for(lock, kCollectorDelay, [&] { return collector->stop; });
                if (collector->stop) return nullptr;
                seen = collector->pulses;
            }
            storage->GarbageCollector();
        } catch (const std::exception& e) {
            OSL_LOG(SevError, kCategory, kCollectorThreadTitle) << e.what() << " continue...";
        } catch (...) {
            OSL_LOG(SevError, kCategory, kCollectorThreadTitle) << "Exception, continue";
        }
    }
}

void OslLockComputerStorage::SetLockPath(const std::string& path) {
    std::lock_guard guard(m_LockMap_Guard);
    m_LockPath = path;
}

std::string OslLockComputerStorage::GetLockPath() {
    std::lock_guard guard(m_LockMap_Guard);
    return m_LockPath;
}

void OslLockComputerStorage::Print(std::ostream& out) {
    std::lock_guard guard(m_LockMap_Guard);
    for (const auto& [name, flock] : m_LockMap) out << name << '\t' << flock->Count() << "\t\n";
}

void OslLockComputerStorage::AtExit() {
    OslLockComputerStorage* instance = m_pInstance.load();
    if (instance == nullptr) return;
    try {
        instance->GarbageCollector();
    } catch (...) {
    }
}

// fork() copies the map and the descriptors but not the collector thread, and a copied
// descriptor shares the parent's lock. The child starts empty: it closes its copies without
// unlocking and drops the entries, whose mutexes other threads of the parent may have held.
void OslLockComputerStorage::BeforeFork() {
    GetSingletonLock().lock();
    if (OslLockComputerStorage* instance = m_pInstance.load()) instance->m_LockMap_Guard.lock();
}

void OslLockComputerStorage::AfterForkInParent() {
    if (OslLockComputerStorage* instance = m_pInstance.load()) instance->m_LockMap_Guard.unlock();
    GetSingletonLock().unlock();
}

void OslLockComputerStorage::AfterForkInChild() {
    if (OslLockComputerStorage* instance = m_pInstance.load()) {
        for (auto& [name, flock] : instance->m_LockMap) flock.release()->Abandon();
        instance->m_LockMap.clear();
        // The thread did not come along: its object is dropped, and the next lock starts one.
        instance->m_CollectorLost = instance->m_Collector.exchange(nullptr) != nullptr;
        instance->m_LockMap_Guard.unlock();
    }
    GetSingletonLock().unlock();
}

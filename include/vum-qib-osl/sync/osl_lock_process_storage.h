// Locks among the threads of one process: one reader/writer lock per name.
#pragma once

#include <vum-qib-osl/osl_api.h>
#include <vum-qib-osl/sync/osl_lock.h>

#include <atomic>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>

/// The storage of process-scope locks. Share 1 is shared, every other value exclusive. Entries
/// are made on the first use of a name (by any operation) and kept for the life of the storage.
/// Thread-safe; the guard is never held while a thread waits for a lock.
class OSL_API OslLockProcessStorage : public OslLockStorage {
public:
    /// The singleton, created on first use.
    static OslLockProcessStorage* Instance();
    /// Deletes the singleton; the next Instance() makes a new one. No lock may be held or
    /// awaited then.
    void Destroy();
    /// Guards the creation of the singleton.
    static std::mutex& GetSingletonLock();

    /// Counts the request at once (waiters count), then blocks until held. Always true.
    bool Lock(const OslLock& lock, OslLockShare share) override;
    /// True when taken without waiting; only a success is counted.
    bool TryLock(const OslLock& lock, OslLockShare share) override;
    /// Releases one hold of the kind given; with nothing of that kind held, nothing happens.
    void Unlock(const OslLock& lock, OslLockShare share) override;
    int GetNumCount(const OslLock& lock) override;
    /// One line per entry in name order: name, tab, count, tab.
    void Print(std::ostream& out);

protected:
    struct PLock {
        std::int32_t count = 0;  // holders and waiters
        std::atomic<std::int32_t> sharedHolders{0};
        std::atomic<bool> exclusiveHeld{false};
        std::shared_mutex semaphore;
    };
    /// The entry of the lock's name, made with count 0 when missing. Call with m_Guard held.
    PLock* GetPLock(const OslLock& lock);
    void RemovePLock(const OslLock& lock);

private:
    friend class OslLockStorage;
    OslLockProcessStorage();
    ~OslLockProcessStorage() override;

    std::map<std::string, std::unique_ptr<PLock>> m_Locks;
    std::mutex m_Guard;  // guards m_Locks and every PLock's counts
    static std::atomic<OslLockProcessStorage*> m_pInstance;
};

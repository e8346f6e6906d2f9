// Locks among all processes and users of one computer: one lock file per name, locked with
// flock(2), and a collector thread that deletes the files this process no longer uses.
#pragma once

#include <vum-qib-osl/osl_api.h>
#include <vum-qib-osl/sync/osl_lock.h>

#include <atomic>
#include <iosfwd>
#include <map>
#include <memory>
#include <mutex>
#include <string>

/// The storage of computer-scope locks. Every share value but 0 is shared. A name's lock file is
/// DIRECTORY/NAME, where DIRECTORY is the lock's path or, when empty, the default lock path
/// (the temporary directory + "osl_locks", created mode 1777 so that every user's processes
/// share it; lock files are created readable and writable by all). Shell scripts take the same
/// lock with `flock FILE COMMAND` (exclusive) or `flock -s FILE COMMAND` (shared).
///
/// Threads of this process queue on an in-process reader/writer lock first and on the file
/// second. A collector thread, woken by every Unlock (none is missed; a burst of them gets one
/// pass, 0.1 second after its first), closes and deletes the files of entries
/// that no thread of this process holds or waits for; a file is deleted only while this process
/// holds it exclusively, and a holder that finds its file deleted or replaced after the lock was
/// granted locks the file now at the path instead. A last collection runs at process exit.
///
/// Symbolic links are never followed to a lock file, nor to the default lock directory.
class OSL_API OslLockComputerStorage : public OslLockStorage {
public:
    /// The singleton, created on first use; it creates the default lock directory and starts
    /// the collector. A failure there is logged; locks then work without collection.
    static OslLockComputerStorage* Instance();
    /// Stops the collector and deletes the singleton; files of locks still held stay locked
    /// until the process ends.
    void Destroy();
    static std::mutex& GetSingletonLock();

    /// Counts the request, then blocks until held. False when the operating system refused the
    /// lock (logged at warning). Throws QIBError (code 1, severity 8) when the lock file cannot
    /// be opened or created: after 10 attempts one second apart, at once for a symbolic link
    /// or a file that is not a regular file.
    bool Lock(const OslLock& lock, OslLockShare share) override;
    /// As Lock but never waits: false while another thread or process holds the lock in a
    /// conflicting way.
    bool TryLock(const OslLock& lock, OslLockShare share) override;
    /// Releases one hold, then wakes the collector. A surplus unlock logs the warning "the Object
    /// was already unlocked!" and changes nothing.
    void Unlock(const OslLock& lock, OslLockShare share) override;
    /// Holders and waiters of this process; makes the entry (and the file) when missing.
    int GetNumCount(const OslLock& lock) override;

    /// One collection pass: deletes every entry with count 0 and its file.
    void GarbageCollector();
    /// Waits for the next Unlock of this process (a pulse: earlier ones are not remembered).
    void Wait();
    void SetLockPath(const std::string& path);
    std::string GetLockPath();
    /// One line per entry in name order: name, tab, count, tab.
    void Print(std::ostream& out);

protected:
    class FLock;
    /// The entry of the lock's name, made (and its file opened) when missing; counts a request
    /// when addRef. Null when it cannot be allocated.
    FLock* GetOrCreateFLock(const OslLock& lock, bool addRef);
    /// The collector thread's body; arg is the storage.
    static void* GarbageCollectorThread(void* arg);

private:
    friend class OslLockStorage;
    struct Collector;
    OslLockComputerStorage();
    ~OslLockComputerStorage() override;
    void StartCollector();
    void Pulse();
    static void BeforeFork();
    static void AfterForkInParent();
    static void AfterForkInChild();
    static void AtExit();

    std::map<std::string, std::unique_ptr<FLock>> m_LockMap;
    std::string m_LockPath;
    std::recursive_mutex m_LockMap_Guard;  // guards m_LockMap, m_LockPath and making FLocks
    std::atomic<Collector*> m_Collector{nullptr};  // null while no collector thread runs
    bool m_CollectorLost = false;                  // a forked child lacks its parent's collector
    static std::atomic<OslLockComputerStorage*> m_pInstance;
};

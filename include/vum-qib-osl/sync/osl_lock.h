// Named locks: the lock object, its scope and share, and the storages behind them.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <iosfwd>
#include <string>

/// Who is excluded: the threads of this process, or every process of the computer. Other values
/// are accepted but have no storage.
enum OslLockScope : int {
    OslLockScopeProcess = 0,
    OslLockScopeComputer = 1,
};

/// Exclusive (one holder) or shared (many holders). Other values are accepted and read
/// differently by the two scopes: process scope takes only 1 as shared, computer scope takes
/// every value but 0 as shared.
enum OslLockShare : int {
    OslLockShareExclusive = 0,
    OslLockShareShared = 1,
};

/// A named lock: a light value naming a resource and the scope to lock it at. It holds nothing
/// itself; every operation goes to the storage of its scope, where locks are told apart by name
/// alone (case-sensitive). Copying or destroying a lock object releases nothing.
///
/// Every Lock or successful TryLock needs its own Unlock with the same share value, on the same
/// thread. Locks are not re-entrant: a thread that takes the same lock exclusively twice waits
/// for itself forever. A lock whose scope has no storage must not be used.
class OSL_API OslLock {
public:
    /// A lock of the given scope; computer scope puts its lock file in the default directory.
    OslLock(const std::string& name, OslLockScope scope);
    /// A computer-scope lock whose lock file lies in the directory path (path first!). An empty
    /// path means the default directory. While a name is in use in this process, the first path
    /// given for it wins.
    OslLock(const std::string& path, const std::string& name);
    OslLock(const OslLock& other);
    OslLock& operator=(const OslLock& other);
    virtual ~OslLock();

    /// Blocks until the lock is held. Always true in process scope; false in computer scope when
    /// the operating system refused the lock (logged). Computer scope throws QIBError when the
    /// lock file cannot be opened or created (after 10 attempts one second apart).
    virtual bool Lock(OslLockShare share);
    /// Takes the lock only if nobody holds it in a conflicting way; never waits for holders.
    /// Throws as Lock.
    virtual bool TryLock(OslLockShare share);
    /// Releases one Lock or TryLock. An unlock with nothing to release changes nothing (computer
    /// scope logs a warning). Never throws: failures are logged.
    virtual void Unlock(OslLockShare share);
    /// How many requests of this process hold the lock or wait for it. Computer scope: -1 when
    /// no entry could be made, and QIBError as Lock.
    virtual int GetNumCount() const;

    const std::string& GetName() const { return m_Name; }
    const std::string& GetPath() const { return m_Path; }
    OslLockScope GetScope() const { return m_Scope; }

private:
    OslLockScope m_Scope;
    std::string m_Name;
    std::string m_Path;
};

/// The storage of one scope, a process-wide singleton.
class OSL_API OslLockStorage {
public:
    virtual bool Lock(const OslLock& lock, OslLockShare share) = 0;
    virtual bool TryLock(const OslLock& lock, OslLockShare share) = 0;
    virtual void Unlock(const OslLock& lock, OslLockShare share) = 0;
    virtual int GetNumCount(const OslLock& lock) = 0;
    virtual ~OslLockStorage();

    /// The storage singleton of the scope (created on first use); null for a scope other than
    /// 0 and 1.
    static OslLockStorage* GetStorage(OslLockScope scope);
    /// The line "OslLockProcessStorage" and that storage's entries, then the line
    /// "OslLockComputerStorage" and its entries; a storage not yet created is left out.
    static void Print(std::ostream& out);
};

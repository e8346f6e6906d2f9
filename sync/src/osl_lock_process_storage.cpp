// sync/src/osl_lock_process_storage.cpp
// Process-scope locks: a reader/writer lock per name, counted under one guard.
#include <vum-qib-osl/sync/osl_lock_process_storage.h>

#include "sync/src/storage_singleton.h"

#include <ostream>

std::atomic<OslLockProcessStorage*> OslLockProcessStorage::m_pInstance{nullptr};

OslLockProcessStorage::OslLockProcessStorage() = default;

OslLockProcessStorage::~OslLockProcessStorage() {
    std::lock_guard guard(m_Guard);
    m_Locks.clear();
}

std::mutex& OslLockProcessStorage::GetSingletonLock() {
    static std::mutex lock;
    return lock;
}

OslLockProcessStorage* OslLockProcessStorage::Instance() {
    return osl::detail::lazyInstance(m_pInstance, GetSingletonLock(), [] { return new OslLockProcessStorage; });
}

void OslLockProcessStorage::Destroy() {
    osl::detail::forgetInstance(m_pInstance, GetSingletonLock(), this);
    delete this;
}

OslLockProcessStorage::PLock* OslLockProcessStorage::GetPLock(const OslLock& lock) {
    auto it = m_Locks.find(lock.GetName());
    if (it == m_Locks.end()) it = m_Locks.emplace(lock.GetName(), std::make_unique<PLock>()).first;
    return it->second.get();
}

void OslLockProcessStorage::RemovePLock(const OslLock& lock) {
    std::lock_guard guard(m_Guard);
    m_Locks.erase(lock.GetName());
}

bool OslLockProcessStorage::Lock(const OslLock& lock, OslLockShare share) {
    PLock* entry;
    {
        std::lock_guard guard(m_Guard);
        entry = GetPLock(lock);
        ++entry->count;  // a waiter counts from the moment it asks
    }
    // The holder marks are atomic so that taking the lock costs no second trip through the guard.
    if (share == OslLockShareShared) {
        entry->semaphore.lock_shared();
        entry->sharedHolders.fetch_add(1, std::memory_order_relaxed);
    } else {
        entry->semaphore.lock();
        entry->exclusiveHeld.store(true, std::memory_order_relaxed);
    }
    return true;
}

bool OslLockProcessStorage::TryLock(const OslLock& lock, OslLockShare share) {
    std::lock_guard guard(m_Guard);
    PLock* entry = GetPLock(lock);
    if (share == OslLockShareShared) {
        if (!entry->semaphore.try_lock_shared()) return false;
        entry->sharedHolders.fetch_add(1, std::memory_order_relaxed);
    } else {
        if (!entry->semaphore.try_lock()) return false;
        entry->exclusiveHeld.store(true, std::memory_order_relaxed);
    }
    ++entry->count;
    return true;
}

void OslLockProcessStorage::Unlock(const OslLock& lock, OslLockShare share) {
    std::lock_guard guard(m_Guard);
    PLock* entry = GetPLock(lock);
    if (entry->count <= 0) return;
    // The count also holds waiters: releasing a kind that nobody holds would corrupt the lock.
    if (share == OslLockShareShared) {
        if (entry->sharedHolders.load(std::memory_order_relaxed) == 0) return;
        entry->sharedHolders.fetch_sub(1, std::memory_order_relaxed);
        entry->semaphore.unlock_shared();
    } else {
        if (!entry->exclusiveHeld.exchange(false, std::memory_order_relaxed)) return;
        entry->semaphore.unlock();
    }
    --entry->count;
}

int OslLockProcessStorage::GetNumCount(const OslLock& lock) {
    std::lock_guard guard(m_Guard);
    return GetPLock(lock)->count;
}

void OslLockProcessStorage::Print(std::ostream& out) {
    std::lock_guard guard(m_Guard);
    for (const auto& [name, entry] : m_Locks) out << name << '\t' << entry->count << "\t\n";
}

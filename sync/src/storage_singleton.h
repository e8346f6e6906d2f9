// sync/src/storage_singleton.h
// Creation and deletion of the lock storages' singletons, shared by both storages.
#pragma once

#include <atomic>
#include <mutex>

namespace osl::detail {

/// The instance in slot, made by make() on first use: tested, then tested again under lock.
template <class Storage, class Make>
Storage* lazyInstance(std::atomic<Storage*>& slot, std::mutex& lock, Make make) {
    Storage* instance = slot.load(std::memory_order_acquire);
    if (instance != nullptr) return instance;
    std::lock_guard guard(lock);
    instance = slot.load(std::memory_order_relaxed);
    if (instance == nullptr) {
        instance = make();
        slot.store(instance, std::memory_order_release);
    }
    return instance;
}

/// Empties the slot when it holds instance; the caller then deletes it.
template <class Storage>
void forgetInstance(std::atomic<Storage*>& slot, std::mutex& lock, Storage* instance) {
    std::lock_guard guard(lock);
    if (slot.load() == instance) slot.store(nullptr);
}

}  // namespace osl::detail

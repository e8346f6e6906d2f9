// sync/src/osl_lock.cpp
// The lock object: logs and hands every operation to the storage of its scope.
#include <vum-qib-osl/sync/osl_lock.h>

#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/sync/osl_lock_computer_storage.h>
#include <vum-qib-osl/sync/osl_lock_process_storage.h>

#include <ostream>

namespace {

constexpr char kCategory[] = "OSL";

// " path: P name: N scope: S share: H", written only when the line is wanted.
struct Details {
    const OslLock& lock;
    OslLockShare share;
};

CLogMsg& operator<<(CLogMsg& msg, const Details& d) {
    msg << " path: " << d.lock.GetPath() << " name: " << d.lock.GetName()
        << " scope: " << static_cast<int>(d.lock.GetScope()) << " share: " << static_cast<int>(d.share);
    return msg;
}

}  // namespace

OslLock::OslLock(const std::string& name, OslLockScope scope) : m_Scope(scope), m_Name(name) {}

OslLock::OslLock(const std::string& path, const std::string& name)
    : m_Scope(OslLockScopeComputer), m_Name(name), m_Path(path) {}

OslLock::OslLock(const OslLock& other) = default;
OslLock& OslLock::operator=(const OslLock& other) = default;
OslLock::~OslLock() = default;

bool OslLock::Lock(OslLockShare share) {
    OSL_LOG(SevInfo, kCategory, "OslLock::Lock") << "locking... " << Details{*this, share};
    OslLockStorage* storage = OslLockStorage::GetStorage(m_Scope);
    const bool locked = storage != nullptr && storage->Lock(*this, share);
    OSL_LOG(SevInfo, kCategory, "OslLock::Lock") << "locked" << Details{*this, share};
    return locked;
}

bool OslLock::TryLock(OslLockShare share) {
    OSL_LOG(SevInfo, kCategory, "OslLock::TryLock") << "try... " << Details{*this, share};
    OslLockStorage* storage = OslLockStorage::GetStorage(m_Scope);
    const bool locked = storage != nullptr && storage->TryLock(*this, share);
    OSL_LOG(SevInfo, kCategory, "OslLock::TryLock") << (locked ? "TRUE" : "FALSE") << Details{*this, share};
    return locked;
}

void OslLock::Unlock(OslLockShare share) {
    OSL_LOG(SevInfo, kCategory, "OslLock::Unlock") << "unlock" << Details{*this, share};
    OslLockStorage* storage = OslLockStorage::GetStorage(m_Scope);
    if (storage == nullptr) return;
    try {
        storage->Unlock(*this, share);
    } catch (...) {
        OSL_LOG(SevError, kCategory, "OslLock::Unlock") << "cannot unlock" << Details{*this, share};
    }
}

int OslLock::GetNumCount() const {
    OslLockStorage* storage = OslLockStorage::GetStorage(m_Scope);
    return storage == nullptr ? -1 : storage->GetNumCount(*this);
}

OslLockStorage::~OslLockStorage() = default;

OslLockStorage* OslLockStorage::GetStorage(OslLockScope scope) {
    switch (scope) {
        case OslLockScopeProcess: return OslLockProcessStorage::Instance();
        case OslLockScopeComputer: return OslLockComputerStorage::Instance();
        default: return nullptr;
    }
}

void OslLockStorage::Print(std::ostream& out) {
    out << "OslLockProcessStorage\n";
    if (OslLockProcessStorage* process = OslLockProcessStorage::m_pInstance.load()) process->Print(out);
    out << "OslLockComputerStorage\n";
    if (OslLockComputerStorage* computer = OslLockComputerStorage::m_pInstance.load()) computer->Print(out);
}

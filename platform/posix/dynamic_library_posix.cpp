// platform/posix/dynamic_library_posix.cpp
// dlopen/dlsym/dlclose. dlerror() is per thread, so each failure is read right after its call.
#include "platform/dynamic_library.h"

#include <dlfcn.h>
#include <string.h>

#include <cerrno>

namespace osl::platform {
namespace {

// errno is cleared before each loader call. glibc's loader keeps the system error of a failed
// call (ENOENT for a missing file) and puts it into errno when dlerror() formats the text; a
// failure without one (a file that is no library, a missing symbol) leaves errno at 0.
bool takeFailure(LibraryFailure& failure) {
    const char* text = dlerror();
    if (text == nullptr) return false;
    failure.text = text;
    failure.code = errno != 0 ? errno : -1;
    return true;
}

}  // namespace

void* openLibrary(const std::string& name, LibraryFailure& failure) {
    // An embedded NUL would make the loader see another name; refuse it as the loader would a
    // missing file.
    if (name.find('\0') != std::string::npos) {
        failure = {EINVAL, name.substr(0, name.find('\0')) + ": invalid library name"};
        return nullptr;
    }
    dlerror();
    errno = 0;
    void* handle = dlopen(name.c_str(), RTLD_NOW);
    if (handle == nullptr && !takeFailure(failure)) failure = {-1, name + ": cannot be loaded"};
    return handle;
}

void* findSymbol(void* library, const std::string& name, bool& found, LibraryFailure& failure) {
    found = false;
    if (name.find('\0') != std::string::npos) {
        failure = {EINVAL, name.substr(0, name.find('\0')) + ": invalid symbol name"};
        return nullptr;
    }
    dlerror();
    errno = 0;
    void* address = dlsym(library, name.c_str());
    // A symbol may legitimately have the address null; only dlerror tells the two apart.
    found = !takeFailure(failure);
    return found ? address : nullptr;
}

void closeLibrary(void* library) {
    if (library != nullptr) dlclose(library);
}

std::string systemErrorText(long code) {
    if (code <= 0 || code > 4095) return "";
    char buffer[256];
    // GNU strerror_r: may return a static text instead of filling the buffer.
    const char* text = strerror_r(static_cast<int>(code), buffer, sizeof buffer);
    std::string result = text != nullptr ? text : "";
    if (result.rfind("Unknown error", 0) == 0) return "";
    return result;
}

std::string modulePathOf(const void* address) {
    Dl_info info{};
    if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) return "";
    return info.dli_fname;
}

}  // namespace osl::platform

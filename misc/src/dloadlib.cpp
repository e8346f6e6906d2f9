// misc/src/dloadlib.cpp
// OslLoadlibrary: the loader's failures become QIBError with the published texts, codes and lines.
#include <vum-qib-osl/misc/dloadlib.h>

#include <vum-qib-osl/misc/qib_error.h>

#include "platform/dynamic_library.h"

namespace {

constexpr char kWhere[] = "misc\\src\\dloadlib";  // as published; never __FILE__

[[noreturn]] void throwOsFailure(const std::string& text, long code, long line) {
    throw QIBError(text, code, 8, kWhere, line);
}

}  // namespace

OslLoadlibrary::OslLoadlibrary() : handle_(nullptr) {}

OslLoadlibrary::~OslLoadlibrary() { freeLibrary(); }

void OslLoadlibrary::loadLibrary(const std::string& name) {
    osl::platform::LibraryFailure failure;
    void* loaded = osl::platform::openLibrary(name, failure);
    // Release the old one only now: loading the same name again must not unload and reload it.
    freeLibrary();
    handle_ = loaded;
    if (handle_ == nullptr) {
        throwOsFailure("loadLibrary:LoadLibrary failed - " + failure.text, failure.code, 38);
    }
}

void* OslLoadlibrary::getProcAddress(const std::string& name) {
    if (handle_ == nullptr) throwOsFailure("getProcAddress: library not loaded ", 1, 49);
    osl::platform::LibraryFailure failure;
    bool found = false;
    void* address = osl::platform::findSymbol(handle_, name, found, failure);
    if (!found) {
        throwOsFailure("getProcAddress: GetProcAddress failed - " + failure.text, failure.code, 76);
    }
    return address;
}

void OslLoadlibrary::freeLibrary() {
    if (handle_ == nullptr) return;
    osl::platform::closeLibrary(handle_);
    handle_ = nullptr;
}

std::string OslLoadlibrary::FormatNtError(long code) { return osl::platform::systemErrorText(code); }

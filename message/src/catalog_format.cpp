// message/src/catalog_format.cpp
// Catalog files. The reader trusts nothing in the file: every count and length is checked
// against the bytes that remain before anything is allocated for it.
#include "message/src/catalog_format.h"

#include <vum-qib-osl/file/osl_file.h>
#include <vum-qib-osl/file/osl_file_system.h>
#include <vum-qib-osl/file/osl_io_status.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <new>

namespace osl::detail {
namespace {

class Reader {
public:
    explicit Reader(std::string_view bytes) : rest_(bytes) {}

    bool u32(std::uint32_t& value) {
        if (rest_.size() < 4) return false;
        value = 0;
        for (int i = 3; i >= 0; --i) value = (value << 8) | static_cast<unsigned char>(rest_[i]);
        rest_.remove_prefix(4);
        return true;
    }

    bool string(std::string& value) {
        std::uint32_t size = 0;
        if (!u32(size) || size > rest_.size()) return false;
        value.assign(rest_.data(), size);
        rest_.remove_prefix(size);
        return true;
    }

    std::size_t remaining() const { return rest_.size(); }

private:
    std::string_view rest_;
};

void putU32(std::string& out, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

void putString(std::string& out, std::string_view text) {
    putU32(out, static_cast<std::uint32_t>(text.size()));
    out.append(text);
}

// A pair takes at least two length fields.
constexpr std::size_t kSmallestPair = 8;

}  // namespace

bool parseCatalog(std::string_view bytes, std::map<std::string, std::string>& entries) {
    Reader in(bytes);
    std::string className;
    std::uint32_t classNumber = 0;
    if (!in.string(className) || className != kCatalogClassName) return false;
    if (!in.u32(classNumber) || classNumber != kCatalogClassNumber) return false;
    std::uint32_t count = 0;
    if (!in.u32(count) || count > in.remaining() / kSmallestPair) return false;
    std::string key;
    std::string text;
    for (std::uint32_t i = 0; i < count; ++i) {
        if (!in.string(key) || !in.string(text)) return false;
        entries.emplace(key, text);
    }
    return in.remaining() == 0;
}

std::string serializeCatalog(const std::map<std::string, std::string>& entries) {
    std::string out;
    putString(out, kCatalogClassName);
    putU32(out, kCatalogClassNumber);
    putU32(out, static_cast<std::uint32_t>(entries.size()));
    for (const auto& [key, text] : entries) {
        putString(out, key);
        putString(out, text);
    }
    return out;
}

bool readCatalogFile(const std::string& fileName, std::map<std::string, std::string>& entries) {
    try {
        // Only regular files of a sane size: a device or a pipe could feed us without end, and a
        // sparse file of a terabyte would be a request for that much memory.
        const Osl_IO_Status status(fileName);
        if (!status.is_regular() || status.size() > kLargestCatalog) return false;
        Osl_File in(fileName, Osl_File::mode_read);
        std::string bytes(static_cast<std::size_t>(status.size()), '\0');
        char more = 0;
        if (in.read(bytes.data(), bytes.size()) != bytes.size() || in.read(&more, 1) != 0) {
            return false;  // the file changed size under us
        }
        std::map<std::string, std::string> read;
        if (!parseCatalog(bytes, read)) return false;
        entries.merge(read);
        return true;
    } catch (const QIBError&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool writeCatalogFile(const std::string& fileName, const std::map<std::string, std::string>& entries) {
    try {
        // Programs read catalogs at start-up: a crash while writing must leave the old one whole.
        Osl_File_System::replace(fileName, serializeCatalog(entries));
        return true;
    } catch (const QIBError&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace osl::detail

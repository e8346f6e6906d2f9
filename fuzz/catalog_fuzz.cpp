// fuzz/catalog_fuzz.cpp
// The catalog reader on arbitrary bytes: never crash, never allocate beyond the input, and
// whatever it accepts must write back to the same bytes (the writer puts keys in order, so
// only ordered, duplicate-free input can come back unchanged) and read back to the same map.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>

#include "message/src/catalog_format.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    std::map<std::string, std::string> entries;
    if (!osl::detail::parseCatalog(bytes, entries)) return 0;
    const std::string written = osl::detail::serializeCatalog(entries);
    std::map<std::string, std::string> again;
    if (!osl::detail::parseCatalog(written, again) || again != entries) std::abort();
    if (written.size() > bytes.size()) std::abort();  // duplicates only ever shrink the file
    return 0;
}

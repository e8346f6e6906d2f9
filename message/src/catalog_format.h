// message/src/catalog_format.h
// The bytes of a catalog file: header, count, then key and text strings.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace osl::detail {

inline constexpr std::string_view kCatalogClassName = "(map_string*)";
inline constexpr std::uint32_t kCatalogClassNumber = 1002;

/// Parses a whole catalog file into `entries` (a key seen twice keeps its first text). False on
/// any malformation: wrong header, truncation, counts or lengths past the end, trailing bytes.
/// Never allocates more than the input's size. `entries` may be partly filled on false.
bool parseCatalog(std::string_view bytes, std::map<std::string, std::string>& entries);

/// The file bytes of a catalog holding `entries`, in key order.
std::string serializeCatalog(const std::map<std::string, std::string>& entries);

/// Reads a catalog file; false when it cannot be read or is malformed (`entries` then unchanged).
bool readCatalogFile(const std::string& fileName, std::map<std::string, std::string>& entries);

/// Writes a catalog file (created or truncated); false when it cannot be written completely.
bool writeCatalogFile(const std::string& fileName, const std::map<std::string, std::string>& entries);

}  // namespace osl::detail

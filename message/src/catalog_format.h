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
/// Catalog files above this size (bytes) are refused unread.
inline constexpr std::uint64_t kLargestCatalog = std::uint64_t{1} << 30;

/// Parses a whole catalog file into `entries` (a key seen twice keeps its first text). False on
/// any malformation: wrong header, truncation, counts or lengths past the end, trailing bytes.
/// Never allocates more than the input's size. `entries` may be partly filled on false.
bool parseCatalog(std::string_view bytes, std::map<std::string, std::string>& entries);

/// The file bytes of a catalog holding `entries`, in key order.
std::string serializeCatalog(const std::map<std::string, std::string>& entries);

/// Reads a catalog file; false when it cannot be read, is not a regular file, is larger than
/// kLargestCatalog or is malformed (`entries` then unchanged). Never throws.
bool readCatalogFile(const std::string& fileName, std::map<std::string, std::string>& entries);

/// Writes a catalog file through Osl_File_System::replace (crash-safe); false when it cannot be
/// written completely, the old file then unchanged. Never throws.
bool writeCatalogFile(const std::string& fileName, const std::map<std::string, std::string>& entries);

}  // namespace osl::detail

// strings/src/single_byte_tables.h
// Single-byte code pages to and from UTF-8 through tables taken once from ICU's own mapping: the
// fast path of the encoding converter. Each function stops where its table has no answer and
// leaves the rest to ICU.
#pragma once

#include "platform/icu_text.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace osl::detail {

/// The UTF-8 of every byte of a single-byte code page, and the byte of every BMP code point.
struct SingleByteTables {
    uint8_t utf8Length[256] = {};  // 0: unmapped
    char utf8[256][4] = {};
    std::vector<int16_t> fromBmp;  // -1: unmapped
    bool asciiIdentity = true;     // bytes 00-7F are themselves
};

/// The tables of an ICU converter name, made on first use and kept for the process; null when
/// the converter is not single-byte. Safe from any thread.
const SingleByteTables* singleByteTables(const std::string& converter);

/// Code page -> UTF-8 and UTF-8 -> code page from src[consumed, n) into dst[written, cap): ok,
/// noSpace, or failed where the table has no answer (consumed and written stop before it).
osl::platform::IcuStatus fromSingleByte(const SingleByteTables& t, const char* src, size_t n, char* dst, size_t cap,
                                        size_t& consumed, size_t& written);
osl::platform::IcuStatus toSingleByte(const SingleByteTables& t, const char* src, size_t n, char* dst, size_t cap,
                                      size_t& consumed, size_t& written);

}  // namespace osl::detail

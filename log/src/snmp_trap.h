// log/src/snmp_trap.h
// The SNMPv2c trap that carries one log line, encoded in BER.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace osl::detail {

/// The objects of the log trap, under the enterprise arc 1.3.6.1.4.1.32473 (the number set aside
/// for documentation; a product registers its own and changes kLogEnterprise).
inline constexpr char kLogEnterprise[] = "1.3.6.1.4.1.32473";
inline constexpr char kLogTrapOid[] = "1.3.6.1.4.1.32473.2.0.1";          // the notification
inline constexpr char kLogLineOid[] = "1.3.6.1.4.1.32473.2.1.1.0";        // OCTET STRING: the line
inline constexpr char kLogSeverityOid[] = "1.3.6.1.4.1.32473.2.1.2.0";    // INTEGER: 1..5
inline constexpr char kLogCategoryOid[] = "1.3.6.1.4.1.32473.2.1.3.0";    // OCTET STRING
inline constexpr char kLogAtOid[] = "1.3.6.1.4.1.32473.2.1.4.0";          // OCTET STRING
inline constexpr char kSysUpTimeOid[] = "1.3.6.1.2.1.1.3.0";
inline constexpr char kSnmpTrapOid[] = "1.3.6.1.6.3.1.1.4.1.0";

/// Lines longer than this are cut, so that the datagram stays well below the UDP limit.
inline constexpr std::size_t kMaxTrapLine = 60000;

struct LogTrap {
    std::string community;
    std::int32_t requestId = 0;
    std::uint32_t upTime = 0;  // hundredths of a second
    std::string line;
    int severity = 0;
    std::string category;
    std::string at;
};

/// The complete SNMPv2c message (version 1, the community, an SNMPv2-Trap-PDU).
std::string encodeTrap(const LogTrap& trap);

/// BER pieces, for the tests.
std::string berLength(std::size_t length);
std::string berInteger(std::int64_t value, unsigned char tag = 0x02);
std::string berOid(const std::string& dotted);

}  // namespace osl::detail

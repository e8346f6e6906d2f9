// log/src/snmp_trap.cpp
// BER encoding (X.690) of the few types a trap needs: INTEGER, OCTET STRING, OBJECT IDENTIFIER,
// TimeTicks, SEQUENCE and the trap PDU.
#include "log/src/snmp_trap.h"

#include <cstdlib>

namespace osl::detail {
namespace {

std::string tlv(unsigned char tag, const std::string& content) {
    std::string out(1, static_cast<char>(tag));
    out += berLength(content.size());
    out += content;
    return out;
}

std::string octets(const std::string& text) { return tlv(0x04, text); }

std::string varbind(const char* oid, const std::string& value) { return tlv(0x30, berOid(oid) + value); }

}  // namespace

std::string berLength(std::size_t length) {
    if (length < 0x80) return std::string(1, static_cast<char>(length));
    std::string bytes;
    for (std::size_t n = length; n != 0; n >>= 8) bytes.insert(bytes.begin(), static_cast<char>(n & 0xff));
    return static_cast<char>(0x80 | bytes.size()) + bytes;
}

std::string berInteger(std::int64_t value, unsigned char tag) {
    // Two's complement, big-endian, in the fewest bytes that keep the sign.
    std::string bytes;
    std::uint64_t bits = static_cast<std::uint64_t>(value);
    for (int i = 0; i < 8; ++i) {
        bytes.insert(bytes.begin(), static_cast<char>(bits & 0xff));
        bits >>= 8;
    }
    while (bytes.size() > 1) {
        const auto first = static_cast<unsigned char>(bytes[0]);
        const auto second = static_cast<unsigned char>(bytes[1]);
        if ((first == 0x00 && !(second & 0x80)) || (first == 0xff && (second & 0x80))) {
            bytes.erase(0, 1);
        } else {
            break;
        }
    }
    return tlv(tag, bytes);
}

std::string berOid(const std::string& dotted) {
    std::vector<std::uint64_t> arcs;
    const char* p = dotted.c_str();
    while (*p != '\0') {
        char* end = nullptr;
        arcs.push_back(std::strtoull(p, &end, 10));
        p = *end == '.' ? end + 1 : end;
        if (end == p && *p != '\0') break;
    }
    std::string content;
    auto put = [&content](std::uint64_t arc) {
        std::string base128(1, static_cast<char>(arc & 0x7f));
        for (arc >>= 7; arc != 0; arc >>= 7) base128.insert(base128.begin(), static_cast<char>(0x80 | (arc & 0x7f)));
        content += base128;
    };
    if (arcs.size() >= 2) {
        put(arcs[0] * 40 + arcs[1]);
        for (std::size_t i = 2; i < arcs.size(); ++i) put(arcs[i]);
    }
    return tlv(0x06, content);
}

std::string encodeTrap(const LogTrap& trap) {
    const std::string line = trap.line.size() > kMaxTrapLine ? trap.line.substr(0, kMaxTrapLine) : trap.line;
    std::string bindings;
    bindings += varbind(kSysUpTimeOid, berInteger(trap.upTime, 0x43));  // TimeTicks
    bindings += varbind(kSnmpTrapOid, berOid(kLogTrapOid));
    bindings += varbind(kLogLineOid, octets(line));
    bindings += varbind(kLogSeverityOid, berInteger(trap.severity));
    bindings += varbind(kLogCategoryOid, octets(trap.category));
    bindings += varbind(kLogAtOid, octets(trap.at));
    std::string pdu = berInteger(trap.requestId) + berInteger(0) + berInteger(0) + tlv(0x30, bindings);
    std::string message = berInteger(1) + octets(trap.community) + tlv(0xa7, pdu);  // 1: SNMPv2c
    return tlv(0x30, message);
}

}  // namespace osl::detail

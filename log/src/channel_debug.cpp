// log/src/channel_debug.cpp
// The debugger channel: standard error while a debugger is attached.
#include <vum-qib-osl/log/channel_debug.h>

#include <cstdio>

#include "platform/clock.h"
#include "platform/debugger.h"

CChannelDebug::~CChannelDebug() = default;

void CChannelDebug::Write(CLogMsg& msg) {
    if (!IsHiger(msg)) return;
    const std::int64_t now = osl::platform::clock().now().seconds;
    if (now != checkedAt_) {
        attached_ = osl::platform::debuggerAttached();
        checkedAt_ = now;
    }
    if (!attached_) return;
    std::fwrite(msg.c_str(), 1, msg.size(), stderr);
    std::fputc('\n', stderr);
    std::fflush(stderr);
}

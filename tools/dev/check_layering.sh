#!/usr/bin/env bash
# Include rules of the tree: third-party headers only in platform/bridges, POSIX and Linux
# headers only in platform/ (and tests, tools, bench, fuzz), public headers include only the
# standard library and <vum-qib-osl/...>.
set -u
root=${1:-$(git rev-parse --show-toplevel)}
cd "$root" || exit 2
status=0
report() { echo "layering: $1"; status=1; }

third='<(unicode/|pcre2|curl/)'
while IFS= read -r hit; do report "third-party header outside platform/bridges: $hit"; done < <(
    grep -rnE "#include $third" --include='*.cpp' --include='*.h' . |
    grep -vE '^\./(platform/bridges|bench|fuzz|build[^/]*|dist)/')

posix='<(unistd|fcntl|dlfcn|syslog|spawn|pthread)\.h>|<sys/'
while IFS= read -r hit; do report "system header outside platform/: $hit"; done < <(
    grep -rnE "#include $posix" --include='*.cpp' --include='*.h' \
        misc log ini message strings cmdline sync statistics file include 2>/dev/null |
    grep -vE '/tests/')

while IFS= read -r hit; do report "public header includes a private one: $hit"; done < <(
    grep -rnE '#include "' include)

# The logging core (messages, logger, channels, the file engine) stands on misc/ and platform/
# alone: ini/ logs through it, and the configuration read from an INI lives in log/config/.
while IFS= read -r hit; do report "logging core includes a layer above it: $hit"; done < <(
    grep -rnE '#include [<"](vum-qib-osl/)?(ini|message|strings|cmdline|sync|statistics|file)/' \
        log/src include/vum-qib-osl/log 2>/dev/null)

exit $status

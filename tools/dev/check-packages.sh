#!/usr/bin/env bash
# check-packages.sh SOURCE WORK: builds the Debian packages from SOURCE in WORK, checks them with
# lintian, extracts them into a scratch root and uses them from there: the outside consumer
# program builds and runs against the development package, qibosl runs, its manual page renders.
set -euo pipefail
src=$(cd "$1" && pwd)
work=$2
rm -rf "$work"
mkdir -p "$work"
trap 'rm -rf "$work"' EXIT
fail() { echo "check-packages: $*" >&2; exit 1; }

cmake -S "$src" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DOSL_BUILD_TESTS=OFF \
    -DCMAKE_INSTALL_PREFIX=/usr \
    >"$work/configure.log" || { cat "$work/configure.log"; fail "configure failed"; }
cmake --build "$work/build" -j "$(nproc)" >"$work/build.log" || { tail -50 "$work/build.log"; fail "build failed"; }
(cd "$work/build" && cpack >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; fail "cpack failed"; }
mapfile -t debs < <(ls "$work"/build/*.deb)
[ ${#debs[@]} -eq 3 ] || fail "expected 3 packages, got: ${debs[*]}"

# lintian: no error, and no warning but the ones the README explains.
explained='initial-upload-closes-no-bugs|maintscript-calls-ldconfig'
lintian --tag-display-limit 0 "${debs[@]}" >"$work/lintian.log" 2>&1 || true
if grep -E '^[EW]: ' "$work/lintian.log" | grep -vE ": ($explained) " >&2; then
    fail "lintian reports the lines above"
fi

# Dependencies are computed: the library's must name the ICU, PCRE2 and libcurl packages.
depends=$(dpkg-deb -f "$work"/build/libvum-qib-osl0_*.deb Depends)
for lib in libicu libpcre2-8 libcurl libc6; do
    [[ $depends == *"$lib"* ]] || fail "library package does not depend on $lib: $depends"
done

root=$work/root
for deb in "${debs[@]}"; do dpkg-deb -x "$deb" "$root"; done
libdir=$(dirname "$(find "$root/usr/lib" -name 'libvum-qib-osl.so.0' | head -1)")
[ -n "$libdir" ] || fail "no libvum-qib-osl.so.0 in the packages"

cmake -S "$src/tests/install" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$root/usr" \
    -DCMAKE_BUILD_RPATH="$libdir" >/dev/null || fail "consumer configure failed"
cmake --build "$work/consumer" >/dev/null || fail "consumer build failed"
"$work/consumer/consumer" | grep -q '^consumer 1.0' || fail "consumer did not run"
PKG_CONFIG_SYSROOT_DIR=$root PKG_CONFIG_LIBDIR=$libdir/pkgconfig pkg-config --libs vum-qib-osl |
    grep -q -- "-L$libdir -lvum-qib-osl" || fail "pkg-config does not name the packaged library"

LD_LIBRARY_PATH=$libdir "$root/usr/bin/qibosl" help ini | grep -q '^usage: qibosl ini check FILE' ||
    fail "the packaged qibosl does not find its usage texts"
page=$root/usr/share/man/man1/qibosl.1.gz
zcat "$page" | mandoc -T lint -W warning || fail "mandoc warns about qibosl.1"
zcat "$page" | groff -ww -man -Tutf8 -z 2>&1 | grep . && fail "groff warns about qibosl.1"
man -l "$page" 2>/dev/null | grep -q 'EXIT STATUS' || fail "man -l does not render qibosl.1"
[ -f "$root/usr/share/bash-completion/completions/qibosl" ] || fail "no bash completion"
echo "check-packages: ${#debs[@]} packages built, lintian clean, consumer and qibosl run from them"

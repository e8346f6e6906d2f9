#!/usr/bin/env bash
# lock_processes_test.sh QIBOSL LOCK_CHILD: computer-scope locks across processes and users.
# qibosl lock, util-linux flock(1) and lock_child take the same lock files; holders wait for a
# release file, so every case is decided by who holds what, never by timing.
set -u
qibosl=$1
child=$2
tmp=$(mktemp -d)
chmod 1777 "$tmp"  # holders that run as nobody signal here too
# Holders also end when the directory goes, so the trap's clean-up ends any that a failure left.
trap 'rm -rf "$tmp"; wait' EXIT
locks=$tmp/locks
mkdir -m 1777 "$locks"
fail=0
report() { echo "FAIL $*"; fail=1; }
expect() {  # expect NAME STATUS COMMAND...
    local name=$1 want=$2; shift 2
    "$@" >/dev/null 2>&1
    local got=$?
    [ "$got" -eq "$want" ] || report "$name: status $got, expected $want"
}
ready() {  # ready FILE: waits (up to 20 s) until a holder has made it
    for _ in $(seq 400); do [ -e "$1" ] && return 0; sleep 0.05; done
    report "no holder made $1"
}
# holder ID COMMAND...: runs COMMAND (a locker) in the background around a shell that signals
# $tmp/held.ID and waits for $tmp/release.ID; release ID ends it.
declare -A pids
holder() {
    local id=$1; shift
    "$@" sh -c 'touch "$0/held.$1"; while [ -d "$0" ] && [ ! -e "$0/release.$1" ]; do sleep 0.05; done' "$tmp" "$id" &
    pids[$id]=$!
    ready "$tmp/held.$id"
}
release() { touch "$tmp/release.$1"; wait "${pids[$1]}"; }
lockq() { "$qibosl" lock -path="$locks" "$@"; }

expect "no command" 2 lockq -name=x --
expect "bad time-out" 2 lockq -name=x -timeout=soon -- true

# Exclusive holders in tight loops, collecting after every unlock: the count is exact.
echo 0 >"$tmp/counter"
for i in 1 2 3 4; do "$child" "$locks" counted 400 "$tmp/counter" & done
wait
[ "$(cat "$tmp/counter")" = 1600 ] || report "counter: $(cat "$tmp/counter") instead of 1600"

# flock(1) and qibosl exclude each other, both ways and for both shares.
holder f1 flock "$locks/f"
expect "flock holds: qibosl exclusive" 75 lockq -name=f -timeout=0 -- true
expect "flock holds: qibosl shared" 75 lockq -name=f -shared -timeout=0 -- true
release f1
holder f2 lockq -name=f --
expect "qibosl holds: flock exclusive" 1 flock -n "$locks/f" true
expect "qibosl holds: flock shared" 1 flock -n -s "$locks/f" true
release f2
expect "released: flock" 0 flock -n "$locks/f" true

# Shared holders at once; a writer waits for both.
holder s1 lockq -name=s -shared --
holder s2 lockq -name=s -shared --
expect "shared holders: flock shared" 0 flock -n -s "$locks/s" true
expect "shared holders: qibosl exclusive" 75 lockq -name=s -timeout=0 -- true
release s1
expect "one shared holder left: exclusive" 75 lockq -name=s -timeout=0.2 -- true
release s2
expect "no holder: exclusive" 0 lockq -name=s -timeout=0 -- true

# A holder killed with SIGKILL releases the lock: the kernel drops it with the process.
holder k "$qibosl" lock -path="$locks" -name=k --
expect "before the kill" 75 lockq -name=k -timeout=0 -- true
kill -KILL "${pids[k]}"
expect "after the kill" 0 lockq -name=k -timeout=10 -- true
touch "$tmp/release.k"

# root and an unprivileged user share the default directory, whoever comes first.
nobody() { setpriv --reuid=65534 --regid=65534 --clear-groups "$@"; }
for first in root nobody; do
    export TMPDIR=$tmp/tmp-$first
    mkdir -m 1777 "$TMPDIR"
    if [ "$first" = root ]; then as1=; as2=nobody; else as1=nobody; as2=; fi
    holder u1$first $as1 "$qibosl" lock -name=u --
    [ "$(stat -c %a "$TMPDIR/osl_locks")" = 1777 ] || report "$first: directory mode $(stat -c %a "$TMPDIR/osl_locks")"
    [ "$(stat -c %a "$TMPDIR/osl_locks/u")" = 666 ] || report "$first: file mode $(stat -c %a "$TMPDIR/osl_locks/u")"
    expect "$first holds: the other user" 75 $as2 "$qibosl" lock -name=u -timeout=0 -- true
    release u1$first
    holder u2$first $as2 "$qibosl" lock -name=u -shared --
    expect "$first: the other holds shared, first user shared" 0 $as1 "$qibosl" lock -name=u -shared -timeout=0 -- true
    expect "$first: the other holds shared, first user exclusive" 75 $as1 "$qibosl" lock -name=u -timeout=0 -- true
    release u2$first
done
unset TMPDIR

# A symbolic link planted under the lock's name is refused, not followed.
ln -s "$tmp/target" "$locks/planted"
expect "planted symlink" 1 lockq -name=planted -- true
[ -e "$tmp/target" ] && report "planted symlink: its target was created"
exit $fail

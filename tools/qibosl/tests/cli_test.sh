#!/usr/bin/env bash
# The command line of qibosl: subcommands, usage errors and exit statuses.
set -u
qibosl=$1
installation=$2
fail=0
check() {  # check NAME EXPECTED-STATUS COMMAND...
    local name=$1 expected=$2; shift 2
    "$@" >/tmp/qibosl-cli.$$.out 2>/tmp/qibosl-cli.$$.err
    local status=$?
    if [ "$status" -ne "$expected" ]; then
        echo "FAIL $name: status $status, expected $expected"; cat /tmp/qibosl-cli.$$.err; fail=1
    fi
}
check no-command 2 "$qibosl"
grep -q '^usage: qibosl' /tmp/qibosl-cli.$$.err || { echo "FAIL no-command: no usage on stderr"; fail=1; }
check unknown-command 2 "$qibosl" frobnicate
grep -q "unknown command 'frobnicate'" /tmp/qibosl-cli.$$.err || { echo "FAIL unknown-command text"; fail=1; }
check version-extra-arg 2 "$qibosl" version extra
check version 0 "$qibosl" version
head -c 200 /tmp/qibosl-cli.$$.out | grep -q $'^qibosl [0-9.]*\r$' || { echo "FAIL version: first line"; fail=1; }
[ "$(grep -c $'\r$' /tmp/qibosl-cli.$$.out)" -eq "$(wc -l </tmp/qibosl-cli.$$.out)" ] || { echo "FAIL version: CR LF"; fail=1; }
[ "$(sort /tmp/qibosl-cli.$$.out | uniq -d | wc -l)" -eq 0 ] || { echo "FAIL version: duplicates"; fail=1; }
check demo-missing-dir 2 "$qibosl" demo /nonexistent/installation
check demo 0 "$qibosl" demo "$installation"
grep -q -- '-WARN  demo : a warning in category disk' /tmp/qibosl-cli.$$.out || { echo "FAIL demo: warning line"; fail=1; }
grep -q 'never shown' /tmp/qibosl-cli.$$.out && { echo "FAIL demo: refused category shown"; fail=1; }
grep -q '^files matching README\* (^README\.\*\$, case ignored): README' /tmp/qibosl-cli.$$.out || { echo "FAIL demo: wildcard"; fail=1; }
grep -q 'back: .*(same bytes)' /tmp/qibosl-cli.$$.out || { echo "FAIL demo: text round trip"; fail=1; }
grep -q 'differs' /tmp/qibosl-cli.$$.out && { echo "FAIL demo: a text round trip differs"; fail=1; }
# match and autoedit
printf 'alpha 1\nBeta 22\ngamma\n' >/tmp/qibosl-cli.$$.txt
check match 0 "$qibosl" match '[0-9]+$' /tmp/qibosl-cli.$$.txt
[ "$(cat /tmp/qibosl-cli.$$.out)" = $'alpha 1\nBeta 22' ] || { echo "FAIL match: lines"; fail=1; }
check match-case 0 "$qibosl" match -i '^beta' /tmp/qibosl-cli.$$.txt
[ "$(cat /tmp/qibosl-cli.$$.out)" = 'Beta 22' ] || { echo "FAIL match -i: lines"; fail=1; }
check match-none 1 "$qibosl" match '^delta' /tmp/qibosl-cli.$$.txt
check match-bad-pattern 2 "$qibosl" match '(' /tmp/qibosl-cli.$$.txt
grep -q '^qibosl match: Invalid regular expression pattern: ($' /tmp/qibosl-cli.$$.err &&
    grep -q '^GCError: missing closing parenthesis' /tmp/qibosl-cli.$$.err || { echo "FAIL match: error text"; fail=1; }
check match-stdin 0 sh -c "printf 'x\303\251y\n' | '$qibosl' match -u '^x.y$'"
check match-no-file 2 "$qibosl" match a /nonexistent/file
check autoedit 0 "$qibosl" autoedit 'log_%%Job.%%N' JOB=run n=7
[ "$(cat /tmp/qibosl-cli.$$.out)" = 'log_run7' ] || { echo "FAIL autoedit: text"; fail=1; }
check autoedit-width 0 "$qibosl" autoedit -w '%%A   |' A=x
[ "$(cat /tmp/qibosl-cli.$$.out)" = 'x     |' ] || { echo "FAIL autoedit -w: text"; fail=1; }
check autoedit-bad-variable 2 "$qibosl" autoedit 'x' novalue
rm -f /tmp/qibosl-cli.$$.txt
rm -f /tmp/qibosl-cli.$$.out /tmp/qibosl-cli.$$.err
exit $fail

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
grep -q 'report_server/language = English   (from the group default)' /tmp/qibosl-cli.$$.out ||
    { echo "FAIL demo: settings file"; fail=1; }
grep -q 'back: .*(same bytes)' /tmp/qibosl-cli.$$.out || { echo "FAIL demo: text round trip"; fail=1; }
grep -q 'differs' /tmp/qibosl-cli.$$.out && { echo "FAIL demo: a text round trip differs"; fail=1; }
grep -q 'first line of journal.log: \[LOG 1 00 [0-9]\{14\} ' /tmp/qibosl-cli.$$.out || { echo "FAIL demo: journal header"; fail=1; }
[ "$(grep -c '  journal_[0-9_]*\.bak  ' /tmp/qibosl-cli.$$.out)" -eq 3 ] || { echo "FAIL demo: purgecount 3"; fail=1; }
# env and dirs
check env-set 0 env QIBOSL_CLI_SET=value "$qibosl" env QIBOSL_CLI_SET
grep -qx 'QIBOSL_CLI_SET=value' /tmp/qibosl-cli.$$.out || { echo "FAIL env: set variable"; fail=1; }
check env-empty 0 env QIBOSL_CLI_SET= "$qibosl" env QIBOSL_CLI_SET
grep -q 'set to the empty text' /tmp/qibosl-cli.$$.out || { echo "FAIL env: empty variable"; fail=1; }
check env-unset 1 env -u QIBOSL_CLI_SET "$qibosl" env QIBOSL_CLI_SET
check env-list 0 env QIBOSL_CLI_SET=a=b "$qibosl" env
grep -qx 'QIBOSL_CLI_SET=a=b' /tmp/qibosl-cli.$$.out || { echo "FAIL env: list"; fail=1; }
check env-two-args 2 "$qibosl" env A B
check dirs 0 env DECOLLATOR_DIR=/opt/qib TMPDIR=/var/tmp "$qibosl" dirs
grep -q '^  log  */opt/qib/log/$' /tmp/qibosl-cli.$$.out || { echo "FAIL dirs: log directory"; fail=1; }
grep -q '^temp directory  */var/tmp/$' /tmp/qibosl-cli.$$.out || { echo "FAIL dirs: temp"; fail=1; }
check dirs-second-variable 0 env -u DECOLLATOR_DIR QIB_ROOT=/srv/q/ "$qibosl" dirs DECOLLATOR_DIR QIB_ROOT
grep -q '^  root  */srv/q/$' /tmp/qibosl-cli.$$.out || { echo "FAIL dirs: second variable"; fail=1; }
check dirs-unset 1 env -u DECOLLATOR_DIR "$qibosl" dirs
check demo-env 0 "$qibosl" demo "$installation"
grep -q 'GeneralConfiguration::Init on an unset variable throws the integer 2' /tmp/qibosl-cli.$$.out ||
    { echo "FAIL demo: environment section"; fail=1; }
grep -q 'programm misc\\src\\dloadlib 76' /tmp/qibosl-cli.$$.out || { echo "FAIL demo: dloadlib"; fail=1; }
# ini: check, get, set, dump
ini_dir=$(mktemp -d)
printf '[b]\nk = 1 ; note\n[a]\npath=%%HOME%%/x\n' >"$ini_dir/ok.ini"
printf '[g]\n; comment\nbroken\n' >"$ini_dir/bad.ini"
check ini-check-ok 0 "$qibosl" ini check "$ini_dir/ok.ini"
check ini-check-bad 1 "$qibosl" ini check "$ini_dir/bad.ini"
grep -qx "$ini_dir/bad.ini:3:  = Expected (error 8)" /tmp/qibosl-cli.$$.out || { echo "FAIL ini check: line"; cat /tmp/qibosl-cli.$$.out; fail=1; }
check ini-get 0 env HOME=/home/q "$qibosl" ini get "$ini_dir/ok.ini" A PATH
[ "$(cat /tmp/qibosl-cli.$$.out)" = "/home/q/x" ] || { echo "FAIL ini get: expansion"; fail=1; }
check ini-get-missing 1 "$qibosl" ini get "$ini_dir/ok.ini" a nokey
check ini-get-default 0 "$qibosl" ini get "$ini_dir/ok.ini" a nokey -default=dflt
[ "$(cat /tmp/qibosl-cli.$$.out)" = "dflt" ] || { echo "FAIL ini get: default"; fail=1; }
check ini-set 0 "$qibosl" ini set "$ini_dir/ok.ini" c new 'v;w'
check ini-dump 0 "$qibosl" ini dump "$ini_dir/ok.ini"
[ "$(cat /tmp/qibosl-cli.$$.out)" = "$(printf '[a]\npath=%%HOME%%/x\n\n[b]\nk=1\n\n[c]\nnew=v w')" ] ||
    { echo "FAIL ini dump"; cat /tmp/qibosl-cli.$$.out; fail=1; }
[ "$(ls "$ini_dir")" = "$(printf 'bad.ini\nok.ini')" ] || { echo "FAIL ini set: leftovers"; ls "$ini_dir"; fail=1; }
check ini-usage 2 "$qibosl" ini get "$ini_dir/ok.ini" a
rm -rf "$ini_dir"
# log: one message through the channels of a logging configuration
log_dir=$(mktemp -d)
printf '[logging]\nchannels=f\n[f]\ntype=text-file\nlevel=warning\ncategory=*\npath=%s/run.log\n' "$log_dir" >"$log_dir/log.ini"
check log 0 "$qibosl" log -config="$log_dir/log.ini" -process=script -severity=error -category=db -at=nightly the backup failed
grep -q $'^A script .* db .* -ERROR nightly : the backup failed\r$' "$log_dir/run.log" || { echo "FAIL log: line"; cat "$log_dir/run.log"; fail=1; }
check log-below-level 0 "$qibosl" log -config="$log_dir/log.ini" -process=script -severity=info not written
grep -q 'not written' "$log_dir/run.log" && { echo "FAIL log: level"; fail=1; }
check log-no-config 2 "$qibosl" log -process=x -severity=info text
check log-bad-severity 2 "$qibosl" log -config="$log_dir/log.ini" -process=x -severity=loud text
check log-no-text 2 "$qibosl" log -config="$log_dir/log.ini" -process=x -severity=info
check log-unknown-option 2 "$qibosl" log -config="$log_dir/log.ini" -process=x -severity=info -colour=red text
check log-unreadable 1 "$qibosl" log -config="$log_dir/missing.ini" -process=x -severity=info text
rm -rf "$log_dir"
rm -f /tmp/qibosl-cli.$$.out /tmp/qibosl-cli.$$.err
exit $fail

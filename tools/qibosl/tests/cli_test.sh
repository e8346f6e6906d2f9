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
expect() {  # expect out|err NAME GREP-ARGUMENTS...: the last command's stdout or stderr matches
    local stream=$1 name=$2; shift 2
    grep -q "$@" /tmp/qibosl-cli.$$.$stream || { echo "FAIL $name"; cat /tmp/qibosl-cli.$$.$stream; fail=1; }
}
check no-command 2 "$qibosl"
expect err "no-command: no usage on stderr" '^usage: qibosl'
check unknown-command 2 "$qibosl" frobnicate
expect err "unknown-command text" "unknown command 'frobnicate'"
check version-extra-arg 2 "$qibosl" version extra
check version 0 "$qibosl" version
head -c 200 /tmp/qibosl-cli.$$.out | grep -q $'^qibosl [0-9.]*\r$' || { echo "FAIL version: first line"; fail=1; }
[ "$(grep -c $'\r$' /tmp/qibosl-cli.$$.out)" -eq "$(wc -l </tmp/qibosl-cli.$$.out)" ] || { echo "FAIL version: CR LF"; fail=1; }
[ "$(sort /tmp/qibosl-cli.$$.out | uniq -d | wc -l)" -eq 0 ] || { echo "FAIL version: duplicates"; fail=1; }
check demo-missing-dir 2 "$qibosl" demo /nonexistent/installation
check demo 0 "$qibosl" demo "$installation"
expect out "demo: warning line" -- '-WARN  demo : a warning in category disk'
grep -q 'never shown' /tmp/qibosl-cli.$$.out && { echo "FAIL demo: refused category shown"; fail=1; }
expect out "demo: message from the installation's catalog" \
    '^	E0042 cannot open report.dat: permission denied (3 attempts)$'
expect out "demo: settings file" 'report_server/language = English   (from the group default)'
expect out "demo: text round trip" 'back: .*(same bytes)'
grep -q '  (differs)' /tmp/qibosl-cli.$$.out && { echo "FAIL demo: a text round trip differs"; fail=1; }
expect out "demo: no remote server" '^no remote settings: the installation names no server'
expect out "demo: journal header" 'first line of journal.log: \[LOG 1 00 [0-9]\{14\} '
[ "$(grep -c '  journal_[0-9_]*\.bak  ' /tmp/qibosl-cli.$$.out)" -eq 3 ] || { echo "FAIL demo: purgecount 3"; fail=1; }
expect out "demo: environment section" 'GeneralConfiguration::Init on an unset variable throws the integer 2'
expect out "demo: dloadlib" 'programm misc\\src\\dloadlib 76'
expect out "demo: wildcard" '^files matching README\* (^README\.\*\$, case ignored): README'

# catalog compile / dump / usage
tmp=$(mktemp -d)
printf '# a comment\nusage_x1=Options:\nprog_x1_1=-in=FILE\\tinput\nusage_2=version %%1\nprog_2_1=7.1\nmulti=a\\nb\\x01 \xc3\xa9\n' >"$tmp/src.msg"
check catalog-compile 0 "$qibosl" catalog compile "$tmp/src.msg" "$tmp/a.cat"
check catalog-dump 0 "$qibosl" catalog dump "$tmp/a.cat"
cp /tmp/qibosl-cli.$$.out "$tmp/dump.msg"
expect out "catalog-dump: escapes" -x 'multi=a\\nb\\x01 é'
check catalog-recompile 0 "$qibosl" catalog compile "$tmp/dump.msg" "$tmp/b.cat"
cmp -s "$tmp/a.cat" "$tmp/b.cat" || { echo "FAIL catalog: compile(dump(x)) differs from x"; fail=1; }
printf 'ok=1\n\nbroken line\n' >"$tmp/bad.msg"
check catalog-bad-source 1 "$qibosl" catalog compile "$tmp/bad.msg" "$tmp/c.cat"
expect err "catalog: error line" "bad.msg:3: no '=' between key and text"
check catalog-dump-garbage 1 "$qibosl" catalog dump "$tmp/bad.msg"
check catalog-no-args 2 "$qibosl" catalog
check catalog-unknown-option 2 "$qibosl" catalog dump -x=1 "$tmp/a.cat"
check usage 0 "$qibosl" usage "$tmp/a.cat" prog
[ "$(cat /tmp/qibosl-cli.$$.out)" = "$(printf 'Options:\n\t-in=FILE\tinput\nversion 7.1')" ] || { echo "FAIL usage text"; cat /tmp/qibosl-cli.$$.out; fail=1; }
check usage-message-path 0 env MESSAGE_PATH="$tmp" "$qibosl" usage a.cat prog
check usage-missing-catalog 1 "$qibosl" usage "$tmp/none.cat" prog
check usage-no-set 2 "$qibosl" usage "$tmp/a.cat"
expect err "usage: own usage from the catalog" 'usage CATALOG SET'
check help 0 "$qibosl" help
expect out "help: usage texts missing" 'catalog dump FILE'
for form in "help ini" "ini -help"; do
    check "$form" 0 "$qibosl" $form
    expect out "$form: one command's usage" -x 'usage: qibosl ini check FILE .*'
done
check help-unknown 2 "$qibosl" help frobnicate
check verb-missing 2 "$qibosl" ini
expect err "ini without a verb: its usage" '^usage: qibosl ini check FILE'
grep -q '^commands:' /tmp/qibosl-cli.$$.err && { echo "FAIL ini without a verb: whole list"; fail=1; }
# The manual page and the completion are generated beside qibosl: the same commands as its help.
docs=$(dirname "$qibosl")
"$qibosl" help | sed -n 's/^\t\([a-z][a-z-]*\)\( .*\)\{0,1\}$/\1/p' | sort -u >"$tmp/help.list"
sed -n 's/^\.SS //p' "$docs/qibosl.1" | sort >"$tmp/man.list"
cmp -s "$tmp/help.list" "$tmp/man.list" || { echo "FAIL manual page sections differ from help"; diff "$tmp/help.list" "$tmp/man.list"; fail=1; }
completed=$(bash -c 'source "$1"
    complete() { COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _qibosl; echo "${COMPREPLY[*]}"; }
    complete qibosl in; complete qibosl ini ""; complete qibosl convert -f' _ "$docs/qibosl.bash-completion")
[ "$completed" = $'ini\ncheck get set dump\n-from=' ] || { echo "FAIL completion: $completed"; fail=1; }
rm -rf "$tmp"
# env and dirs
check env-set 0 env QIBOSL_CLI_SET=value "$qibosl" env QIBOSL_CLI_SET
expect out "env: set variable" -x 'QIBOSL_CLI_SET=value'
check env-empty 0 env QIBOSL_CLI_SET= "$qibosl" env QIBOSL_CLI_SET
expect out "env: empty variable" 'set to the empty text'
check env-unset 1 env -u QIBOSL_CLI_SET "$qibosl" env QIBOSL_CLI_SET
check env-list 0 env QIBOSL_CLI_SET=a=b "$qibosl" env
expect out "env: list" -x 'QIBOSL_CLI_SET=a=b'
check env-two-args 2 "$qibosl" env A B
check dirs 0 env DECOLLATOR_DIR=/opt/qib TMPDIR=/var/tmp "$qibosl" dirs
expect out "dirs: log directory" '^  log  */opt/qib/log/$'
expect out "dirs: temp" '^temp directory  */var/tmp/$'
check dirs-second-variable 0 env -u DECOLLATOR_DIR QIB_ROOT=/srv/q/ "$qibosl" dirs DECOLLATOR_DIR QIB_ROOT
expect out "dirs: second variable" '^  root  */srv/q/$'
check dirs-unset 1 env -u DECOLLATOR_DIR "$qibosl" dirs

# convert and encodings
tmp=$(mktemp -d)
check encodings 0 "$qibosl" encodings
expect out "encodings: Latin1 with its description" '^Latin1  *ISO 8859-1'
printf 'caf\xe9\n' >"$tmp/latin1.txt"
check convert-file 0 "$qibosl" convert -from=Latin1 -to=UTF-8 "$tmp/latin1.txt"
[ "$(od -An -tx1 /tmp/qibosl-cli.$$.out | tr -d ' \n')" = "636166c3a90a" ] || { echo "FAIL convert: Latin1 to UTF-8"; fail=1; }
# Characters cut by the 64 KiB chunks of the stream must come through whole.
python3 -c "import sys; sys.stdout.buffer.write(b'x' + ('日本語、abc\n' + 'カタカナ' * 40).encode() * 700)" >"$tmp/ja.txt"
"$qibosl" convert -from = UTF-8 -to= MS932 <"$tmp/ja.txt" >"$tmp/ja.sjis" &&
    "$qibosl" convert -from=MS932 -to=UTF-8 "$tmp/ja.sjis" | cmp -s - "$tmp/ja.txt" ||
    { echo "FAIL convert: UTF-8 -> MS932 -> UTF-8 through stdin and a file"; fail=1; }
check convert-unknown-encoding 2 "$qibosl" convert -from=Latin1 -to=no-such-encoding "$tmp/latin1.txt"
expect err "convert: unknown encoding text" "unknown encoding 'no-such-encoding'"
check convert-missing-option 2 "$qibosl" convert -from=Latin1 "$tmp/latin1.txt"
check convert-missing-file 1 "$qibosl" convert -from=Latin1 -to=UTF-8 "$tmp/none.txt"
printf 'ok\xff\n' >"$tmp/bad.txt"
check convert-illegal-input 1 "$qibosl" convert -from=UTF-8 -to=Latin1 "$tmp/bad.txt"
rm -rf "$tmp"
# match and autoedit
printf 'alpha 1\nBeta 22\ngamma\n' >/tmp/qibosl-cli.$$.txt
check match 0 "$qibosl" match '[0-9]+$' /tmp/qibosl-cli.$$.txt
[ "$(cat /tmp/qibosl-cli.$$.out)" = $'alpha 1\nBeta 22' ] || { echo "FAIL match: lines"; fail=1; }
check match-case 0 "$qibosl" match -i '^beta' /tmp/qibosl-cli.$$.txt
[ "$(cat /tmp/qibosl-cli.$$.out)" = 'Beta 22' ] || { echo "FAIL match -i: lines"; fail=1; }
check match-none 1 "$qibosl" match '^delta' /tmp/qibosl-cli.$$.txt
check match-bad-pattern 2 "$qibosl" match '(' /tmp/qibosl-cli.$$.txt
expect err "match: error text" '^qibosl match: Invalid regular expression pattern: ($'
expect err "match: error cause" '^GCError: missing closing parenthesis'
check match-stdin 0 sh -c "printf 'x\303\251y\n' | '$qibosl' match -u '^x.y$'"
check match-no-file 2 "$qibosl" match a /nonexistent/file
check autoedit 0 "$qibosl" autoedit 'log_%%Job.%%N' JOB=run n=7
[ "$(cat /tmp/qibosl-cli.$$.out)" = 'log_run7' ] || { echo "FAIL autoedit: text"; fail=1; }
check autoedit-width 0 "$qibosl" autoedit -w '%%A   |' A=x
[ "$(cat /tmp/qibosl-cli.$$.out)" = 'x     |' ] || { echo "FAIL autoedit -w: text"; fail=1; }
check autoedit-bad-variable 2 "$qibosl" autoedit 'x' novalue
rm -f /tmp/qibosl-cli.$$.txt
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

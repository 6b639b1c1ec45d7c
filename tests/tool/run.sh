#!/usr/bin/env bash
# Tests of the operators' tool: each case starts the programs that a user would start.
# usage: tests/tool/run.sh --list | FOLDER_OF_THE_TOOL CASE...
set -euo pipefail
source "$(dirname "$0")/../../scripts/lib.sh"

if [ "${1:-}" = --list ]; then
  sed -n 's/^case_\([a-z0-9_]*\)() {.*/\1/p' tests/tool/run.sh tests/tool/cases/*.sh
  exit 0
fi

folder=$1
shift
own_wine=
if [ -z "${WINEPREFIX:-}" ]; then
  wine_start
  own_wine=yes
fi
# The tool finds its message catalogues itself.
unset KTB_PROD NYX_PROD
work=$(mktemp -d)
server=
current=
end() {
  # The server's own process only: a case that failed half-way leaves it running.
  [ -z "$server" ] || kill "$server" 2>/dev/null || true
  rm -rf "$work"
  [ -z "$own_wine" ] || wine_stop
}
trap end EXIT

tesselctl() { timeout -k 5 60 wine "$folder/tesselctl.exe" "$@" 6>&- 7>&- 8>&-; }

# run CODE ARGUMENT...: runs the tool, keeps what it writes in $work/out and $work/err, and expects the exit code.
run() {
  local expected=$1 code=0
  shift
  tesselctl "$@" >"$work/out" 2>"$work/err" || code=$?
  [ "$code" = "$expected" ] || fail "tesselctl $*: exit code $code instead of $expected"
}

fail() {
  printf '%s: %s\n' "$current" "$*"
  for file in out err server.err; do
    [ ! -s "$work/$file" ] || { printf -- '-- %s\n' "$file"; head -n 20 "$work/$file"; }
  done
  exit 1
}

equal() { [ "$2" = "$3" ] || fail "$(printf '%s: expected %q, found %q' "$1" "$2" "$3")"; }
contains() { grep -qF -- "$2" "$work/$1" || fail "$1 does not contain: $2"; }
lacks() { ! grep -qF -- "$2" "$work/$1" || fail "$1 contains: $2"; }
bytes() { od -An -v -tx1 "$1" | tr -d ' \n'; }
error_line() { equal "first error line" "tesselctl: $1" "$(head -n 1 "$work/err")"; }

# serve ARGUMENT...: starts a server named $service and returns when clients can connect. Its input is descriptor 8.
serve() {
  local line=
  rm -f "$work/ready" "$work/input"
  mkfifo "$work/ready" "$work/input"
  wine "$folder/tesselctl.exe" ipc serve "$service" "$@" <"$work/input" >"$work/ready" 2>"$work/server.err" &
  server=$!
  exec 8>"$work/input"
  read -r -t 60 line <"$work/ready" || true
  equal "the server's ready line" "serving $service" "$line"
}

# server_ends CODE SUMMARY
server_ends() {
  local code=0
  wait "$server" || code=$?
  server=
  equal "the server's exit code" "$1" "$code"
  equal "the server's summary" "$2" "$(tail -n 1 "$work/server.err")"
}

stop_serving() { exec 8>&-; }

case_help_goes_to_standard_output_and_names_the_exit_codes() {
  run 0 --help
  contains out "Exit codes: 0 success, 1 failure at run time, 2 wrong usage."
  equal "standard error" "" "$(cat "$work/err")"
  run 0 ipc serve --help
  contains out "--max-connections"
  run 0 ipc send --help
  contains out "--truncate"
  run 0 secure --help
  contains out "--everyone-write"
  run 0 check --help
  contains out "Guests, Users and Everyone"
  run 0 acl --help
  contains out "in their order"
}

case_version_shows_the_build_level() {
  run 0 --version
  grep -qxE 'tesselctl ([0-9]+\.[0-9]+\.[0-9]+), build level \1-[0-9a-z]+' "$work/out" || fail "version line"
}

case_wrong_usage_exits_with_2() {
  run 2
  error_line "A subcommand is required"
  run 2 ipc
  error_line "A subcommand is required"
  run 2 ipc serve
  error_line "NAME is required"
  run 2 ipc serve name --transform unknown
  error_line "--transform: unknown not in {echo,length,lower,refuse,reverse,upper}"
  run 2 ipc serve name --count -1
  error_line "--count: Value -1 not in range 0 to 9223372036854775807"
  run 2 ipc serve name --max-connections 0
  error_line "--max-connections: Value 0 not in range 1 to 2147483647"
  run 2 ipc send name --interval -1
  error_line "--interval: Value -1 not in range 0 to 2147483647"
  run 2 ipc send name file other
  error_line "The following argument was not expected: other"
  for command in secure check acl; do
    run 2 "$command"
    error_line "PATH is required"
  done
  run 2 acl file other
  error_line "The following argument was not expected: other"
  run 2 check file --unknown
  error_line "The following argument was not expected: --unknown"
  equal "standard output" "" "$(cat "$work/out")"
}

# transformed NAME REPLY
transformed() {
  serve --transform "$1" --count 1
  run 0 ipc send "$service" <<<'Ab c1!Zz'
  equal "$1" "$2" "$(cat "$work/out")"
  server_ends 0 "requests: 1, clients: 1"
}

case_each_transformation_answers() {
  transformed echo 'Ab c1!Zz'
  transformed length 8
  transformed lower 'ab c1!zz'
  transformed reverse 'zZ!1c bA'
  transformed upper 'AB C1!ZZ'
}

case_upper_is_the_default_transformation() {
  serve --count 1
  run 0 ipc send "$service" <<<'abc'
  equal "reply" ABC "$(cat "$work/out")"
  server_ends 0 "requests: 1, clients: 1"
}

case_line_ends_are_cut_and_all_other_bytes_kept() {
  serve --transform echo --count 5
  printf 'crlf\r\n\ninner\rcr\n\x00\x01\x1a\xff\nlast' >"$work/lines"
  run 0 ipc send "$service" "$work/lines"
  printf 'crlf\n\ninner\rcr\n\x00\x01\x1a\xff\nlast\n' >"$work/expected"
  equal "replies" "$(bytes "$work/expected")" "$(bytes "$work/out")"
  equal "summary" "requests: 5, failures: 0, sent: 20 bytes, received: 20 bytes" "$(head -n 1 "$work/err")"
  server_ends 0 "requests: 5, clients: 1"
}

case_a_dash_and_no_file_mean_standard_input() {
  serve --count 2
  run 0 ipc send "$service" - <<<'dash'
  equal "reply" DASH "$(cat "$work/out")"
  run 0 ipc send "$service" <<<'none'
  equal "reply" NONE "$(cat "$work/out")"
  server_ends 0 "requests: 2, clients: 2"
}

case_an_empty_file_sends_nothing() {
  serve --until-eof
  run 0 ipc send "$service" </dev/null
  equal "standard output" "" "$(cat "$work/out")"
  equal "summary" "requests: 0, failures: 0, sent: 0 bytes, received: 0 bytes" "$(cat "$work/err")"
  stop_serving
  server_ends 0 "requests: 0, clients: 0"
}

case_the_summary_has_two_lines_and_quiet_none() {
  serve --transform length --count 4
  run 0 ipc send "$service" <<<$'abc\nde'
  equal "first line" "requests: 2, failures: 0, sent: 5 bytes, received: 2 bytes" "$(sed -n 1p "$work/err")"
  sed -n 2p "$work/err" | grep -qxE 'round trip: median [0-9]+\.[0-9]{3} ms, 99th percentile [0-9]+\.[0-9]{3} ms' ||
    fail "second line of the summary"
  equal "lines" 2 "$(wc -l <"$work/err")"
  run 0 ipc send "$service" --quiet <<<$'abc\nde'
  equal "replies" $'3\n2' "$(cat "$work/out")"
  equal "standard error" "" "$(cat "$work/err")"
  server_ends 0 "requests: 4, clients: 2"
}

case_a_line_that_is_too_long_is_refused_by_its_number() {
  serve --transform length --count 3
  { printf '%01024d\n' 0; printf '%01025d\n' 0; echo end; } >"$work/lines"
  run 1 ipc send "$service" "$work/lines"
  equal "replies" $'1024\n3' "$(cat "$work/out")"
  error_line "$work/lines:2: the line has 1025 bytes, and a request holds at most 1024"
  contains err "requests: 2, failures: 1, sent: 1027 bytes"
  run 0 ipc send "$service" --truncate <<<"$(printf '%02000d' 0)"
  equal "replies" 1024 "$(cat "$work/out")"
  server_ends 0 "requests: 3, clients: 2"
}

case_an_error_reply_is_shown_and_the_next_line_is_sent() {
  serve --transform refuse --count 2
  run 1 ipc send "$service" <<<$'one\ntwo'
  equal "standard output" "" "$(cat "$work/out")"
  equal "errors" $'tesselctl: standard input:1: status 1: refused: one\ntesselctl: standard input:2: status 1: refused: two' \
    "$(head -n 2 "$work/err")"
  contains err "requests: 2, failures: 2, sent: 6 bytes, received: 24 bytes"
  server_ends 0 "requests: 2, clients: 1"
}

case_the_server_stops_after_exactly_its_count() {
  serve --count 2
  run 1 ipc send "$service" <<<$'one\ntwo\nthree'
  equal "replies" $'ONE\nTWO' "$(cat "$work/out")"
  contains err "tesselctl: standard input:3: "
  contains err "requests: "
  server_ends 0 "requests: 2, clients: 1"
}

case_the_server_stops_at_the_end_of_its_input() {
  serve --until-eof
  run 0 ipc send "$service" <<<'before'
  stop_serving
  server_ends 0 "requests: 1, clients: 1"
  run 1 ipc send "$service" <<<'after'
}

case_the_server_stops_when_interrupted() {
  serve
  run 0 ipc send "$service" <<<'before'
  kill -INT "$server"
  server_ends 0 "requests: 1, clients: 1"
}

# The first client is connected for certain while the limit is tried: it has had a reply and sends a line afterwards.
case_a_client_beyond_the_limit_is_dropped_and_the_first_one_served() {
  local reply=
  serve --max-connections 1 --count 2
  mkfifo "$work/requests" "$work/replies"
  wine "$folder/tesselctl.exe" ipc send "$service" --quiet <"$work/requests" >"$work/replies" 2>"$work/first.err" 8>&- &
  local first=$!
  exec 7>"$work/requests" 6<"$work/replies"
  echo one >&7
  read -r -t 60 reply <&6
  equal "reply" ONE "$reply"
  run 1 ipc send "$service" <<<'refused'
  equal "standard output" "" "$(cat "$work/out")"
  contains server.err KTBNV0090E
  echo two >&7
  read -r -t 60 reply <&6
  equal "reply" TWO "$reply"
  exec 7>&- 6<&-
  wait "$first" || fail "the first client failed"
  server_ends 0 "requests: 2, clients: 1"
}

# The mode bits show what Wine makes of an access list.
modes() { stat -c %a "$@" | tr '\n' ' '; }

case_secure_leaves_a_file_to_its_user_and_check_agrees() {
  touch "$work/one" "$work/two"
  chmod 644 "$work/one" "$work/two"
  run 1 check "$work/one" "$work/none" "$work/two"
  equal "standard output" "" "$(cat "$work/out")"
  equal "reasons" "tesselctl: KTBNV0145E: The group 'Everyone' has access to '$work/one'." "$(sed -n 1p "$work/err")"
  grep -qxE "tesselctl: KTBNV0139E: .* of '$work/none'\. System text: .+" "$work/err" || fail "the missing file"
  equal "reasons" "tesselctl: KTBNV0145E: The group 'Everyone' has access to '$work/two'." "$(sed -n 3p "$work/err")"
  run 0 secure "$work/one" "$work/two"
  equal "standard output" "secured: $work/one"$'\n'"secured: $work/two" "$(cat "$work/out")"
  equal "modes" "660 660 " "$(modes "$work/one" "$work/two")"
  run 0 check "$work/one" "$work/two"
  equal "standard output" "protected: $work/one"$'\n'"protected: $work/two" "$(cat "$work/out")"
  equal "standard error" "" "$(cat "$work/err")"
}

case_secure_lets_in_whom_its_options_name() {
  touch "$work/file"
  run 0 secure "$work/file" --everyone-read
  equal "mode" "664 " "$(modes "$work/file")"
  run 0 secure "$work/file" --everyone-write
  equal "mode" "662 " "$(modes "$work/file")"
  run 0 secure "$work/file" --everyone-read --everyone-write
  equal "mode" "666 " "$(modes "$work/file")"
  run 0 secure "$work/file" --group-write
  equal "mode" "664 " "$(modes "$work/file")"
  run 0 secure "$work/file" --group-write --everyone-write
  equal "mode" "666 " "$(modes "$work/file")"
  run 1 check "$work/file"
}

case_secure_goes_on_after_a_failure() {
  touch "$work/file"
  chmod 644 "$work/file"
  run 1 secure "$work/none" "$work/file"
  equal "standard output" "secured: $work/file" "$(cat "$work/out")"
  grep -qxE "tesselctl: KTBNV0031E: Unable to set the access control list of '$work/none'\. System text: .+" \
    "$work/err" || fail "text of the failure"
  equal "mode" "660 " "$(modes "$work/file")"
}

case_acl_prints_an_entry_on_each_line() {
  mkdir "$work/folder"
  touch "$work/file"
  run 0 secure "$work/file" "$work/folder"
  run 0 secure "$work/folder" --everyone-read
  run 0 acl "$work/file"
  equal "first line" "$work/file: 2 entries" "$(head -n 1 "$work/out")"
  grep -qxE 'allow  NT AUTHORITY\\SYSTEM +0x001f01ff  full control \(here\)' "$work/out" || fail "the system's entry"
  run 0 acl "$work/folder"
  equal "first line" "$work/folder: 3 entries" "$(head -n 1 "$work/out")"
  equal "lines" 4 "$(wc -l <"$work/out")"
  grep -qxE 'allow  Everyone +0x001200a9  read, execute \(here, folders and files below\)' "$work/out" ||
    fail "the entry of Everyone"
  run 1 acl "$work/none"
  grep -qxE "tesselctl: cannot read the access list of $work/none: .+" "$work/err" || fail "text of the failure"
}

case_failures_name_the_service_or_the_file() {
  run 1 ipc send "$service" </dev/null
  grep -qxE "tesselctl: KTBNV0066E: Unable to connect to the service '$service'\. System text: .+" "$work/err" ||
    fail "text of the failure"
  run 1 ipc serve '' </dev/null
  grep -qxE "tesselctl: KTBNV0087E: Unable to create the pipe of the service ''\. System text: .+" "$work/err" ||
    fail "text of the failure"
  run 1 ipc send "$service" "$work/none"
  error_line "cannot open $work/none: No such file or directory"
}

row() { contains out "$(printf '%-31s%-20s%-9s' "$1" "$2" "$3")$4"; }

case_props_shows_known_keys_and_marks_the_others() {
  printf '# a comment\nagentQMgr=Q1\noutputLogFiles = 7\nmine=x y\nprocessControllerStatus=off\n' >"$work/agent.properties"
  run 0 props "$work/agent.properties"
  equal "standard error" "" "$(cat "$work/err")"
  equal "heading" "KEY                            VALUE               TYPE     DEFAULT  RANGE" "$(head -n 1 "$work/out")"
  equal "lines" 23 "$(wc -l <"$work/out")"
  equal "first key" "agentQMgr                      Q1                  string" "$(sed -n 2p "$work/out")"
  row agentQMgrRetryInterval '(default)' integer '30       0 to 2147483647'
  row outputLogFiles 7 integer '5        1 to 2147483647'
  row maxRestartDelay '(default)' integer '-1       -2147483648 to 2147483647'
  row processControllerStatus off boolean true
  equal "last line" "mine                           x y                 unknown" "$(tail -n 1 "$work/out")"
}

case_props_shows_single_keys() {
  printf 'traceSize=3\nmine=x\n' >"$work/agent.properties"
  run 0 props "$work/agent.properties" mine traceSize
  equal "lines" 3 "$(wc -l <"$work/out")"
  row traceSize 3 integer '20       1 to 2147483647'
  contains out "$(printf '%-31s%-20sunknown' mine x)"
  run 1 props "$work/agent.properties" traceSize yours
  error_line "$work/agent.properties: no such key: yours"
  row traceSize 3 integer '20       1 to 2147483647'
}

case_props_reports_wrong_values_and_missing_files() {
  printf 'agentQMgrRetryInterval=-1\ntraceSize=big\nqueueManagerStatus=perhaps\n' >"$work/agent.properties"
  run 1 props "$work/agent.properties"
  equal "errors" "KTBNV0119E KTBNV0118E KTBNV0120E" "$(grep -oE 'KTBNV[0-9]{4}E' "$work/err" | xargs)"
  error_line "$work/agent.properties: KTBNV0119E: The property 'agentQMgrRetryInterval' has the value '-1', which is not in the range from 0 to 2147483647."
  equal "lines" 22 "$(wc -l <"$work/out")"
  run 1 props "$work/none"
  contains err "tesselctl: KTBNV0122E: "
  run 2 props
  error_line "FILE is required"
}

# without_line_ends FILE: a log file as this system's tools read it.
without_line_ends() { tr -d '\r' <"$1"; }

case_both_ends_of_a_service_write_event_log_and_trace() {
  local logs=$work/logs
  serve --log-dir "$logs" --trace =FLOW --count 1
  run 0 ipc send "$service" --quiet --log-dir "$logs" --trace com.kelvo.tessel.nativ.IPCClientImpl <<<'abc'
  equal "reply" ABC "$(cat "$work/out")"
  server_ends 0 "requests: 1, clients: 1"
  equal "files" "output0.log output0.log.1 trace0.log trace0.log.1" "$(ls "$logs" | xargs)"
  equal "banner" "---------------- Start of event log ----------------" "$(without_line_ends "$logs/output0.log" | head -n 1)"
  without_line_ends "$logs/output0.log" | grep -qxF "command=ipc serve $service" || fail "property of the server"
  without_line_ends "$logs/output0.log.1" | grep -qxF "command=ipc send $service" || fail "property of the client"
  grep -qF "RAS           I KTBNV0018I: The trace specification '=FLOW' was applied." "$logs/output0.log" || fail "event"
  grep -qE ' com\.kelvo\.tessel\.nativ\.IPCServerImpl +.*  \{  connect ' "$logs/trace0.log" || fail "server's trace"
  grep -qE ' com\.kelvo\.tessel\.nativ\.IPCClientImpl +.*  \{  sendMessage ' "$logs/trace0.log.1" || fail "client's trace"
  ! grep -qF 'com.kelvo.tessel.nativ.IPCMessage ' "$logs/trace0.log.1" || fail "a class of the client that was not asked for"
}

case_the_properties_decide_about_the_log_files_and_the_trace() {
  local logs=$work/logs
  printf 'outputLogFiles=2\noutputLogSize=3\ntraceFiles=4\ntraceSize=6\ntrace==FLOW\n' >"$work/agent.properties"
  serve --log-dir "$logs" --properties "$work/agent.properties" --until-eof
  stop_serving
  server_ends 0 "requests: 0, clients: 0"
  equal "event log" "command=ipc serve $service outputLogFiles=2 outputLogSize=3 trace==FLOW" \
    "$(without_line_ends "$logs/output0.log" | sed -n 4,7p | xargs)"
  equal "trace" "command=ipc serve $service trace==FLOW traceFiles=4 traceSize=6" \
    "$(without_line_ends "$logs/trace0.log" | sed -n 7,10p | xargs)"
  serve --log-dir "$logs" --properties "$work/agent.properties" --trace =INFO --until-eof
  stop_serving
  server_ends 0 "requests: 0, clients: 0"
  contains logs/output0.log "trace==INFO"
}

case_options_of_the_diagnostics_that_cannot_be_used_are_errors() {
  run 2 ipc send "$service" --trace =ALL
  error_line "--trace requires --log-dir"
  run 2 ipc serve "$service" --properties "$work/none"
  error_line "--properties requires --log-dir"
  run 1 ipc serve "$service" --log-dir "$work/logs" --properties "$work/none"
  contains err "tesselctl: KTBNV0122E: "
  printf 'traceSize=0\n' >"$work/agent.properties"
  run 1 ipc send "$service" --log-dir "$work/logs" --properties "$work/agent.properties"
  contains err "tesselctl: KTBNV0119E: "
}

case_a_log_folder_that_cannot_be_made_is_reported_and_the_service_runs() {
  echo "in the way" >"$work/logs"
  serve --log-dir "$work/logs" --count 1
  run 0 ipc send "$service" <<<'abc'
  equal "reply" ABC "$(cat "$work/out")"
  server_ends 0 "requests: 1, clients: 1"
  contains server.err "KTBNV0126E: Unable to create the event log in directory '$work/logs'. Reason: KTBNV0051E: "
}

case_a_reader_that_leaves_ends_the_client_with_an_error() {
  local codes
  serve --until-eof
  seq 1 5000 >"$work/lines"
  tesselctl ipc send "$service" "$work/lines" 2>"$work/err" | head -n 1 >"$work/out" || codes="${PIPESTATUS[*]}"
  equal "exit codes" "1 0" "${codes:-none}"
  equal "first reply" 1 "$(cat "$work/out")"
  contains err "cannot write to standard output: "
  stop_serving
  wait "$server"
  server=
}

# $service does not exist: the text of the failure shows whether the catalogue was found.
case_the_catalogue_is_found_without_environment() {
  run 1 ipc send "$service" </dev/null
  contains err "tesselctl: KTBNV0066E: Unable to connect"
  mkdir -p "$work/installed/bin" "$work/installed/lib"
  cp "$folder/tesselctl.exe" "$folder/tesselnative.dll" "$work/installed/bin"
  cp -r resources/messages "$work/installed/lib"
  folder=$work/installed/bin
  run 1 ipc send "$service" </dev/null
  contains err "tesselctl: KTBNV0066E: Unable to connect"
}

case_a_missing_catalogue_of_the_language_is_an_error_not_a_wait() {
  LC_ALL=fr_FR.UTF-8 KTB_PROD=Z:$work run 1 ipc send "$service" </dev/null
  error_line "the message catalogue of the user's language is missing: Z:$work/lib/messages/KTBNVMessages_fr.properties"
  LC_ALL=fr_FR.UTF-8 run 0 --version
}

# Installations of the messaging client beside a product, made for the tests.
queue_managers() { printf 'Z:%s/queue-manager/%s/product' "$(cd "$folder/.." && pwd)" "$1"; }

case_a_queue_manager_is_connected_to_and_disconnected_from() {
  run 0 qm QM.one --root "$(queue_managers complete)"
  equal "output" "$(printf 'connect: completion code 0, reason 0\ndisconnect: completion code 0, reason 0')" "$(cat "$work/out")"
  KTB_PROD=$(queue_managers complete) run 0 qm QM.one
  NYX_PROD=$(queue_managers complete) run 0 qm QM.one
}

case_the_exit_code_of_qm_tells_the_step_that_failed() {
  run 3 qm QM.one --root "$(queue_managers nowhere)"
  contains err "tesselctl: KTBNV0151E: Unable to load the messaging client library '$(queue_managers nowhere)\..\bin64\omni'."
  run 3 qm QM.one --root "$(queue_managers without-disconnect)"
  contains err "tesselctl: KTBNV0153E: "
  TESSEL_QM_CONNECT=2,2059 run 4 qm QM.one --root "$(queue_managers complete)"
  equal "output" "connect: completion code 2, reason 2059" "$(cat "$work/out")"
  TESSEL_QM_CONNECT=-1,7 run 4 qm QM.one --root "$(queue_managers complete)"
  TESSEL_QM_DISCONNECT=2,7 run 5 qm QM.one --root "$(queue_managers complete)"
  equal "last line" "disconnect: completion code 2, reason 7" "$(tail -n 1 "$work/out")"
  run 2 qm
}

case_qm_gives_up_a_connection_that_was_made_with_a_warning() {
  export TESSEL_QM_LOG=Z:$work/calls
  TESSEL_QM_CONNECT=1,2002 TESSEL_QM_DISCONNECT=1,7 run 0 qm QM.one --root "$(queue_managers complete)"
  equal "output" "$(printf 'connect: completion code 1, reason 2002\ndisconnect: completion code 1, reason 7')" \
    "$(cat "$work/out")"
  equal "calls" "ZXCONN ZXDISC " "$(tr -d '\r' <"$work/calls" | cut -d ' ' -f 1 | tr '\n' ' ')"
  rm "$work/calls"
  TESSEL_QM_CONNECT=2,2059 run 4 qm QM.one --root "$(queue_managers complete)"
  equal "calls" "ZXCONN " "$(tr -d '\r' <"$work/calls" | cut -d ' ' -f 1 | tr '\n' ' ')"
  unset TESSEL_QM_LOG
}

case_qm_leaves_no_connection_behind_when_it_cannot_print() {
  local code=0
  export TESSEL_QM_LOG=Z:$work/calls
  tesselctl qm QM.one --root "$(queue_managers complete)" >/dev/full 2>"$work/err" || code=$?
  unset TESSEL_QM_LOG
  equal "exit code" 1 "$code"
  contains err "tesselctl: cannot write to standard output: "
  equal "calls" "ZXCONN ZXDISC " "$(tr -d '\r' <"$work/calls" | cut -d ' ' -f 1 | tr '\n' ' ')"
}

# The program of the tests of process launching.
child() { printf 'Z:%s/process_child.exe' "$(cd "$folder" && pwd)"; }

case_run_shows_which_stream_each_line_is_from() {
  run 0 run -- "$(child)" do-say "$(printf 'one\ntwo')" "$(printf 'three\n')"
  equal "output" "$(printf 'err: three\nout: one\nout: two')" "$(sort "$work/out")"
  equal "standard error" "" "$(cat "$work/err")"
}

case_run_passes_the_exit_code_on() {
  run 0 run -- "$(child)" do-exit 0
  run 7 run -- "$(child)" do-exit 7
}

case_run_looks_for_the_program_in_the_search_path() {
  mkdir "$work/path"
  cp "$folder/process_child.exe" "$work/path/Other.EXE"
  export WINEPATH=Z:$work/path
  run 3 run -- other do-exit 3
  run 4 run -- OTHER.EXE do-exit 4
  cp "$folder/process_child.exe" "$work/path/tool.v2.exe"
  run 5 run -- tool.v2 do-exit 5
  unset WINEPATH
  run 1 run -- other do-exit 3
}

case_run_gives_the_program_its_arguments_unchanged() {
  run 0 run -- "$(child)" 'C:\a b\' 'say "hi"' '' '"quoted"' 'a\"b' --dir
  local expected='' argument
  for argument in 'C:\a b\' 'say "hi"' '' '"quoted"' 'a\"b' --dir; do
    expected+=$(printf 'out: %s' "$(printf %s "$argument" | od -An -v -tx1 | tr -d ' \n')")$'\n'
  done
  equal "arguments" "$expected" "$(tail -n +2 "$work/out" | tr -d '\r')"$'\n'
}

case_run_forwards_its_input_byte_by_byte() {
  printf 'a\0b\r\n\377no line end' >"$work/given"
  run 0 run --tee "$work/tee" -- "$(child)" do-echo <"$work/given"
  printf 'out: a\0b\r\nout: \377no line end\n' >"$work/expected"
  equal "output" "$(bytes "$work/expected")" "$(bytes "$work/out")"
  equal "tee" "$(bytes "$work/expected")" "$(bytes "$work/tee")"
}

case_run_loses_nothing_of_much_output() {
  run 0 run -- "$(child)" do-write both 3000000
  equal "bytes" 6000000 "$(sed 's/^[a-z]*: //' "$work/out" | tr -d '\n' | wc -c)"
}

# 65536 bytes are the longest line.
case_run_cuts_a_long_line_and_adds_no_empty_one() {
  local length long
  for length in 65535 65536 65537 131072; do
    long=$(head -c "$length" /dev/zero | tr '\0' x)
    printf '%s\n\nnext\n' "$long" >"$work/given"
    run 0 run -- "$(child)" do-echo <"$work/given"
    { fold -w 65536 <<<"$long"; printf '\nnext\n'; } | sed 's/^/out: /' >"$work/expected"
    cmp "$work/expected" "$work/out" || fail "$length bytes"
  done
}

case_run_starts_the_program_in_a_directory() {
  mkdir "$work/inside"
  run 0 run --dir "Z:$work/inside" -- "$(child)" do-print-directory
  contains out inside
  run 1 run --dir "Z:$work/none" -- "$(child)" do-print-directory
  contains err "tesselctl: KTBNV0007E: Unable to start a process."
}

case_run_reports_what_it_cannot_start_or_write() {
  run 1 run -- no-such-program
  error_line "cannot find the program 'no-such-program' in the search path"
  : >"$work/script.bat"
  run 1 run -- "Z:$work/script.bat"
  contains err "is no .exe program"
  run 1 run --tee "$work/none/tee" -- "$(child)" do-exit 0
  error_line "cannot write $work/none/tee"
  run 2 run
  error_line "COMMAND is required"
}

case_run_stops_the_program_when_interrupted() {
  local line= code=0
  mkfifo "$work/lines"
  wine "$folder/tesselctl.exe" run -- "$(child)" do-sleep "$(printf 'ready\n ')" </dev/null >"$work/lines" 2>"$work/err" &
  server=$!
  exec 6<"$work/lines"
  read -r -t 60 line <&6 || true
  equal "first line" "out: ready" "$line"
  kill -INT "$server"
  wait "$server" || code=$?
  server=
  equal "exit code" 130 "$code"
  equal "last line" "out:  " "$(cat <&6)"
  exec 6<&-
}

# The example controller has the same way to end, with an event log besides.
case_the_controller_stops_its_program_when_interrupted() {
  local line= code=0
  : >"$work/properties"
  mkfifo "$work/lines" "$work/input"
  wine "$folder/controller.exe" "$work/properties" "$work/control" "$(child)" do-sleep "$(printf 'ready\n')" \
    <"$work/input" >"$work/lines" 2>"$work/err" &
  server=$!
  exec 7>"$work/input"
  exec 6<"$work/lines"
  read -r -t 60 line <&6 || true
  equal "first line" "ready" "$line"
  kill -INT "$server"
  wait "$server" || code=$?
  server=
  exec 6<&- 7>&-
  equal "exit code" 0 "$code"
  grep -q 'I Stopped process [0-9]' "$work/control/event0.log" || fail "the event log has no stop"
  grep -q 'I The controller ends' "$work/control/event0.log" || fail "the event log has no end"
}

case_run_ends_its_programs_input_when_its_own_pipe_ends() {
  printf 'piped' | run 0 run -- "$(child)" do-echo
  equal "output" "out: piped" "$(cat "$work/out")"
}

# The host sees the last byte only.
case_run_passes_exit_codes_beyond_a_byte_on() {
  local tool
  tool=$(child | sed 's/process_child/tesselctl/' | tr / '\\')
  timeout -k 5 60 wine cmd /c "$tool run -- $(child) do-exit 70000 & if errorlevel 70000 echo reached & if errorlevel 70001 echo exceeded" \
    </dev/null >"$work/out" 2>"$work/err" || true
  equal "levels" "reached" "$(tr -d ' \r' <"$work/out")"
}

case_run_waits_for_a_grandchild_that_holds_the_streams() {
  local line= code=0 event=tesselctl-held-$$
  mkfifo "$work/lines"
  wine "$folder/tesselctl.exe" run -- "$(child)" do-leave do-hold "$event line" </dev/null >"$work/lines" 2>"$work/err" &
  server=$!
  exec 6<"$work/lines"
  read -r -t 60 line <&6 || { wait "$server" || code=$?; server=; fail "no line, exit code $code"; }
  equal "first line" "out: grandchild" "$line"
  timeout -k 5 60 wine "$(child)" do-set "$event" 6>&- || fail "the event"
  wait "$server" || code=$?
  server=
  exec 6<&-
  equal "exit code" 5 "$code"
}

case_run_does_not_wait_for_a_grandchild_when_interrupted() {
  local line= code=0 event=tesselctl-left-$$
  mkfifo "$work/lines"
  wine "$folder/tesselctl.exe" run -- "$(child)" do-leave do-hold "$event line" </dev/null >"$work/lines" 2>"$work/err" &
  server=$!
  exec 6<"$work/lines"
  read -r -t 60 line <&6 || true
  equal "first line" "out: grandchild" "$line"
  kill -INT "$server"
  wait "$server" || code=$?
  server=
  exec 6<&-
  timeout -k 5 60 wine "$(child)" do-set "$event" || fail "the event"
  equal "exit code" 130 "$code"
}

case_run_stops_the_program_when_the_tee_file_is_full() {
  run 1 run --tee Z:/dev/full -- "$(child)" do-sleep "$(printf 'x\n ')"
  error_line "cannot write Z:/dev/full"
}

case_run_stops_the_program_when_its_output_cannot_be_written() {
  local code=0
  tesselctl run -- "$(child)" do-write out 100000000 </dev/null 2>"$work/err" | head -c 100 >"$work/out" || code=$?
  [ "$code" != 0 ] || fail "exit code 0"
  contains err "tesselctl: cannot write to standard output"
}

# Each case has a lock file of its own; the command is the tool itself or the system's shell.
case_lock_passes_the_exit_code_of_its_command_on() {
  run 0 lock "$work/a.lck" -- cmd /c exit 0
  run 7 lock "$work/a.lck" -- cmd /c exit 7
  run 0 lock "$work/a.lck" -- "$folder/tesselctl.exe" --version
  contains out "build level"
  equal "standard error" "" "$(cat "$work/err")"
}

case_lock_excludes_other_holders_while_the_command_runs() {
  local again=("$folder/tesselctl.exe" lock "$work/a.lck")
  run 75 lock "$work/a.lck" -- "${again[@]}" -- cmd /c exit 0
  error_line "the lock '$work/a.lck' is held already"
  run 75 lock "$work/a.lck" -- "${again[@]}" --shared -- cmd /c exit 0
  run 75 lock "$work/a.lck" --shared -- "${again[@]}" -- cmd /c exit 0
  run 5 lock "$work/a.lck" --shared -- "${again[@]}" --shared -- cmd /c exit 5
  run 0 lock "$work/a.lck" -- cmd /c exit 0
}

case_lock_shows_the_process_that_holds_it() {
  run 75 lock "$work/a.lck" --pid -- "$folder/tesselctl.exe" lock "$work/a.lck" -- cmd /c exit 0
  grep -qxE "tesselctl: the lock '$work/a.lck' is held already, by process [0-9]+" "$work/err" || fail "text"
  equal "files left" "a.lck" "$(cd "$work" && ls -- *.lck *.pid 2>/dev/null)"
}

case_lock_hands_the_arguments_on_as_they_are() {
  run 1 lock "$work/a.lck" -- "$folder/tesselctl.exe" lock 'none/a "b" c\\' -- 'x y'
  contains err "KTBNV0057E: Unable to lock the file 'none/a \"b\" c\\\\'. "
  run 2 lock "$work/a.lck" -- "$folder/tesselctl.exe" ipc send name '' 'other one'
  error_line "The following argument was not expected: other one"
}

case_lock_reports_what_it_cannot_lock_or_start() {
  run 1 lock "$work/none/a.lck" -- cmd /c exit 0
  contains err "tesselctl: KTBNV0057E: Unable to lock the file '$work/none/a.lck'. System text: "
  run 1 lock "$work/a.lck" --pid -- no-such-program
  contains err "tesselctl: cannot start 'no-such-program': "
  equal "files left" "a.lck" "$(cd "$work" && ls -- *.lck *.pid 2>/dev/null)"
  run 2 lock "$work/a.lck"
  error_line "COMMAND is required"
  run 2 lock "$work/a.lck" --shared --pid -- cmd
  contains err "excludes"
}

case_progress_is_drawn_on_a_terminal_only() {
  serve --until-eof
  seq 1 200 >"$work/lines"
  script -qec "wine '$folder/tesselctl.exe' ipc send '$service' '$work/lines' >'$work/out'" /dev/null \
    </dev/null 8>&- | sed 's/\x1b\[[?0-9;]*[A-Za-z]//g' | tr '\r' '\n' >"$work/err"
  # A terminal may be sent a movement of the cursor for a blank.
  tr -d ' ' <"$work/err" | grep -qxF '[........................................]0%1requests' || fail "first bar"
  contains err "requests: 200, failures: 0"
  equal "replies" "$(cat "$work/lines")" "$(cat "$work/out")"
  run 0 ipc send "$service" "$work/lines"
  lacks err "["
  stop_serving
  server_ends 0 "requests: 400, clients: 2"
}

# Sample traces: three generations of one process with damage, and the file of a second one.
samples=tests/tool/data/trace

case_trace_view_prints_the_calls_of_each_thread() {
  run 0 trace view "$samples/trace%g.log" "$samples/trace0.log.1"
  diff -u "$samples/expected.txt" "$work/out" || fail "the printed tree"
  equal "summary" "$(cat "$samples/expected-summary.txt")" "$(cat "$work/err")"
}

case_trace_view_puts_named_generations_in_order() {
  run 0 trace view "$samples/trace%g.log"
  cp "$work/out" "$work/all"
  run 0 trace view "$samples"/trace{0,1,2}.log
  cmp "$work/all" "$work/out" || fail "another order of the files"
}

case_trace_view_shows_one_thread_or_class() {
  run 0 trace view "$samples/trace%g.log" --thread 10c
  equal "headings" "thread 000000000000010c, process 264 of trace%g.log" "$(grep ^thread "$work/out")"
  equal "lines" 7 "$(wc -l <"$work/out")"
  run 0 trace view "$samples/trace%g.log" --thread 0x000000000000010c --class NYXUtils
  equal "tree" "thread 000000000000010c, process 264 of trace%g.log
14:03:07.000.0D  IPCClientRunnable@64f130.run  *** open at the end
14:03:08.000.00  | IPCServerImpl@64f170.onMessage [hello é€ \\xff\\xfe raw]
14:03:08.000.02  | | NYXUtils.getLastErrorMessage  *** exit missing" "$(cat "$work/out")"
  run 0 trace view "$samples/trace%g.log" --class com.kelvo.tessel.nativ.NYXUtils
  equal "threads" 2 "$(grep -c ^thread "$work/out")"
  run 0 trace view "$samples/trace%g.log" --class Utils
  equal "standard output" "" "$(cat "$work/out")"
}

case_trace_view_writes_trace_events() {
  run 0 trace view "$samples/trace%g.log" "$samples/trace0.log.1" --perfetto "$work/events.json"
  equal "standard output" "" "$(cat "$work/out")"
  python3 - "$work/events.json" >"$work/out" <<'END' || fail "the trace events"
import collections, json, sys
events = json.load(open(sys.argv[1], encoding="utf-8"))["traceEvents"]
threads = collections.defaultdict(list)
for event in events:
    if "ts" in event:
        threads[event["pid"], event["tid"]].append(event)
for thread, list in threads.items():
    times = [event["ts"] for event in list]
    assert all(a < b for a, b in zip(times, times[1:])), thread
    phases = [event["ph"] for event in list]
    assert phases.count("B") == phases.count("E"), thread
    print(*thread, len(list), phases.count("B"), list[0]["ts"])
END
  equal "threads" "1 264 54 24 50587000000
1 268 11 5 50587000013
2 500 27 12 50589000006
3 524 13 6 50587000000" "$(cat "$work/out")"
}

case_trace_view_writes_a_page_that_works_in_a_browser() {
  run 0 trace view "$samples/trace%g.log" "$samples/trace0.log.1" --html "$work/trace.html"
  equal "standard output" "" "$(cat "$work/out")"
  : >"$work/empty"
  run 0 trace view "$work/empty" --html "$work/empty.html"
  timeout -k 5 120 tests/tool/look_at_page.py "$work"/{trace,empty}.html "${TESSEL_PICTURES:-$work}" \
    >"$work/out" 2>"$work/err" || fail "the page"
}

case_trace_view_passes_over_what_is_no_trace() {
  run 0 trace view "$folder/tesselnative.dll"
  equal "standard output" "" "$(cat "$work/out")"
  grep -qE '^files: 1, records: 0, banner lines: 0, damaged lines: [1-9][0-9]*$' "$work/err" || fail "summary"
  : >"$work/empty"
  run 0 trace view "$work/empty"
  contains err "files: 1, records: 0, banner lines: 0, damaged lines: 0"
}

case_trace_view_reports_files_it_cannot_read_or_write() {
  run 1 trace view "$work/none"
  error_line "cannot open $work/none: No such file or directory"
  run 1 trace view "$work/none%g.log"
  error_line "no file matches $work/none%g.log"
  run 1 trace view "$samples/trace0.log" --html "$work/none/page.html"
  error_line "cannot write $work/none/page.html: No such file or directory"
  run 2 trace view
  error_line "FILE is required"
  run 2 trace view "$samples/trace0.log" --thread 10g
  error_line "--thread: 10g is no thread number as the trace shows it"
}

for file in tests/tool/cases/*.sh; do source "$file"; done
for current in "$@"; do
  service=tesselctl-$$-$current
  "case_$current"
done

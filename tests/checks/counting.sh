# shellcheck shell=sh
# Running GoogleTest programs and checks, and adding up what they say. ./test and its rows source this after
# setting $root. Logs are kept in build/test-logs.

: "${root:?}"

passed=0
failed=0
skipped=0
restarts=0
logs=$root/build/test-logs
jobs_folder=$logs/jobs

# Rows write to one terminal, and what one says at a time stays together.
say() {
  said=$(cat)
  printf '%s\n' "$said" | flock "$logs" cat
}

# wait_for_code FILE PROCESS: what the process writes there last, or 125 when it ended without.
wait_for_code() {
  while [ ! -e "$1" ] && kill -0 "$2" 2>/dev/null; do
    sleep 0.1
  done
  cat "$1" 2>/dev/null || echo 125
}

# Waits for a job of tests/checks/jobs.sh and leaves its exit code in $job_code. Not within $(): while the shell reads
# that, it neither sees that the process has ended nor hears a signal.
await_job() {
  wait_for_code "$jobs_folder/$1.code" "$(cat "$jobs_folder/process")" >/dev/null
  job_code=$(cat "$jobs_folder/$1.code" 2>/dev/null || echo 125)
}

# A check is one test: its output is shown only when it fails. check NAME COMMAND...
check() {
  check_name=$1
  check_log=$logs/check-$(echo "$check_name" | tr ' /' '--').log
  shift
  if "$@" >"$check_log" 2>&1; then
    passed=$((passed + 1))
    echo "ok      $check_name" | say
  else
    failed=$((failed + 1))
    { echo "FAILED  $check_name (${check_log#"$root"/})" && tail -n 40 "$check_log"; } | say
  fi
}

# What this machine cannot do is no pass. skip NAME REASON
skip() {
  skipped=$((skipped + 1))
  echo "skipped $1: $2"
}

# The number after "KEY": in the totals, which come first in GoogleTest's report.
report_total() {
  sed -n "s/^ *\"$1\": *\\([0-9][0-9]*\\),*\\r*\$/\\1/p" "$2" | head -n 1
}

# A program that ended before its report counts what it had finished, and one failure for the end.
count_unfinished() {
  tr -d '\r' <"$1" >"$1.text"
  run_passed=$(grep -c '^\[       OK \] ' "$1.text" || true)
  run_failed=$(($(grep -c '^\[  FAILED  \] .* ms)$' "$1.text" || true) + 1))
  run_skipped=$(grep -c '^\[  SKIPPED \] .* ms)$' "$1.text" || true)
  rm -f "$1.text"
}

# A skipped or disabled case is never a pass.
count_report() {
  run_failed=$(report_total failures "$1")
  run_skipped=$(($(grep -c '"result": "SKIPPED"' "$1" || true) + $(report_total disabled "$1")))
  run_passed=$(($(report_total tests "$1") - run_failed - run_skipped))
}

# What went wrong beyond the cases' own verdicts: a leak found at the end, a program without cases, one
# that wrote its report and never ended.
count_exit_code() {
  case $2 in
    0) [ $((run_passed + run_failed + run_skipped)) -eq 0 ] || return 0 ;;
    124 | 137) echo "        ended by its time limit" >>"$1" ;;
  esac
  if [ "$run_failed" -eq 0 ]; then
    run_failed=1
  fi
}

# What a log says about its failures, so that the terminal alone explains them: the messages of each case
# with the lines that follow them, and the case's name. One case does not crowd out the others.
show_failures() {
  tr -d '\r' <"$1" | awk '
    function show(text) { if (++shown <= 100) print substr(text, 1, 400) }
    /^\[ RUN      \]/ { messages = 0 }
    /^\[[- =A-Z0-9]*\]/ { more = 0 }
    /^\[  FAILED  \] .* ms\)$/ { show($0) }
    /: Failure$|runtime error:|ERROR: |WARNING: ThreadSanitizer|terminate called/ { more = ++messages <= 3 ? 12 : 0 }
    more > 0 { more--; show($0) }
    END { if (shown > 100) print "        and " shown - 100 " more lines in the log" }'
  echo "        last lines:"
  tail -n 8 "$1" | sed 's/^/        /'
}

# Adds the counts of a program that run_program.sh has run. count_program NAME LABEL
count_program() {
  run_name=$1
  run_log=$logs/$2.log
  code=$(cat "$logs/$2.code" 2>/dev/null || echo 125)
  if [ -s "$logs/$2.json" ]; then
    count_report "$logs/$2.json"
  else
    count_unfinished "$run_log"
  fi
  count_exit_code "$run_log" "$code"
  passed=$((passed + run_passed))
  failed=$((failed + run_failed))
  skipped=$((skipped + run_skipped))
  run_restarts=$(grep -c '^started again: ' "$run_log" || true)
  restarts=$((restarts + run_restarts))
  if [ "$run_failed" -eq 0 ]; then
    echo "ok      $run_name: $run_passed cases$(notes)" | say
  else
    {
      echo "FAILED  $run_name: $run_failed of $((run_passed + run_failed)) cases, exit code $code$(notes) (${run_log#"$root"/})"
      show_failures "$run_log"
    } | say
  fi
}

# What a test says with a line "started again: WHAT": a program that it needs did not start at once.
notes() {
  if [ "$run_skipped" -ne 0 ]; then
    printf ', %s skipped' "$run_skipped"
  fi
  if [ "$run_restarts" -ne 0 ]; then
    printf ', %s starts that failed and were tried again' "$run_restarts"
  fi
}

closing_line() {
  if [ "$restarts" -ne 0 ]; then
    echo "$restarts starts failed and were tried again"
  fi
  if [ "$skipped" -ne 0 ]; then
    echo "$passed passed, $failed failed, $skipped skipped"
  else
    echo "$passed passed, $failed failed"
  fi
}

#!/usr/bin/env bash
# The reliability checks, in this order, each under a time limit of its own:
#
#   gc-stress   the test suite with a full garbage collection at every allocation
#   sanitizers  the suite and reliability/session.rb with both extensions
#               built with AddressSanitizer and UndefinedBehaviorSanitizer
#   memcheck    reliability/session.rb under valgrind: blocks definitely
#               lost whose allocation passed through this project's code
#   fuzz        reliability/fuzz.rb, which also counts what the toolkit prints
#   soak        reliability/soak.rb
#
#   scripts/check-reliability.sh [--short]
#
# Prints one summary line per part and exits non-zero if any part fails. The
# full form runs fuzz for 100000 steps and soak for 5000 cycles; --short runs
# small sizes, a few minutes in all on two cores. Logs go to
# build-reliability/short/ or build-reliability/full/, the instrumented builds
# to build-asan/ and build-memcheck/; build/ is only brought up to date, as
# `make build` does.
set -uo pipefail
shopt -s nullglob
cd "$(dirname "$0")/.."
root=$PWD
ruby=${RUBY:-ruby}

short=0
case "${1:-}" in
  --short) short=1 ;;
  "") ;;
  *) echo "usage: $0 [--short]" >&2; exit 2 ;;
esac

# Sizes and time limits (seconds) of each part. GC stress is on only while
# each test's setup, body and teardown run (reliability/gc_stress.rb): every
# call the tests make into the extensions is covered, while a suite loaded
# under stress (rbs among it) had not even started after 20 minutes.
if ((short)); then
  # The files whose tests reach the binding's Ruby objects most: observers and
  # payloads, the method table, the text table, the OK report, past regressions;
  # and the desktop's, whose real keys, clicks and window manager are the newest
  # ways in, and whose tests must not depend on their own pace.
  gc_files="test/test_observers.rb test/test_script_class.rb test/test_text_table.rb
            test/test_ok_report.rb test/test_closing.rb test/test_regressions.rb
            test/test_keyboard.rb test/test_window_manager.rb test/test_real_input.rb
            test/test_desktop_input.rb"
  gc_limit=1200
  session_cycles=20 sanitizers_limit=900
  memcheck_cycles=30 memcheck_limit=900
  fuzz_steps=1000 fuzz_limit=600
  soak_cycles=100 soak_limit=600
else
  gc_files="test/test_*.rb"
  gc_limit=3600
  session_cycles=300 sanitizers_limit=1800
  memcheck_cycles=300 memcheck_limit=3600
  fuzz_steps=100000 fuzz_limit=5400
  soak_cycles=5000 soak_limit=3600
fi

# Each form keeps its logs apart, and a second run of the same form waits for
# the first: they would write the same logs and rebuild the same directories.
logs=$root/build-reliability/$( ((short)) && echo short || echo full)
mkdir -p "$logs"
exec 9>"$logs.lock"
if ! flock -n 9; then
  echo "reliability: waiting for the other run of this form to end" >&2
  flock 9
fi
failed=0
started=$SECONDS

# summary LINE OK: prints the part's line; a failed part also points at its log.
summary() {
  echo "$1"
  if [[ $2 != ok ]]; then
    failed=1
    echo "  ($2; see $3)" >&2
    tail -n 20 "$3" | sed 's/^/  | /' >&2
  fi
}

# timed LIMIT LOG COMMAND...: runs the command with its output in LOG; returns its status.
# In the background, so that a signal to this script reaches the command too.
child=""
trap '[[ -n $child ]] && kill -TERM "$child" 2>/dev/null; exit 130' INT TERM
timed() {
  local limit=$1 log=$2
  shift 2
  timeout --kill-after=30 "$limit" "$@" >"$log" 2>&1 &
  child=$!
  wait "$child"
  local rc=$?
  child=""
  return $rc
}

status_text() {
  case $1 in
    0) echo ok ;;
    124 | 137) echo "timed out after $2 s" ;;
    *) echo "exit status $1" ;;
  esac
}

# suite LIMIT LOG BUILD FILES [ENV...]: the suite's own command (see the
# Makefile) over the given files, with the extensions of BUILD and the variables.
suite() {
  local limit=$1 log=$2 build=$3 files=$4
  shift 4
  timed "$limit" "$log" scripts/with-display.sh env BUILD_DIR="$build" "$@" "$ruby" -I "$build" -I test \
    -e 'ARGV.shift.split.flat_map { |g| Dir[g] }.sort.uniq.each { |f| require File.expand_path(f) }' \
    "$files"
}

# "F E N" from minitest's last summary line: failures, errors, runs.
suite_counts() {
  sed -n 's/^\([0-9]*\) runs, [0-9]* assertions, \([0-9]*\) failures, \([0-9]*\) errors.*/\2 \3 \1/p' "$1" |
    tail -n 1
}

if ! make --no-print-directory -s build >"$logs/build.log" 2>&1; then
  echo "reliability: make build failed; see $logs/build.log" >&2
  tail -n 20 "$logs/build.log" >&2
  exit 2
fi

# ---- 1. GC stress -----------------------------------------------------------
t=$SECONDS
log=$logs/gc-stress.log
suite "$gc_limit" "$log" build "$gc_files" RUBYOPT="-r$root/reliability/gc_stress"
rc=$?
read -r f e n <<<"$(suite_counts "$log")"
what="stressed while each test runs"
if [[ -z ${n:-} ]]; then
  summary "gc-stress: no result ($what)" "$(status_text $rc "$gc_limit")" "$log"
else
  verdict=$(status_text $rc "$gc_limit")
  [[ $verdict == ok && $((f + e)) -ne 0 ]] && verdict="test failures"
  summary "gc-stress: $((f + e)) failures ($n tests, $what, $((SECONDS - t)) s)" "$verdict" "$log"
fi
unset f e n

# ---- 2. AddressSanitizer + UndefinedBehaviorSanitizer ------------------------
t=$SECONDS
log=$logs/sanitizers.log
: >"$log"
reports=$logs/sanitizers
rm -rf "$reports"
mkdir -p "$reports"
asan_runtime=$(clang -print-file-name=libclang_rt.asan-x86_64.so)
# use_sigaltstack=0 and detect_leaks=0: see reliability/asan.supp.
asan_options="detect_leaks=0:use_sigaltstack=0:log_path=$reports/report"
asan_options+=":suppressions=$root/reliability/asan.supp"
ubsan_options="print_stacktrace=1:log_path=$reports/report"
ubsan_options+=":suppressions=$root/reliability/ubsan.supp"
sanitized=("LD_PRELOAD=$asan_runtime" "ASAN_OPTIONS=$asan_options" "UBSAN_OPTIONS=$ubsan_options")
{
  flock "$root/build-reliability/build.lock" \
    cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DOPTIONS_PANEL_SANITIZE=ON >/dev/null &&
    flock "$root/build-reliability/build.lock" \
      timeout 900 cmake --build build-asan -j2 -- --no-print-directory >"$logs/build-asan.log" 2>&1
} || { echo "build-asan failed; see $logs/build-asan.log" >"$log"; }
if [[ ! -s $log ]]; then
  suite "$sanitizers_limit" "$log" build-asan "test/test_*.rb" "${sanitized[@]}"
  rc=$?
  session_log=$logs/sanitizers-session.log
  timed "$sanitizers_limit" "$session_log" scripts/with-display.sh env "${sanitized[@]}" \
    "$ruby" -I build-asan reliability/session.rb --cycles "$session_cycles"
  session_rc=$?
  cat "$session_log" >>"$log"
else
  rc=1 session_rc=1
fi
read -r f e n <<<"$(suite_counts "$log")"
read -r in_project elsewhere <<<"$("$ruby" reliability/sanitizer-count.rb "$root" \
  "$reports"/report.* /dev/null)"
verdict=$(status_text $rc "$sanitizers_limit")
[[ $verdict == ok ]] && verdict=$(status_text $session_rc "$sanitizers_limit")
grep -q "^session: $session_cycles cycles" "$log" || [[ $verdict != ok ]] || verdict="session did not finish"
[[ $verdict == ok && $((${f:-1} + ${e:-0})) -ne 0 ]] && verdict="test failures"
[[ $verdict == ok && $((in_project + elsewhere)) -ne 0 ]] && verdict="reports in $reports"
line="sanitizers: $in_project reports in project code ($elsewhere elsewhere; ${n:-?} tests,"
line+=" $((${f:-0} + ${e:-0})) failures; session of $session_cycles cycles; $((SECONDS - t)) s)"
summary "$line" "$verdict" "$log"
unset f e n

# ---- 3. valgrind memcheck ----------------------------------------------------
t=$SECONDS
log=$logs/memcheck.log
: >"$log"
vglogs=$logs/memcheck
rm -rf "$vglogs"
mkdir -p "$vglogs"
# valgrind 3.19 cannot read the DWARF 5 that clang 14 writes by default.
{
  flock "$root/build-reliability/build.lock" \
    cmake -S . -B build-memcheck -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS=-gdwarf-4 -DCMAKE_OBJCXX_FLAGS=-gdwarf-4 >/dev/null &&
    flock "$root/build-reliability/build.lock" \
      timeout 900 cmake --build build-memcheck -j2 --target OptionsPanel OptionsPanelDriver \
      -- --no-print-directory >"$logs/build-memcheck.log" 2>&1
} || { echo "build-memcheck failed; see $logs/build-memcheck.log" >"$log"; }
if [[ ! -s $log ]]; then
  # --keep-debuginfo: libraries unloaded before the leak check keep their names.
  # --run-libc-freeres=no: glibc's clean-up after exit runs into a lazily bound
  # symbol of libGLX that the toolkit's back-end loaded, and ends the process.
  # --undef-value-errors=no: Ruby's conservative GC reads uninitialised stack by
  # design; only the leak check is counted here, and it needs none of that.
  timed "$memcheck_limit" "$log" scripts/with-display.sh \
    valgrind --tool=memcheck --leak-check=full --show-leak-kinds=definite \
    --errors-for-leak-kinds=definite --undef-value-errors=no --num-callers=50 \
    --keep-debuginfo=yes --run-libc-freeres=no --fullpath-after= \
    --suppressions="$root/reliability/memcheck.supp" \
    --log-file="$vglogs/valgrind.%p.log" \
    "$ruby" -I build-memcheck reliability/session.rb --cycles "$memcheck_cycles"
  rc=$?
else
  rc=1
fi
blocks=$("$ruby" reliability/memcheck-count.rb "$root" "$vglogs"/valgrind.*.log /dev/null)
all=$(cat "$vglogs"/valgrind.*.log 2>/dev/null | sed -n 's/.*definitely lost: [0-9,]* bytes in \([0-9,]*\) blocks.*/\1/p' |
  tr -d , | awk '{ s += $1 } END { print s + 0 }')
verdict=$(status_text $rc "$memcheck_limit")
grep -q "^session: $memcheck_cycles cycles" "$log" || [[ $verdict != ok ]] || verdict="session did not finish"
[[ $verdict == ok && $blocks -ne 0 ]] && verdict="leaks; reliability/memcheck-count.rb --show lists them"
line="memcheck: $blocks definitely lost blocks in project code ($((all - blocks)) elsewhere;"
line+=" session of $memcheck_cycles cycles; $((SECONDS - t)) s)"
summary "$line" "$verdict" "$log"

# ---- 4 and 5. fuzz and soak --------------------------------------------------
# program NAME ARGUMENT COUNT LIMIT PATTERN [host]: runs reliability/NAME.rb,
# in plain ruby or in the reference host, and passes on its last line, which
# must match PATTERN.
program() {
  local name=$1 argument=$2 count=$3 limit=$4 pattern=$5
  local log=$logs/$name.log t=$SECONDS
  local run=("$ruby" -I build "reliability/$name.rb" "$argument" "$count")
  [[ ${6:-} == host ]] &&
    run=(build/velmar-host --timeout "$limit" "reliability/$name.rb" -- "$argument" "$count")
  if [[ ! -f reliability/$name.rb ]]; then
    echo "reliability/$name.rb is missing" >"$log"
    summary "$name: not run" "missing" "$log"
    return
  fi
  timed "$limit" "$log" scripts/with-display.sh "${run[@]}"
  local rc=$? last
  last=$(grep "^$name: " "$log" | tail -n 1)
  local verdict
  verdict=$(status_text $rc "$limit")
  [[ $verdict == ok && ! $last =~ $pattern ]] && verdict="unexpected result"
  summary "${last:-$name: no result} ($((SECONDS - t)) s)" "$verdict" "$log"
}
program fuzz --steps "$fuzz_steps" "$fuzz_limit" "^fuzz: $fuzz_steps steps, 0 failures, 0 toolkit lines$"
program soak --cycles "$soak_cycles" "$soak_limit" \
  "^soak: $soak_cycles cycles, grew -?[0-9]+ KiB, 0 modes with more timers, 0 toolkit warnings$" host

elapsed=$((SECONDS - started))
if ((failed)); then
  echo "reliability: FAILED ($((elapsed / 60)) min $((elapsed % 60)) s)"
  exit 1
fi
echo "reliability: all five parts passed ($((elapsed / 60)) min $((elapsed % 60)) s)"

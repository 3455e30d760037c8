#!/usr/bin/env bash
# gpu_check.sh <fake_tests> <gpu-check>
#
# Checks that scripts/gpu-check fails if a test fails or is skipped, runs each test of a call again in its own
# process, and excludes death tests from the sanitizer. All programs that it runs here are fakes.
set -euo pipefail
program=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir -p "$folder"/{bin,scripts,build/cuda/tests}
cp "$2" "$folder/scripts/gpu-check"
for name in unit_tests gateway_tests; do ln -s "$program" "$folder/build/cuda/tests/$name"; done

command_that() { # <file> <does this>
  printf '#!/bin/bash\n%s\n' "$2" >"$folder/$1"
  chmod +x "$folder/$1"
}
for name in bin/cmake bin/nvcc bin/nvidia-smi scripts/bench-run; do command_that "$name" 'exit 0'; done
# shellcheck disable=SC2016 # the command's own arguments
command_that bin/compute-sanitizer \
  'until [[ -x $1 ]]; do shift; done; if UNDER_SANITIZER=1 "$@"; then exit 0; fi; exit 1'

export PATH=$folder/bin:$PATH LOG=$folder/log
status=0
expect() { # <exit status> <text of the answer> <variable to set>...
  local answer code=0
  answer=$(env "${@:3}" "$folder/scripts/gpu-check" 2>&1) || code=$?
  if [[ $code != "$1" || $answer != *"$2"* ]]; then
    printf '%s\nFAILED: %s with status %s, without "%s" and %s\n' "$answer" "${*:3}" "$code" "$2" "$1"
    status=1
  fi
}

expect 0 "unit_tests"
# Every process that ran a single test.
alone=$(sort "$LOG" | uniq -c | awk '$1 == 1' | wc -l)
if ((alone != 4)); then echo "FAILED: $alone of 4 tests were run alone"; status=1; fi
expect 1 "FakeTest.Fails" FAILS=1
expect 1 "FakeTest.NeedsADevice" NO_DEVICE=1
exit $status

#!/usr/bin/env bash
# deviceless.sh <unit_tests> <gateway_tests> <module>, unit_tests and module without a device
#
# Checks that every test that needs the device fails if the device does not start, and that none is skipped.
set -euo pipefail
unit_tests=$1 gateway_tests=$2
export PISTONFIELD_GATEWAY_MODULE=$3

log=$(mktemp)
trap 'rm -f "$log"' EXIT
fails() { # <how many at least> <gtest executable> <filter>
  local status=0 failed
  "$2" --gtest_filter="$3" >"$log" 2>&1 || status=$?
  failed=$(grep -c "the emulation device does not start" "$log") || true
  if ((status != 1 || failed < $1)) || grep "SKIPPED \]" "$log" | grep -vE "SecondQuotientTest|listed below"; then
    echo "$(basename "$2"): status $status, $failed tests failed for want of a device"
    tail -n 30 "$log"
    exit 1
  fi
}

# But for what takes long and needs none.
fails 150 "$unit_tests" "-GaussLegendre*:Cpu*:*PackedPressure*:AccuracyTest*:SpreadTest*:HalfPhase*:NodeSum*:SineCosine*"
# But for what makes the device fail itself.
fails 50 "$gateway_tests" "-FirstCallTest*"
if grep "OK \]" "$log"; then
  echo "a call of the gateway needs a device"
  exit 1
fi

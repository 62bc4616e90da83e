#!/usr/bin/env bash
# Has a program stmdcm write a host, and runs every command of that host's page as it stands. Where the package is found the
# caller says: CMAKE_PREFIX_PATH, PKG_CONFIG_PATH.
# Usage: new-host.sh STMDCM WORK-DIRECTORY
set -euo pipefail
stmdcm=$1 work=$2
export HOME=$work CXXFLAGS="-Wall -Wextra -Wpedantic -Werror"
unset ZU_TRACE_LOGGING ZU_TRACE_SETTINGS_DIR

"$stmdcm" new-host "$work/my_host"
cd "$work/my_host"
commands=$(sed -n 's/^    //p' README.md)
[[ $commands == *cmake*ctest*g++*change* ]] || { echo "the page of the new host has lost its commands"; exit 1; }
bash -euo pipefail -c "$commands" >"$work/new-host.log" 2>&1 || { cat "$work/new-host.log"; exit 1; }
grep -q '^100% tests passed, 0 tests failed out of 3$' "$work/new-host.log"
grep -q '^changed.tdf: saved, with 8 pins$' "$work/new-host.log"
"$stmdcm" show changed.tdf | grep -q 'STM_DTC_target_pins *8 '
# What is there is not replaced.
cp changed.tdf kept.tdf
! ./my_host "$(pkg-config --variable=plugin stmdcm)" change changed.tdf changed.tdf >"$work/new-host.log" 2>&1
grep -q 'changed.tdf can.t be made: File exists' "$work/new-host.log"
cmp changed.tdf kept.tdf
# A failure says where the log is, and the log why.
if failed=$(./my_host "$(pkg-config --variable=plugin stmdcm)" live Core_0/Cluster 2>&1); then
    echo "a live load without a target succeeds"
    exit 1
fi
log=$(sed -n 's/.*; why, as far as it is known, stands in //p' <<<"$failed")
grep -q 'libTraceFactory.so: cannot open shared object file' "$log"

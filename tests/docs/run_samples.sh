#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Samples of documents that are no test's alone, run as they stand there: run_samples.sh SOURCES BUILD CMAKE.
# The commands run in a folder of the build tree that looks like the repository, with BUILD as build/dev.
set -euo pipefail

sources=$1 build=$2 cmake=$3
work=$(mktemp -d "$PWD/samples.XXXXXX")
trap 'rm -rf "$work"' EXIT

fail() {
  echo "FAILED: $1" >&2
  tail -n 20 "$work"/out* >&2 2>/dev/null
  exit 1
}
sample() { python3 -B "$sources/tests/docs/samples.py" "$sources" --print "$@"; }

cd "$work"
mkdir -p bin build
ln -s "$sources/scripts" "$sources/tests" .
ln -s "$build" build/dev
for tool in orblog orbdiag orbd-sim; do ln -s "$build/tools/$tool/$tool" bin/; done
ln -s "$build/examples/all_services" bin/
export PATH=$work/bin:$PATH

echo "keys"
eval "$(sample docs/encrypted-logs.md 'orblog keygen')" >out 2>&1 || fail "no keys"
[[ -s keys/orb_log_private.pem && -s keys/orb_log_public.pem && -s keys/orb_log_config ]] || fail "no keys"

echo "the diagnostic service of a program that runs"
sample docs/logging.md 'orbdiag status' | sed 's|PATH|/tmp/diag|' >orbdiag_commands
cat >beside_a_program <<'EOT'
set -euo pipefail
cp keys/orb_log_config /data/vendor/orb_logs/config/
orbd-sim --quiet &
daemon=$!
ORB_DIAG_SOCKET=/tmp/diag ORB_DIAG_FILE=packets ORB_LOG_LEVEL=S all_services >out.program 2>&1 &
program=$!
# It answers once a service is enabled.
until orbdiag command 00 --socket /tmp/diag 2>/dev/null; do kill -0 $program; done
. ./orbdiag_commands >out.orbdiag
kill $program
wait $program || true # it misses the reports for which it had no time
kill $daemon
cp -R /data/vendor/orb_logs/other logs
EOT
scripts/sandbox bash beside_a_program >out 2>&1 || fail "orbdiag beside a program"
grep -Eq '^on, to .*packets: [1-9][0-9]* written, 0 dropped$' out.orbdiag || fail "orbdiag: $(<out.orbdiag)"

echo "logs"
eval "$(sample docs/encrypted-logs.md 'orblog decrypt')" >out 2>&1 || fail "logs are not read"
grep -q '|ORB|' out || fail "no lines in the logs"
cp "$(find logs -type f | head -n 1)" orb_log_app_00
eval "$(sample docs/encrypted-logs.md 'openssl pkeyutl')" >out 2>&1 || fail "no session key"
[[ $(stat -c %s session.key) == 32 ]] || fail "a session key of $(stat -c %s session.key) bytes"

echo "packets"
commands=$(sample docs/logging.md 'import sys')
eval "${commands/FILE/packets}" >out || fail "packets are not read"
grep -q '|ORB|' out || fail "no lines in the packets"

echo "all of the log at once"
eval "$(sample docs/logging.md 'build/dev/tools/orblog/orblog keygen')" >out 2>&1 || fail "status $?"
grep -q '^1E15 ' out || fail "no packets"
grep -q '^[0-9-]* [0-9:.]* .*|ORB|' out || fail "no lines of encrypted files"

echo "a toolchain file"
sample docs/porting.md 'set(CMAKE_SYSTEM_NAME Linux)' >toolchain.cmake
cat >read_toolchain.cmake <<'EOT'
include(${CMAKE_CURRENT_LIST_DIR}/toolchain.cmake)
foreach(file ${CMAKE_C_COMPILER} ${CMAKE_CXX_COMPILER} ${CMAKE_STRIP} ${CMAKE_FIND_ROOT_PATH} ${Protobuf_LITE_LIBRARY})
  if(NOT file MATCHES "^/opt/device-sdk/")
    message(FATAL_ERROR "not the device's: ${file}")
  endif()
endforeach()
EOT
"$cmake" -P read_toolchain.cmake >out 2>&1 || fail "not a toolchain file"

# A build of a few files takes the place of the one that the first commands make.
echo "tests that are carried to a device"
tests=build/device-tests
mkdir -p $tests/{tests/fuzz,tests/golden,tools/orblog,platform/host,CMakeFiles}
for file in libOrbSdlSdk.so.1 platform/host/liblog.so tools/orblog/orblog tests/Some_test tests/some.o CMakeFiles/none; do
  : >$tests/$file
  chmod +x $tests/$file
done
echo "Some_test - 600 $PWD/$tests/tests/Some_test" >$tests/carried.txt
sample docs/porting.md 'cp tests/device/run-tests' | sed '1,/^$/d' >carry
[[ -s carry ]] || fail "nothing behind the commands that build"
bash -eu carry >out 2>&1 || fail "they are not carried"
mkdir device
tar -C device -xJf device-tests.tar.xz
cd device/carried
[[ $(./run-tests --list) == Some_test ]] || fail "not the list: $(./run-tests --list)"
grep -qx 'Some_test - 600 tests/Some_test' tests.txt || fail "not the path: $(<tests.txt)"
for file in build/tests/Some_test build/tests/fuzz/corpus build/tests/golden/lce_session.hex bin/orblog \
  lib/libOrbSdlSdk.so.1 lib/liblog.so; do
  [[ -e $file ]] || fail "not carried: $file"
done
[[ ! -e build/tests/some.o && ! -e build/CMakeFiles ]] || fail "carried, too: $(find build)"

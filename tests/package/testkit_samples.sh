#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The samples of docs/testing-applications.md, with the installed test kit and applications of their names:
# testkit_samples.sh WORK CMAKE SOURCES BUILD CC PYTEST.
# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
build=$4
read -ra cc <<<"$5"
pytest=$6

page=docs/testing-applications.md
sample() { python3 -B "$sources/tests/docs/samples.py" "$sources" --print "$page" "$1"; }
prefix=$work/prefix
run "$cmake" --install "$build" --prefix "$prefix"
export PATH=$prefix/bin:$PATH PKG_CONFIG_PATH=$prefix/lib/pkgconfig ORB_LOG_LEVEL=S

# In one process.
mkdir "$work/my_test"
{
  printf '%s\n' 'cmake_minimum_required(VERSION 3.20)' 'project(MyTest LANGUAGES C CXX)'
  sample 'find_package(orbsim'
} >"$work/my_test/CMakeLists.txt"
{
  printf '#include "%s/my_player.h"\n' "$here"
  sample 'class Player'
} >"$work/my_test/my_test.cpp"
configure "$work/my_test" "$work/my_test/build" "-DCMAKE_PREFIX_PATH=$prefix"
run "$cmake" --build "$work/my_test/build"
run "$work/my_test/build/my_test"
grep -q '\[  PASSED  \] 1 test' "$work/log" || fail "not its test: $(<"$work/log")"

# The program as it is: one that ends when the daemon has enabled it.
run "${cc[@]}" "$here/consumer/enable.c" -o my-player "-I$prefix/include" "-L$prefix/lib" -lOrbSdlSdk \
  "-Wl,-rpath,$prefix/lib"
run bash -euc "$(sample 'exec ./my-player')"
run orb-sandbox bash -euc "$(sample '^orbd-sim --quiet')"
echo '{"begin": "connected", "timeline": []}' >reconnects.json
run bash -euc "$(sample 'orb-sandbox --redirect')"
mv my-player my-other-player
if bash -euc "$(sample 'exec ./my-player')" >log 2>&1; then fail "there is no program, and nobody says so"; fi

# One that comes back to a daemon that was gone, and says so.
cat >my-player <<EOT
#!/bin/sh
"$build/examples/reconnect" --seconds 13 | awk '/^enabled/ { print n++ ? "connected again" : "connected" }'
EOT
chmod +x my-player
sample 'def test_reconnects' >test_my_player.py
echo 'pytest_plugins = ["orbsim_pytest"]' >conftest.py
PYTHONPATH=$(pkg-config --variable=pythondir orbsim)
export PYTHONPATH PYTHONDONTWRITEBYTECODE=1
run "$pytest" -p no:cacheprovider test_my_player.py
grep -q '1 passed' log || fail "not its test: $(<log)"
rm -rf "$work"

#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The installed test kit without other parts of this project: testkit.sh WORK CMAKE SOURCES BUILD
# CXX WHAT. WHAT is `template`: the template project, and a program that has the same internal names
# as the archive; or `breaks`: the template's application with each known fault, which the right
# tests must find.
# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
build=$4
read -ra cxx <<<"$5"
what=$6

prefix=$work/prefix
template=$work/template
run "$cmake" --install "$build" --prefix "$prefix"
test=("$(dirname "$cmake")/ctest" --test-dir "$template" --output-on-failure)

build_template() { # build_template OPTION...
  configure "$prefix/share/orbsim/examples/testkit" "$template" "-DCMAKE_PREFIX_PATH=$prefix" "$@"
  run "$cmake" --build "$template"
}

# A package of only the library has no tools and no kit.
check_components() {
  local component found
  for component in runtime development; do
    run "$cmake" --install "$build" --prefix "$work/$component" --component $component
    found=$(cd "$work/$component" || exit
      find . -type f | { grep -E '/bin/|/share/|orbsim|redirect' | grep -v '/man3/' || true; })
    [[ -z $found ]] || fail "in the component $component: $found"
  done
  [[ -e $work/runtime/lib/libOrbSdlSdk.so.1 && -e $work/development/include/orb/sdl.h ]] ||
    fail "not in its component: $(find "$work/runtime" "$work/development")"
  run "$cmake" --install "$build" --prefix "$work/testkit" --component testkit
  found=$(cd "$work/testkit" || exit
    find . -type f | { grep -v orbsim || true; })
  [[ -z $found ]] || fail "in the component testkit: $found"
}

# With pkg-config, also with names that the archive has inside.
check_names() {
  local flags
  export PKG_CONFIG_PATH=$prefix/lib/pkgconfig
  [[ -e $(pkg-config --variable=pythondir orbsim)/orbsim_pytest.py ]] || fail "no pythondir"
  read -ra flags <<<"$(pkg-config --cflags --libs orbsim OrbSdlSdk)"
  run "${cxx[@]}" -std=c++17 "$here/testkit_names.cpp" -o "$work/names" "${flags[@]}" \
    "-Wl,-rpath,$prefix/lib"
  run "$work/names"
}

# The installed sandbox and stand-in, without namespaces.
check_tools() {
  local name
  for name in orb-sandbox orbd-sim; do
    [[ $("$prefix/bin/$name" --version) == "$name "[0-9]*.* ]] || fail "$name --version"
  done
  # shellcheck disable=SC2016
  run "$prefix/bin/orb-sandbox" --redirect bash -euc '
    exec 4< <(exec "$1" --socket "$ORB_SOCKET")
    read -r -u 4 line
    "$2"
    kill $!' - "$prefix/bin/orbd-sim" "$work/by_redirection"
}

# A faulty application and the tests that find the fault; only these are run. Without a fault,
# events come at once, except the library's five seconds without a daemon.
expect_found() { # expect_found BREAK GOOGLETEST PYTEST [SECONDS]
  local log=$work/$1
  build_template "-DBREAK=$1"
  export ORBSIM_TIMEOUT=${4-5}
  PYTEST_ADDOPTS="-k $3" "${test[@]}" --no-tests=error -R pytest >"$log.pytest" 2>&1 &
  if "${test[@]}" --no-tests=error -j4 -R "LinkAware.*$2" >"$log.gtest" 2>&1; then
    fail "GoogleTest does not find that $1 is broken"
  fi
  if wait $!; then fail "pytest does not find that $1 is broken"; fi
  unset ORBSIM_TIMEOUT
  grep -Eq "\[  FAILED  \] .*$2" "$log.gtest" ||
    fail "not the test that is to find $1: $(cat "$log.gtest")"
  grep -Eq "^FAILED .*::$3" "$log.pytest" ||
    fail "not the test that is to find $1: $(cat "$log.pytest")"
  echo "found: $1"
}

export ORB_LOG_LEVEL=S
case $what in
  template)
    check_components
    check_names
    run "${cxx[@]}" -x c "$here/consumer/enable.c" -o "$work/by_redirection" "-I$prefix/include" \
      "-L$prefix/lib" -lOrbSdlSdk "-Wl,-rpath,$prefix/lib" -x none
    check_tools
    build_template
    run "${test[@]}" -j2
    ;;
  breaks)
    expect_found absent SaysThatNoDaemonIsThere test_says_that_no_daemon_is_there 9
    expect_found reports AsksForReportsAndTakesThem test_asks_for_reports_and_takes_them
    expect_found handoff HoldsWhileAHandoffInterruptsTheLink \
      test_holds_while_a_handoff_comes_at_3_2_seconds
    expect_found vanish FindsADaemonThatWasGone test_finds_a_daemon_that_was_gone
    expect_found rate LowersItsQualityWhenTheRateFallsFrom50To2 \
      test_lowers_its_quality_when_the_rate_falls_from_50_to_2
    expect_found late WaitsForALateAnswer test_waits_for_a_late_answer
    expect_found refused AreReplacedByTheDaemonsOwn \
      test_asks_with_other_criteria_when_its_own_are_refused
    # They find nothing in the correct application.
    build_template -DBREAK=
    run "${test[@]}" -R 'LinkAware.FindsTheDaemon'
    ;;
  *) fail "no such thing: $what" ;;
esac
rm -rf "$work"

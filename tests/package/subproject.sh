#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The library as a part of another project, which it leaves as it is, by those commands of
# docs/installing.md that have WORDS: subproject.sh WORK CMAKE SOURCES WORDS ORBD_SIM REDIRECTION
# [EMULATOR...].
# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"

# The sources are where one of the ways has them; the other is told that it need not fetch them. The parent
# itself looks at its settings and at the targets' names.
cp -R "$here/parent" "$work/parent"
cp "$here/consumer/consumer.c" "$work/parent/first.c"
mkdir "$work/parent/third_party"
ln -s "$sources" "$work/parent/third_party/OrbSdlSdk"
documented docs/installing.md "$4" cmake >"$work/taken_in.cmake"
# The parent's own libraries are static.
taken_in=("-DTAKEN_IN=$work/taken_in.cmake" "-DFETCHCONTENT_SOURCE_DIR_ORBSDLSDK=$sources"
  -DBUILD_SHARED_LIBS=OFF)
configure "$work/parent" "$work/build" "${taken_in[@]}"
grep -q '^OrbSdlSdk stays a shared library' "$work/log" || fail "it ignores BUILD_SHARED_LIBS: $(<"$work/log")"
grep -q '^-- This build has OrbSdlSdk already' "$work/log" || fail "it is not taken in twice: $(<"$work/log")"
grep -q '^CMAKE_BUILD_TYPE:STRING=$' "$work/build/CMakeCache.txt" ||
  fail "the parent has another build type: $(grep CMAKE_BUILD_TYPE: "$work/build/CMakeCache.txt")"
[[ ! -e $work/build/compile_commands.json ]] || fail "the parent has got compile commands"

# The library itself is built by whoever has minutes; the program is compiled, which needs its headers.
run "$cmake" --build "$work/build" --target log orb_log CMakeFiles/first.dir/first.c.o
configure "$work/parent" "$work/device" "${taken_in[@]}" -DORB_PLATFORM=device -DORB_STATIC_PROTOBUF=OFF \
  -DORB_STATIC_CXX=OFF
run "$cmake" --build "$work/device" --target orb_stub_log
for build in build device; do
  readelf --wide --dyn-syms "$(find "$work/$build" -name liblog.so)" >"$work/log"
  grep -q 'DEFAULT  *[0-9].* __android_log_print' "$work/log" || fail "the linker misses functions in liblog of $build"
done
grep -q '^build first: .*libOrbSdlSdk' "$work/build/build.ninja" || fail "the program is not linked to the library"
run "$cmake" --install "$work/build" --prefix "$work/prefix"
installed=$(cd "$work/prefix" && find . -type f)
[[ $installed == ./lib/liblog.a ]] || fail "installed: $installed"

# With all that a parent may ask for. The documents of both keep apart, and the kit is there without a package.
: >"$work/parent/mine.cpp"
documented docs/testing-applications.md 'NAME my_player' cmake >"$work/tested.cmake"
all=(-DTESTED="$work/tested.cmake" -DWITH_ALL=ON -DORB_INSTALL=ON -DORB_BUILD_TOOLS=ON)
configure "$work/parent" "$work/all" "${taken_in[@]}" "${all[@]}" -DCMAKE_UNITY_BUILD=ON
grep -q '/Unity/' "$work/all/build.ninja" || fail "the parent's own sources are not joined"
! grep -E '/(orb_[a-z_]+|OrbSdlSdk)\.dir/Unity/' "$work/all/build.ninja" ||
  fail "sources are joined, which have equal names"
run "$cmake" --install "$work/all" --prefix "$work/documents" --component doc
[[ $(ls "$work/documents/share/doc/Parent") == mine.c ]] ||
  fail "among the parent's documents: $(ls "$work/documents/share/doc/Parent")"
[[ -e $work/documents/share/doc/OrbSdlSdk/README.md ]] || fail "the library's documents are elsewhere"
if grep -q '^build .*liborbsim\.a' "$work/all/build.ninja"; then
  link=$(grep '^build kit_test: ' "$work/all/build.ninja") || fail "the parent has no test kit"
  [[ $link == *liborbsim.a*libgtest* ]] || fail "the test is not linked to the kit: $link"
  # Make knows objects as files, not whose they are.
  run "$cmake" -G "Unix Makefiles" -C "$work.cmake" -S "$work/parent" -B "$work/with make" "${taken_in[@]}" "${all[@]}"
  grep -q '/orb_testkit.dir/all: .*/orb_testkit_objects.dir/all$' "$work/with make/CMakeFiles/Makefile2" ||
    fail "make does not build the objects of the kit before the kit"
fi

# The programs find what they need beside them, wherever the parent has its own. They are built by whoever has
# minutes, and copied here.
tools=$(sed -n 's|^build \(.*\)/bin/orbd-sim: .*|\1|p' "$work/all/build.ninja")
[[ -n $tools ]] || fail "orbd-sim is elsewhere: $(grep '^build .*/orbd-sim: ' "$work/all/build.ninja")"
grep -q "^build $tools/lib/liborb_redirect.so: " "$work/all/build.ninja" || fail "the sandbox lacks its library"
cd "$work/all/$tools"
mkdir -p lib
cp "$5" bin/orbd-sim
cp "$6" lib/
run "${@:7}" bin/orbd-sim check steady
run bin/orb-sandbox --redirect true
[[ -e share/orbsim/python/orbsim_pytest.py ]] || fail "there is no module for pytest"
for part in "$tools/bin/orbd-sim" "$tools/bin/../share/orbsim/python"; do
  grep -q "$part" "$work/all/CTestTestfile.cmake" || fail "tests of the parent do not name $part"
done
rm -rf "$work"

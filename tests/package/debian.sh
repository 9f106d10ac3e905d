#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
# The Debian packages of BUILD, made by the commands of docs/installing.md: lintian finds no error,
# they can be installed with only their dependencies, applications can be built in the three ways,
# and removal leaves nothing: debian.sh WORK CMAKE SOURCES BUILD.
# shellcheck source-path=SCRIPTDIR source=common.sh
. "$(dirname "${BASH_SOURCE[0]}")/common.sh"
built=$4
build=$work/build/debian
root=$work/root
contact="Somebody Else <somebody@distributor.example>"
packages=(liborbsdlsdk1 liborbsdlsdk-dev orb-tools orb-host-platform liborbsim-dev)

as_root() {
  if ((EUID == 0)); then unshare --mount "$@"; else unshare --mount --map-root-user "$@"; fi
}

# Replacements for the commands of the document. They use the files of BUILD instead of building,
# and a copy of this machine's list of packages.
cmake() {
  case $1 in
    --preset) configure "$sources" "$build" --preset "$2" "-DCPACK_PACKAGE_CONTACT=$contact" ;;
    --build)
      cp -a "$built"/libOrbSdlSdk.so* "$build/"
      cp -a "$built"/platform/host/lib*.so "$build/platform/host/"
      cp -a "$built/tools/testkit/liborbsim.a" "$build/tools/testkit/"
      for tool in orbctl orblog orbdiag orbd-sim; do
        cp -a "$built/tools/$tool/$tool" "$build/tools/$tool/"
      done
      (cd "$built" && find tools -maxdepth 2 -name completion) | while read -r folder; do
        cp -a "$built/$folder" "$build/$(dirname "$folder")/"
      done
      ;;
    *) fail "cmake $*" ;;
  esac
}
cpack() { (umask 077 && run "$(dirname "$cmake")/cpack" "$@"); }
apt-get() {
  case $1 in
    install)
      [[ $2 == --reinstall ]] || fail "packages of a later build do not replace these: apt-get $*"
      run as_root dpkg --root="$root" --install "${@:3}"
      ;;
    purge) run as_root dpkg --root="$root" --purge "${@:2}" ;;
    *) fail "apt-get $*" ;;
  esac
}

mkdir -p "$root"/var/lib/dpkg/{info,updates,triggers} "$root/var/log" "$work/whole" "$work/layer" "$work/used"
cp /var/lib/dpkg/status "$root/var/lib/dpkg/"
: >"$root/var/lib/dpkg/available"
# All that scripts/setup would install is there, or this test would not have been built.
ln -s "$sources/scripts" .
eval "$(documented docs/installing.md "cpack -G DEB")"

for package in "${packages[@]}"; do
  [[ -e $(echo "$build/${package}"_*.deb) ]] || fail "no package $package: $(ls "$build"/*.deb)"
done
run lintian --fail-on error --allow-root "$build"/*.deb
field() { dpkg-deb -f "$build/$1"_*.deb "$2"; }
[[ $(field liborbsdlsdk1 Depends) == *libprotobuf-lite*libssl3* ]] ||
  fail "not what the library links: $(field liborbsdlsdk1 Depends)"
[[ $(field orb-tools Depends) == *libncursesw6* ]] || fail "not what the tools link: $(field orb-tools Depends)"
[[ $(field orb-tools Suggests) == *gnuplot* ]] || fail "orbctl plot needs: $(field orb-tools Suggests)"
for package in "${packages[@]}"; do
  [[ $(field "$package" Maintainer) == "$contact" ]] || fail "$package: $(field "$package" Maintainer)"
done
# The list of symbols matches the library exactly, and no package has a script.
dpkg-deb --raw-extract "$build"/liborbsdlsdk1_*.deb "$work/library"
zcat "$work/library/usr/share/doc/liborbsdlsdk1/changelog.Debian.gz" | grep -qF -- "$contact" ||
  fail "the changelog names another maintainer"
mkdir "$work/debian"
printf 'Source: orbsdlsdk\n\nPackage: liborbsdlsdk1\nArchitecture: any\n' >"$work/debian/control"
run dpkg-gensymbols -pliborbsdlsdk1 -v1.0.0-1 -Plibrary -Ilibrary/DEBIAN/symbols -Onew -c4
[[ ! -e $work/library/DEBIAN/postinst ]] || fail "a script runs when it is installed"

for file in usr/bin/orbctl usr/share/man/man1/orbctl.1.gz usr/share/bash-completion/completions/orbctl \
  usr/share/zsh/vendor-completions/_orbctl usr/share/doc/liborbsdlsdk1/copyright \
  usr/share/doc/orb-tools/changelog.Debian.gz usr/share/doc/liborbsdlsdk-dev/docs/installing.md \
  usr/share/doc/liborbsdlsdk-dev/examples/CMakeLists.txt; do
  [[ -e $root/$file ]] || fail "not installed: $file"
done

# An overlay with this machine's system below the installed files. It must not be inside another
# overlay.
cp "$here"/consumer/*.c "$work/used/"
mv "$work/used/consumer.c" "$work/used/first.c"
documented docs/installing.md "project(first" cmake >"$work/used/CMakeLists.txt"
documented README.md "int main" c >"$work/used/readme.c"
{
  echo 'set -eux'
  documented docs/installing.md "first -lOrbSdlSdk" | while read -r line; do
    printf '%s\n' 'rm -rf first build' "$line" 'if [ -e first ]; then ./first; else build/first; fi'
  done
  # The first program of README.md ends well only if the daemon stand-in has sent it reports.
  documented docs/installing.md "first -lOrbSdlSdk" | sed -n '1s/first\.c/readme.c/p'
  documented docs/installing.md "orb-sandbox --redirect"
  documented docs/installing.md "-dev/examples"
  cat <<'EOF'
pkg-config --cflags OrbSdlSdk orbsim | grep -qx ' *'
pkg-config --libs OrbSdlSdk | grep -qx -- '-lOrbSdlSdk *'
cc enable.c -o enable -lOrbSdlSdk
ORB_LOG_LEVEL=S orb-sandbox --redirect bash -euc '
  exec 4< <(exec orbd-sim --socket "$ORB_SOCKET")
  read -r -u 4 line
  ./enable
  kill $!'
for tool in orbctl orblog orbdiag orbd-sim orb-sandbox; do "$tool" --version; done
EOF
} >"$work/used/all"
cat >"$work/enter" <<'EOF'
set -euo pipefail
work=$1
mount -t tmpfs none "$work/layer"
cp -a "$work/root/usr" "$work/layer/"
mount -t overlay -o "lowerdir=$work/layer:/" none "$work/whole"
for folder in /proc /dev /tmp "$work"; do
  [[ ! -d $folder ]] || mount --rbind "$folder" "$work/whole$folder"
done
exec chroot "$work/whole" bash -c 'cd "$1" && exec env PATH="$2:$PATH" CCACHE_DISABLE=1 bash all' - \
  "$work/used" "$2"
EOF
run as_root bash "$work/enter" "$work" "$(dirname "$cmake")"

eval "$(documented docs/installing.md "apt-get purge")"
left=$(cd "$root" && find . -not -path './var/lib/dpkg/*' -not -path './var/log/*' -not -type d)
[[ -z $left && ! -e $root/usr ]] || fail "left: $left $(find "$root/usr")"
rm -rf "$work"

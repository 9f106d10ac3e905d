// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Reference.h"

#include <gcrypt.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

using reference::Bytes;

void require(gcry_error_t error) {
  if (error == 0) return;
  std::fprintf(stderr, "libgcrypt: %s\n", gcry_strerror(error));
  std::abort();
}

void start() {
  static const bool started = [] {
    gcry_check_version(nullptr);
    gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
    gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
    return true;
  }();
  static_cast<void>(started);
}

struct Release {
  void operator()(gcry_cipher_hd_t cipher) const { gcry_cipher_close(cipher); }
  void operator()(gcry_mpi_t number) const { gcry_mpi_release(number); }
  void operator()(gcry_sexp_t expression) const { gcry_sexp_release(expression); }
  void operator()(gcry_mpi_point_t point) const { gcry_mpi_point_release(point); }
  void operator()(gcry_ctx_t context) const { gcry_ctx_release(context); }
};
template <class Handle>
using Owned = std::unique_ptr<std::remove_pointer_t<Handle>, Release>;
using Cipher = Owned<gcry_cipher_hd_t>;
using Number = Owned<gcry_mpi_t>;
using Expression = Owned<gcry_sexp_t>;
using Point = Owned<gcry_mpi_point_t>;
using Curve = Owned<gcry_ctx_t>;

Cipher gcm(const Bytes& key, const Bytes& iv) {
  start();
  gcry_cipher_hd_t handle = nullptr;
  require(gcry_cipher_open(&handle, GCRY_CIPHER_AES256, GCRY_CIPHER_MODE_GCM, 0));
  Cipher cipher(handle);
  require(gcry_cipher_setkey(handle, key.data(), key.size()));
  require(gcry_cipher_setiv(handle, iv.data(), iv.size()));
  return cipher;
}

Number number(const uint8_t* data, size_t size) {
  start();
  gcry_mpi_t value = nullptr;
  require(gcry_mpi_scan(&value, GCRYMPI_FMT_USG, data, size, nullptr));
  return Number(value);
}
Number number(const Bytes& bytes) { return number(bytes.data(), bytes.size()); }

Bytes bytesOf(gcry_mpi_t value, size_t size) {
  size_t used = 0;
  require(gcry_mpi_print(GCRYMPI_FMT_USG, nullptr, 0, &used, value));
  Bytes bytes(used);
  require(gcry_mpi_print(GCRYMPI_FMT_USG, bytes.data(), bytes.size(), &used, value));
  bytes.insert(bytes.begin(), size - bytes.size(), 0);
  return bytes;
}

Bytes dataOf(gcry_sexp_t expression, const char* token) {
  const Expression found(gcry_sexp_find_token(expression, token, 0));
  size_t size = 0;
  const char* const data = gcry_sexp_nth_data(found.get(), 1, &size);
  return Bytes(data, data + size);
}

Curve curveOf(const std::string& name) {
  start();
  gcry_ctx_t context = nullptr;
  require(gcry_mpi_ec_new(&context, nullptr, name.c_str()));
  return Curve(context);
}

size_t coordinateSize(gcry_ctx_t curve) {
  const Number prime(gcry_mpi_ec_get_mpi("p", curve, 1));
  return (gcry_mpi_get_nbits(prime.get()) + 7) / 8;
}

// x and y of scalar times point.
std::pair<Bytes, Bytes> multiply(gcry_ctx_t curve, const Bytes& scalar, gcry_mpi_point_t point) {
  const Point product(gcry_mpi_point_new(0));
  gcry_mpi_ec_mul(product.get(), number(scalar).get(), point, curve);
  const Number x(gcry_mpi_new(0));
  const Number y(gcry_mpi_new(0));
  if (gcry_mpi_ec_get_affine(x.get(), y.get(), product.get(), curve) != 0) std::abort();
  const size_t size = coordinateSize(curve);
  return {bytesOf(x.get(), size), bytesOf(y.get(), size)};
}

}  // namespace

namespace reference {

Sealed seal(const Bytes& key, const Bytes& iv, const Bytes& plain) {
  const Cipher cipher = gcm(key, iv);
  Sealed sealed{Bytes(plain.size()), Bytes(16)};
  require(gcry_cipher_final(cipher.get()));
  require(gcry_cipher_encrypt(cipher.get(), sealed.cipher.data(), sealed.cipher.size(),
                              plain.data(), plain.size()));
  require(gcry_cipher_gettag(cipher.get(), sealed.tag.data(), sealed.tag.size()));
  return sealed;
}

std::optional<Bytes> open(const Bytes& key, const Bytes& iv, const Bytes& tag,
                          const Bytes& cipher) {
  const Cipher opener = gcm(key, iv);
  Bytes plain(cipher.size());
  require(gcry_cipher_final(opener.get()));
  require(
      gcry_cipher_decrypt(opener.get(), plain.data(), plain.size(), cipher.data(), cipher.size()));
  if (gcry_cipher_checktag(opener.get(), tag.data(), tag.size()) != 0) return std::nullopt;
  return plain;
}

Bytes sha256(const Bytes& in) {
  start();
  Bytes digest(32);
  gcry_md_hash_buffer(GCRY_MD_SHA256, digest.data(), in.data(), in.size());
  return digest;
}

Bytes oaepEncrypt(const Bytes& n, const Bytes& e, const Bytes& plain) {
  gcry_sexp_t key = nullptr;
  require(gcry_sexp_build(&key, nullptr, "(public-key (rsa (n %m) (e %m)))", number(n).get(),
                          number(e).get()));
  const Expression keyOwner(key);
  gcry_sexp_t data = nullptr;
  require(gcry_sexp_build(&data, nullptr, "(data (flags oaep) (hash-algo sha1) (value %b))",
                          static_cast<int>(plain.size()), plain.data()));
  const Expression dataOwner(data);
  gcry_sexp_t result = nullptr;
  require(gcry_pk_encrypt(&result, data, key));
  const Expression resultOwner(result);
  Bytes cipher = dataOf(result, "a");
  // A number of the expression loses its leading zeros and may gain one for its sign.
  while (!cipher.empty() && cipher[0] == 0) cipher.erase(cipher.begin());
  cipher.insert(cipher.begin(), n.size() - cipher.size(), 0);
  return cipher;
}

std::optional<Bytes> oaepDecrypt(const Bytes& n, const Bytes& e, const Bytes& d,
                                 const Bytes& cipher) {
  gcry_sexp_t key = nullptr;
  require(gcry_sexp_build(&key, nullptr, "(private-key (rsa (n %m) (e %m) (d %m)))",
                          number(n).get(), number(e).get(), number(d).get()));
  const Expression keyOwner(key);
  gcry_sexp_t data = nullptr;
  require(gcry_sexp_build(&data, nullptr, "(enc-val (flags oaep) (hash-algo sha1) (rsa (a %m)))",
                          number(cipher).get()));
  const Expression dataOwner(data);
  gcry_sexp_t result = nullptr;
  if (gcry_pk_decrypt(&result, data, key) != 0) return std::nullopt;
  const Expression resultOwner(result);
  return dataOf(result, "value");
}

Bytes publicPoint(const std::string& curve, const Bytes& scalar) {
  const Curve context = curveOf(curve);
  const Point generator(gcry_mpi_ec_get_point("g", context.get(), 1));
  const auto [x, y] = multiply(context.get(), scalar, generator.get());
  Bytes point{4};
  point.insert(point.end(), x.begin(), x.end());
  point.insert(point.end(), y.begin(), y.end());
  return point;
}

Bytes sharedX(const std::string& curve, const Bytes& scalar, const Bytes& point) {
  const Curve context = curveOf(curve);
  const size_t size = coordinateSize(context.get());
  if (point.size() != 1 + 2 * size || point[0] != 4) std::abort();
  const Number x = number(point.data() + 1, size);
  const Number y = number(point.data() + 1 + size, size);
  const Number one(gcry_mpi_set_ui(nullptr, 1));
  const Point peer(gcry_mpi_point_set(nullptr, x.get(), y.get(), one.get()));
  if (gcry_mpi_ec_curve_point(peer.get(), context.get()) == 0) std::abort();
  return multiply(context.get(), scalar, peer.get()).first;
}

}  // namespace reference

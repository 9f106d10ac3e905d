// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <openssl/sha.h>

#include <cstring>

#include "smoke.pb.h"

// The digest of a message that was written and read again.
extern "C" bool smoke(uint64_t id, unsigned char* digest) {
  Smoke out;
  Smoke in;
  out.set_id(id);
  const std::string wire = out.SerializeAsString();
  SHA256(reinterpret_cast<const unsigned char*>(wire.data()), wire.size(), digest);
  return in.ParseFromString(wire) && in.id() == id;
}

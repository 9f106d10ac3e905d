// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <dlfcn.h>
#include <gcrypt.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <cstring>
#include <thread>

TEST(Smoke, LibraryWorksInAThreadOfTheTargetsStack) {
  void* const library = dlopen(SMOKE_LIBRARY, RTLD_NOW);
  ASSERT_NE(nullptr, library) << dlerror();
  const auto smoke = reinterpret_cast<bool (*)(uint64_t, unsigned char*)>(dlsym(library, "smoke"));
  ASSERT_NE(nullptr, smoke);
  bool result = false;
  size_t stack = 0;
  unsigned char digest[32] = {};
  std::thread([&] {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &stack);
    result = smoke(3, digest);
  }).join();
  EXPECT_TRUE(result);
  EXPECT_LT(stack, 256u * 1024) << "the linker's mark, not musl's own size";

  ASSERT_NE(nullptr, gcry_check_version(nullptr));
  unsigned char expected[32] = {};
  gcry_md_hash_buffer(GCRY_MD_SHA256, expected, "\x08\x03", 2);
  EXPECT_EQ(0, std::memcmp(expected, digest, sizeof digest));
}

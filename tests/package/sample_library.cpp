// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Shows what the linker makes of a library with all protections, protobuf-lite and the C++ runtime,
// and without code of the project.
#include <google/protobuf/stubs/common.h>

extern "C" __attribute__((visibility("default"))) int orbSampleOfRuntime(int number) {
  try {
    if (number > 0) throw number;
    google::protobuf::ShutdownProtobufLibrary();
  } catch (int thrown) {
    return thrown;
  }
  return 0;
}

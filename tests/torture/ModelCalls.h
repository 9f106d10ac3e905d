// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>

#include "ModelBooks.h"

namespace torture {

// The calls of the API. Each is recorded in the books, and each registration has its own function.
// Used by any thread. The only state is what callbacks do, which is set before the first call.
class ModelCalls {
 public:
  // What a callback does between its recorded beginning and end.
  using Inside = void (*)(Kind kind, int account);
  static void setInside(Inside inside);
  // Whether the calling thread is in a callback.
  static bool insideCallback();

  // Stops the calling thread's next call at its allocation number @p place until other threads have
  // made progress.
  static void stopNextAt(size_t place, uint64_t events);

  // Each returns whether the call was accepted. @p which, any number, selects a request.
  static bool enable(Service service, bool second);
  static bool disable(Service service, bool second);
  static bool request(Service service, uint32_t which);
  static bool invalid(Service service, uint32_t which);
};

}  // namespace torture

// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <cstddef>
#include <utility>

namespace torture {

// Callbacks have no context argument. So each registration that a test must distinguish needs its
// own function. These are kCount functions, and each calls Owner::called() with its number. Without
// state.
template <class Owner, size_t kCount, class... Arguments>
class FunctionTable {
 public:
  using Function = void (*)(Arguments...);
  static constexpr size_t kSize = kCount;

  static Function at(size_t number) {
    static constexpr auto kAll = all(std::make_index_sequence<kCount>());
    return kAll[number];
  }

 private:
  template <size_t kNumber>
  static void function(Arguments... arguments) {
    Owner::called(kNumber, arguments...);
  }
  template <size_t... kNumbers>
  static constexpr std::array<Function, kCount> all(std::index_sequence<kNumbers...>) {
    return {{function<kNumbers>...}};
  }
};

}  // namespace torture

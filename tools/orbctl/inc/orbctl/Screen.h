// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <memory>
#include <vector>

#include "orbctl/Styled.h"

namespace orbctl {

// The whole terminal, from its making to its end, which gives the terminal back as it was. Only
// what differs from the last picture is written. One per process, used by the main thread.
class Screen {
 public:
  virtual ~Screen() = default;
  virtual size_t columns() const = 0;
  virtual size_t rows() const = 0;
  // Whether its characters include bars and arrows.
  virtual bool unicode() const = 0;
  // After the terminal has another size.
  virtual void resize() = 0;
  virtual void draw(const std::vector<Row>& rows) = 0;
  // Where keys come from, -1 when there are none.
  virtual int keysFd() const = 0;
  // Reads the keys that are there. True: one of them ends the program.
  virtual bool readKeys() = 0;
};

// Null when standard output is no terminal that can be used so, or this program was built without
// the library for it.
std::unique_ptr<Screen> openScreen(bool colored);

}  // namespace orbctl

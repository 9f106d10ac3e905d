// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <memory>
#include <vector>

#include "orbctl/Styled.h"

namespace orbctl {

// Owns the whole terminal; the destructor restores it. Writes only what changed since the last
// picture. One per process, used by the main thread.
class Screen {
 public:
  virtual ~Screen() = default;
  virtual size_t columns() const = 0;
  virtual size_t rows() const = 0;
  // Whether the terminal can show bars and arrows.
  virtual bool unicode() const = 0;
  // Called after the size of the terminal has changed.
  virtual void resize() = 0;
  virtual void draw(const std::vector<Row>& rows) = 0;
  // The descriptor for keys, or -1 if there is none.
  virtual int keysFd() const = 0;
  // Reads the pressed keys. True if one of them ends the program.
  virtual bool readKeys() = 0;
};

// Null if standard output is not a suitable terminal, or if this program was built without ncurses.
std::unique_ptr<Screen> openScreen(bool colored);

}  // namespace orbctl

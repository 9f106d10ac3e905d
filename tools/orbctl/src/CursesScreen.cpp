// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <curses.h>
#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <cstdio>
#include <cstring>

#include "orbctl/Output.h"
#include "orbctl/Screen.h"

namespace orbctl {
namespace {

// Implements the screen with curses, which writes only what changed since the last picture.
class CursesScreen : public Screen {
 public:
  CursesScreen(SCREEN* screen, bool colored) : mScreen(screen) {
    // curses must not handle signals, because the program handles them. It only reads keys.
    cbreak();
    noecho();
    nodelay(stdscr, TRUE);
    intrflush(stdscr, FALSE);
    keypad(stdscr, FALSE);
    curs_set(0);
    mColored = colored && has_colors() && start_color() == OK;
    if (!mColored) return;
    use_default_colors();
    for (size_t style = 0; style < kStyles; ++style)
      init_pair(pairOf(static_cast<Style>(style)), kColors[style], -1);
  }
  ~CursesScreen() override {
    endwin();
    delscreen(mScreen);
  }
  CursesScreen(const CursesScreen&) = delete;
  CursesScreen& operator=(const CursesScreen&) = delete;

  size_t columns() const override { return static_cast<size_t>(COLS); }
  size_t rows() const override { return static_cast<size_t>(LINES); }
  bool unicode() const override { return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0; }

  void resize() override {
    winsize size = {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0)
      return;
    resizeterm(size.ws_row, size.ws_col);
    // The terminal may have moved its contents.
    clearok(curscr, TRUE);
  }

  void draw(const std::vector<Row>& rows) override {
    erase();
    for (size_t y = 0; y < rows.size(); ++y) {
      move(static_cast<int>(y), 0);
      for (const Span& span : rows[y].spans()) {
        attrset(static_cast<int>(attributesOf(span.style)));
        addstr(span.text.c_str());
      }
    }
    attrset(A_NORMAL);
    refresh();
  }

  int keysFd() const override { return isatty(STDIN_FILENO) == 1 ? STDIN_FILENO : -1; }

  bool readKeys() override {
    for (int key = getch(); key != ERR; key = getch()) {
      if (key == 'q' || key == 'Q') return true;
      if (key == '\f') clearok(curscr, TRUE);  // Ctrl-L redraws, as in other programs
    }
    return false;
  }

 private:
  static constexpr std::array<short, kStyles> kColors = {
      -1, -1, -1, COLOR_GREEN, COLOR_YELLOW, COLOR_RED, COLOR_CYAN, COLOR_MAGENTA};
  static short pairOf(Style style) { return static_cast<short>(static_cast<short>(style) + 1); }

  chtype attributesOf(Style style) const {
    if (style == Style::kTitle) return A_BOLD;
    if (style == Style::kDim) return mColored ? A_DIM : A_NORMAL;
    if (mColored) return static_cast<chtype>(COLOR_PAIR(pairOf(style)));
    return style == Style::kBad || style == Style::kWarn ? A_BOLD : A_NORMAL;
  }

  SCREEN* const mScreen;
  bool mColored = false;
};

}  // namespace

std::unique_ptr<Screen> openScreen(bool colored) {
  if (!isCapableTerminal(STDOUT_FILENO)) return nullptr;
  // Only for characters: the locale of numbers stays unchanged.
  std::setlocale(LC_CTYPE, "");
  SCREEN* const screen = newterm(nullptr, stdout, stdin);
  if (screen == nullptr) return nullptr;
  return std::make_unique<CursesScreen>(screen, colored);
}

}  // namespace orbctl

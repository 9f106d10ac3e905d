// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orbctl plot: draws a recording.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Commands.h"
#include "UniqueFd.h"
#include "orbtool/Run.h"

namespace orbctl {
namespace {

int fail(const std::string& what, const std::string& reason) {
  std::fprintf(stderr, "orbctl plot: %s: %s\n", what.c_str(), reason.c_str());
  return orbtool::kExitFailed;
}

// False with errno on failure.
bool readFile(const std::string& path, std::string& text) {
  UniqueFd file;
  if (path != "-") file.reset(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  const int fd = path == "-" ? STDIN_FILENO : file.get();
  std::array<char, 65536> bytes;
  for (;;) {
    const ssize_t size = fd < 0 ? -1 : read(fd, bytes.data(), bytes.size());
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return size == 0;
    text.append(bytes.data(), static_cast<size_t>(size));
  }
}

// False with errno on failure; a partly written new file is removed.
bool writeFile(const std::string& path, const std::string& bytes) {
  std::FILE* const file = std::fopen(path.c_str(), "we");
  if (file == nullptr) return false;
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  int error = written ? 0 : errno;
  if (std::fclose(file) != 0 && error == 0) error = errno;
  struct stat status = {};
  if (error != 0 && stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode))
    (void)unlink(path.c_str());
  errno = error;
  return error == 0;
}

}  // namespace

int runPlot(const PlotSettings& settings) {
  const std::string input = settings.input == "-" ? "standard input" : settings.input;
  std::string text, reason, picture;
  if (!readFile(settings.input, text)) return fail(input, std::strerror(errno));
  PlotData data;
  if (!readPlotData(text, data, reason)) return fail(input, reason);
  if (data.unreadable > 0)
    std::fprintf(stderr, "orbctl plot: %s: records that cannot be read: %zu\n", input.c_str(),
                 data.unreadable);
  if (!drawPlot(plotScript(data, settings.form, settings.size), picture, reason)) {
    std::fprintf(stderr, "orbctl plot: %s\n", reason.c_str());
    return orbtool::kExitFailed;
  }
  if (!writeFile(settings.output, picture)) return fail(settings.output, std::strerror(errno));
  return orbtool::kExitDone;
}

}  // namespace orbctl

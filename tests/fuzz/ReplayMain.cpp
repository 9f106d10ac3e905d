// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Runs a target without a fuzzer. Arguments: files and directories of files. Each file is one
// input. With --prefixes, each shorter prefix of a file is an input, too.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "FuzzTarget.h"

namespace {

namespace fs = std::filesystem;

// Sorted, so that the order is the same on all machines.
std::vector<fs::path> filesOf(const fs::path& path) {
  std::vector<fs::path> files;
  if (!fs::is_directory(path)) return {path};
  for (const auto& entry : fs::directory_iterator(path)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

bool read(const fs::path& path, std::vector<uint8_t>& bytes) {
  std::ifstream file(path, std::ios::binary);
  bytes.assign(std::istreambuf_iterator<char>(file), {});
  return file.good() || file.eof();
}

// On the heap and without spare bytes, so that a sanitizer finds a read beyond the end.
void run(const std::vector<uint8_t>& bytes, size_t size) {
  const std::vector<uint8_t> input(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size));
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

}  // namespace

int main(int argc, char** argv) {
  LLVMFuzzerInitialize(&argc, &argv);
  size_t files = 0;
  size_t executions = 0;
  bool prefixes = false;
  std::vector<uint8_t> bytes;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--prefixes") == 0) {
      prefixes = true;
      continue;
    }
    for (const fs::path& path : filesOf(argv[i])) {
      if (!read(path, bytes)) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return 1;
      }
      std::fprintf(stderr, "%s\n", path.filename().c_str());  // the last one caused a crash
      ++files;
      for (size_t size = prefixes ? 0 : bytes.size(); size <= bytes.size(); ++size, ++executions)
        run(bytes, size);
    }
  }
  std::printf("%zu inputs, %zu executions\n", files, executions);
  return files > 0 ? 0 : 1;
}

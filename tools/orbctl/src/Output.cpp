// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "orbctl/Csv.h"
#include "orbctl/Json.h"
#include "orbctl/Lines.h"

namespace orbctl {
namespace {

// Writes texts to a stream; flush() reports errors of all writes since the last flush().
class TextOutput : public Output {
 public:
  explicit TextOutput(std::FILE* stream) : mStream(stream) {}

  bool flush() override {
    if (std::ferror(mStream) == 0 && std::fflush(mStream) == 0) return true;
    noteError();
    errno = mError;
    return false;
  }

 protected:
  void write(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), mStream) != text.size()) noteError();
  }

 private:
  void noteError() {
    if (mError == 0) mError = errno != 0 ? errno : EIO;
  }

  std::FILE* const mStream;
  int mError = 0;  // the first error: some C libraries write before flush()
};

class LineOutput : public TextOutput {
 public:
  LineOutput(std::FILE* stream, bool colored) : TextOutput(stream), mColored(colored) {}
  void show(const Event& event) override {
    const Row row = lineOf(event);
    write((mColored ? row.coloredText() : row.plainText()) + "\n");
  }

 private:
  const bool mColored;
};

class JsonOutput : public TextOutput {
 public:
  JsonOutput(std::FILE* stream, Clock::time_point start) : TextOutput(stream), mStart(start) {}
  void show(const Event& event) override { write(jsonOf(fieldsOf(event, mStart))); }

 private:
  const Clock::time_point mStart;
};

struct Closer {
  void operator()(std::FILE* file) const { (void)std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Closer>;

class CsvOutput : public TextOutput {
 public:
  // With its own file, or with a stream that stays open.
  CsvOutput(File file, std::FILE* stream, Clock::time_point start)
      : TextOutput(stream), mFile(std::move(file)), mStart(start) {
    write(csvHeader());
  }
  void show(const Event& event) override { write(csvLineOf(fieldsOf(event, mStart))); }

 private:
  const File mFile;
  const Clock::time_point mStart;
};

bool isSet(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

}  // namespace

bool isCapableTerminal(int fd) {
  const char* const kind = std::getenv("TERM");
  return isatty(fd) == 1 && kind != nullptr && *kind != '\0' && std::strcmp(kind, "dumb") != 0;
}

bool mayColor(ColorChoice choice, int fd) {
  if (choice != ColorChoice::kAuto) return choice == ColorChoice::kAlways;
  return !isSet("NO_COLOR") && isCapableTerminal(fd);
}

std::unique_ptr<Output> makeLines(std::FILE* stream, bool colored) {
  return std::make_unique<LineOutput>(stream, colored);
}

std::unique_ptr<Output> makeJson(std::FILE* stream, Clock::time_point start) {
  return std::make_unique<JsonOutput>(stream, start);
}

std::unique_ptr<Output> makeCsv(const std::string& path, Clock::time_point start) {
  if (path == "-") return std::make_unique<CsvOutput>(nullptr, stdout, start);
  File file(std::fopen(path.c_str(), "we"));
  if (!file) return nullptr;
  std::FILE* const stream = file.get();
  return std::make_unique<CsvOutput>(std::move(file), stream, start);
}

}  // namespace orbctl

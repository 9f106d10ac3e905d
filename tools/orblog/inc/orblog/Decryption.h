// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "orblog/Console.h"
#include "orblog/LinePrinter.h"
#include "orblog/LogFiles.h"
#include "orblog/Merge.h"

namespace orblog {

// Reads a set of log files and prints their lines in the order of time, once or continuously.
// Before it prints a line of a file, it must know the faults and the times of that file. If the
// record lengths of a file are correct up to the end, the first and the last record are enough for
// that. Other files are read twice, unless they are small: first for faults and times, then all
// together for the lines. So the memory does not depend on the size of the files. Standard input is
// printed as it arrives. Used by one thread.
class Decryption {
 public:
  // All three must live longer than this object.
  Decryption(const PrivateKey& key, LinePrinter& printer, Console& console);

  // Reads the files of the arguments up to their current end and prints them. A cut-off last record
  // is reported, unless the files are followed.
  void readAll(const std::vector<std::string>& arguments, bool readsOn);
  // Prints data and files that were added since. False if the output failed.
  bool readNew(const std::vector<std::string>& arguments);
  // Ends following. A cut-off last record is not a fault then, because it is being written.
  void finish();

 private:
  struct Source {
    std::unique_ptr<LogSource> file;
    bool retired = false;     // another file or no file has its name now
    Stamp latest = kNoStamp;  // of the last record
    uint64_t seen = 0;        // where the last read ended
  };
  enum class Extent { Present, Rest, SeenAgain };
  void open(const std::vector<std::string>& paths);
  void openNew(const std::vector<std::string>& arguments);
  RecordStream read(Source& source, Extent extent);
  std::optional<RecordStream> readInOrder(Source& source, Extent extent);
  RecordStream readInput();
  void report(const Source& source, std::vector<Finding> findings, Extent extent);
  void print(RecordStreams streams);
  void noteUnjudged();
  size_t share() const;

  const PrivateKey& mKey;
  LinePrinter& mPrinter;
  Console& mConsole;
  KeyRing mRing;
  KeyFinder mFinder;
  FilePool mPool;
  std::vector<Source> mSources;         // in the order of their age, as far as known
  std::set<std::string> mFailedToOpen;  // reported once
  std::set<std::string> mNoted;         // files whose records without a log line were reported
};

// Prints changes until SIGINT or SIGTERM, which must be blocked. False if the output failed.
bool follow(Decryption& decryption, const std::vector<std::string>& arguments);

}  // namespace orblog

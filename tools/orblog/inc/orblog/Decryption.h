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

// Reads a set of log files and prints their lines in the order of time; once, or on and on as they
// grow. What is wrong with a file and when it was written has to be known before any of its lines
// is printed. Of a file whose lengths lead through all of it that is told by its first and last
// record. Others are read twice, unless they hold little: first for that, and then, all at the same
// time, for the lines. So its memory does not depend on how much they hold. Standard input comes as
// it comes. Used by one thread.
class Decryption {
 public:
  // All three must outlive it.
  Decryption(const PrivateKey& key, LinePrinter& printer, Console& console);

  // Reads what the arguments name up to its present end and prints it. Unless it is read on, what
  // lacks its end is reported.
  void readAll(const std::vector<std::string>& arguments, bool readsOn);
  // What was added since, and files that came since. False when the output is full.
  bool readNew(const std::vector<std::string>& arguments);
  // Ends the reading on. A record that lacks its end is no fault then: it is being written.
  void finish();

 private:
  struct Source {
    std::unique_ptr<LogSource> file;
    bool retired = false;     // its name belongs to another file, or to none
    Stamp latest = kNoStamp;  // of the last record
    uint64_t seen = 0;        // where the last reading ended
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
  std::vector<Source> mSources;         // in the order of their age, as far as it is known
  std::set<std::string> mFailedToOpen;  // told once
  std::set<std::string> mNoted;         // files whose texts that are no lines have been told of
};

// Reads on whenever something changes, until SIGINT or SIGTERM; those must be blocked. False when
// the output failed.
bool follow(Decryption& decryption, const std::vector<std::string>& arguments);

}  // namespace orblog

// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "Program.h"

#include <signal.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace orbsim {
namespace {

// The maximum of bytes that wait for a reader.
constexpr size_t kMaxBytes = size_t{64} << 20;

sigset_t endingSignals() {
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGINT);
  sigaddset(&ending, SIGTERM);
  sigaddset(&ending, SIGHUP);
  return ending;
}

}  // namespace

void holdSignals() {
  const sigset_t ending = endingSignals();
  pthread_sigmask(SIG_BLOCK, &ending, nullptr);
  signal(SIGPIPE, SIG_IGN);
}

void waitForEnd() {
  const sigset_t ending = endingSignals();
  int signal = 0;
  while (sigwait(&ending, &signal) != 0) {
  }
  // The sender of a second signal does not want to wait for the end.
  pthread_sigmask(SIG_UNBLOCK, &ending, nullptr);
}

int Output::finish() {
  {
    const std::lock_guard<std::mutex> lock(mLock);
    mEnding = true;
  }
  mChanged.notify_all();
  if (mThread.joinable()) mThread.join();
  return mError;
}

std::function<void(const std::string&)> Output::log() {
  return [this](const std::string& text) { print(logLine(text)); };
}

TraceSink Output::trace() {
  return [this](const TraceItem& item) { print(mJson ? traceJson(item) : traceText(item)); };
}

std::string Output::logLine(const std::string& text) const {
  const auto now = std::chrono::system_clock::now();
  return mJson ? logJson(now, text) : logText(now, text);
}

void Output::print(std::string line) {
  line += '\n';
  const std::lock_guard<std::mutex> lock(mLock);
  if (mBytes + line.size() > kMaxBytes) {
    ++mDropped;
    return;
  }
  mBytes += line.size();
  mLines.push_back(std::move(line));
  if (!mThread.joinable()) mThread = std::thread(&Output::write, this);
  mChanged.notify_all();
}

// False if the reader has exited. That is not an error.
bool Output::writeLine(const std::string& line) {
  const size_t written = std::fwrite(line.data(), 1, line.size(), mStream);
  if (written == line.size() && std::fflush(mStream) == 0) return true;
  if (errno == EPIPE) {
    std::clearerr(mStream);
    return false;
  }
  if (mError == 0) mError = errno;
  return true;
}

void Output::write() {
  std::unique_lock<std::mutex> lock(mLock);
  for (bool read = true;;) {
    mChanged.wait(lock, [this] { return mEnding || !mLines.empty() || mDropped > 0; });
    if (mLines.empty() && mDropped == 0) return;
    std::string line;
    if (mLines.empty()) {
      line = logLine(std::to_string(std::exchange(mDropped, 0)) +
                     " lines were left out: nobody read them in time") +
             "\n";
    } else {
      line = std::move(mLines.front());
      mLines.pop_front();
      mBytes -= line.size();
    }
    lock.unlock();
    read = read && writeLine(line);
    lock.lock();
  }
}

}  // namespace orbsim

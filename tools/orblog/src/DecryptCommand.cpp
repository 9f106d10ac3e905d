// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orblog decrypt: prints the lines of encrypted log files.
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>

#include "Commands.h"
#include "orblog/Decryption.h"
#include "orbtool/Run.h"

namespace orblog {
namespace {

// From now on the two signals only end the wait, so that no line is half written.
void blockEndingSignals() {
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGINT);
  sigaddset(&ending, SIGTERM);
  sigprocmask(SIG_BLOCK, &ending, nullptr);
}

// If the reader exits early, no message is needed.
int failWriting(int error) {
  std::clearerr(stdout);
  if (error != EPIPE) std::fprintf(stderr, "orblog: standard output: %s\n", std::strerror(error));
  return orbtool::kExitFailed;
}

LinePrinter::Form formOf(const DecryptRequest& request) {
  if (request.json) return LinePrinter::Form::Json;
  if (wantsColour(request.colour)) return LinePrinter::Form::Colour;
  return isatty(STDOUT_FILENO) == 1 ? LinePrinter::Form::SafeText : LinePrinter::Form::Text;
}

}  // namespace

int runDecrypt(const DecryptRequest& request) {
  Console console;
  std::string error;
  const std::optional<PrivateKey> key =
      PrivateKey::load(request.key, request.passphraseFile, error);
  if (!key) {
    console.problem(error);
    return orbtool::kExitFailed;
  }
  if (!key->warning().empty()) console.note(request.key + ": " + key->warning());
  // The printer has its own buffer. Without stdio's buffer, a failed line is not written again at
  // exit.
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  LinePrinter printer(stdout, formOf(request), request.selection);
  if (request.lastLines) printer.keepLast(*request.lastLines);
  Decryption decryption(*key, printer, console);
  if (request.follow) blockEndingSignals();
  decryption.readAll(request.files, request.follow);
  printer.writeKept();
  const bool followed = request.follow && follow(decryption, request.files);
  if (!printer.flush()) return failWriting(printer.error());
  return followed || !console.hadProblem() ? orbtool::kExitDone : orbtool::kExitFailed;
}

}  // namespace orblog

// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/LinePrinter.h"

#include "orblog/Text.h"

namespace orblog {
namespace {

void appendMember(std::string& out, const char* name, std::string_view text) {
  out += name;
  appendJson(out, text);
}

// One object per line, always with the same members in the same order; those that a text does not
// give are null.
void appendObject(std::string& out, const std::string& file, const Record& record,
                  const std::optional<LogLine>& line) {
  if (line) {
    appendMember(out, "{\"time\":", line->time);
    out += ",\"pid\":" + std::to_string(line->pid) + ",\"tid\":" + std::to_string(line->tid);
    appendMember(out, ",\"level\":", std::string_view(&line->level, 1));
    appendMember(out, ",\"tag\":", line->tag);
    appendMember(out, ",\"message\":", line->message);
  } else {
    out += "{\"time\":null,\"pid\":null,\"tid\":null,\"level\":null,\"tag\":null";
    appendMember(out, ",\"message\":", record.text);
  }
  appendMember(out, ",\"file\":", file);
  out += ",\"offset\":" + std::to_string(record.offset) + "}";
}

}  // namespace

bool Selection::takes(const std::optional<LogLine>& line, Stamp stamp) const {
  if (line && levelRank(line->level) < leastLevel) return false;
  if (stamp == kNoStamp) return true;
  return (!since || stamp >= *since) && (!until || stamp <= *until);
}

void LinePrinter::print(const std::string& file, const Record& record, Stamp stamp) {
  const bool needsLine = mForm == Form::Json || !mSelection.takesAll();
  const std::optional<LogLine> line = needsLine ? parseLine(record.text) : std::nullopt;
  const bool taken = mSelection.takes(line, stamp);
  if (!line && !mSelection.takesAll()) {
    Unjudged& unjudged = mUnjudged[file];
    ++(taken ? unjudged.printed : unjudged.leftOut);
  }
  if (!taken) return;
  mBuffer.clear();
  switch (mForm) {
    case Form::Text:
      mBuffer = record.text;
      break;
    case Form::SafeText:
      mBuffer = terminalSafe(record.text);
      break;
    case Form::Json:
      appendObject(mBuffer, file, record, line);
      break;
  }
  mBuffer += '\n';
  std::fwrite(mBuffer.data(), 1, mBuffer.size(), mOut);
}

bool LinePrinter::flush() { return std::fflush(mOut) == 0 && std::ferror(mOut) == 0; }

}  // namespace orblog

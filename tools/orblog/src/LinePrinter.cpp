// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/LinePrinter.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>

#include "orblog/Colour.h"
#include "orblog/Text.h"

namespace orblog {
namespace {

constexpr size_t kPiece = size_t{32} << 10;

void appendMember(std::string& out, const char* name, std::string_view text) {
  out += name;
  appendJson(out, text);
}

void appendMember(std::string& out, const char* name, uint64_t number) {
  std::array<char, 20> digits;
  const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  out.append(name).append(digits.data(), static_cast<size_t>(end - digits.data()));
}

// The message begins with a tag, which must be that of the record; only then the split loses
// nothing.
void appendMessage(std::string& out, const LogLine& line) {
  const std::optional<MessageParts> parts = parseMessage(line.message);
  if (parts && parts->tag == line.tag) {
    appendMember(out, ",\"unit\":", parts->unit);
    appendMember(out, ",\"function\":", parts->function);
    appendMember(out, ",\"line\":", parts->line);
    appendMember(out, ",\"message\":", parts->text);
  } else {
    appendMember(out, ",\"unit\":null,\"function\":null,\"line\":null,\"message\":", line.message);
  }
}

// One object per line, always with the same members in the same order. Missing members are null.
void appendObject(std::string& out, const std::string& file, const Record& record,
                  const std::optional<LogLine>& line) {
  if (line) {
    appendMember(out, "{\"time\":", line->time.view());
    appendMember(out, ",\"pid\":", static_cast<uint64_t>(line->pid));
    appendMember(out, ",\"tid\":", line->tid);
    appendMember(out, ",\"level\":", std::string_view(&line->level, 1));
    appendMember(out, ",\"tag\":", line->tag);
    appendMessage(out, *line);
  } else {
    appendMember(out,
                 "{\"time\":null,\"pid\":null,\"tid\":null,\"level\":null,\"tag\":null,"
                 "\"unit\":null,\"function\":null,\"line\":null,\"message\":",
                 record.text);
  }
  appendMember(out, ",\"file\":", file);
  appendMember(out, ",\"offset\":", record.offset);
  out += line ? ",\"parsed\":true}" : ",\"parsed\":false}";
}

template <class Values, class Value>
bool isAmong(const Values& values, const Value& value) {
  return values.empty() || std::find(values.begin(), values.end(), value) != values.end();
}

}  // namespace

bool Selection::takes(const std::optional<LogLine>& line, Stamp stamp) const {
  if (line && (levelRank(line->level) < leastLevel || !isAmong(pids, line->pid) ||
               !isAmong(tags, line->tag)))
    return false;
  if (stamp == kNoStamp) return true;
  return (!since || stamp >= *since) && (!until || stamp <= *until);
}

bool LinePrinter::needsLine() const { return mForm == Form::Json || mForm == Form::Colour; }

void LinePrinter::print(const std::string& file, const Record& record, Stamp stamp) {
  if (mSelection.grep != nullptr && !mSelection.grep->isIn(record.text)) return;
  const bool parses = needsLine() || !mSelection.takesAll();
  const std::optional<LogLine> line = parses ? parseLine(record.text) : std::nullopt;
  const bool taken = mSelection.takes(line, stamp);
  if (!line && !mSelection.takesAll()) {
    Unjudged& unjudged = mUnjudged[file];
    ++(taken ? unjudged.printed : unjudged.leftOut);
  }
  if (!taken) return;
  if (mMostKept) {
    keep(file, record);
  } else {
    write(file, record, line);
  }
}

void LinePrinter::keepLast(size_t count) {
  mMostKept = count;
  mKept.clear();
  mOldest = 0;
}

// The strings of the removed line are reused for the new line.
void LinePrinter::keep(const std::string& file, const Record& record) {
  if (mKept.size() < *mMostKept) {
    mKept.push_back({file, record});
  } else if (!mKept.empty()) {
    mKept[mOldest].file = file;
    mKept[mOldest].record = record;
    mOldest = (mOldest + 1) % mKept.size();
  }
}

void LinePrinter::writeKept() {
  mMostKept.reset();
  const std::vector<Kept> all = std::exchange(mKept, {});
  for (size_t i = 0; i < all.size(); ++i) {
    const Kept& kept = all[(mOldest + i) % all.size()];
    write(kept.file, kept.record,
          needsLine() ? parseLine(kept.record.text) : std::optional<LogLine>());
  }
}

void LinePrinter::write(const std::string& file, const Record& record,
                        const std::optional<LogLine>& line) {
  switch (mForm) {
    case Form::Text:
      mBuffer += record.text;
      break;
    case Form::SafeText:
      mBuffer += terminalSafe(record.text);
      break;
    case Form::Colour:
      appendColoured(mBuffer, line ? line->level : 'X', terminalSafe(record.text));
      break;
    case Form::Json:
      appendObject(mBuffer, file, record, line);
      break;
  }
  mBuffer += '\n';
  if (mBuffer.size() >= kPiece) put();
}

void LinePrinter::put() {
  if (mError == 0 && std::fwrite(mBuffer.data(), 1, mBuffer.size(), mOut) < mBuffer.size())
    mError = errno;
  mBuffer.clear();
}

bool LinePrinter::flush() {
  put();
  if (mError == 0 && std::fflush(mOut) != 0) mError = errno;
  return mError == 0;
}

}  // namespace orblog

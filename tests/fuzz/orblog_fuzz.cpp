// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The reader of encrypted log files. Input: a byte of switches, then the file. With switch 1 the
// file is given as a list of steps that make it, each a byte:
//   0 to 127    a good record; its text is so many of the next bytes
//   128 to 191  the same with the reader's other key and this number minus 128
//   192 to 199  a header with the first key, the other key, no key or zeros, by its last two bits
//   200 to 254  this number minus 200 of the next bytes, unchanged
//   255         changes the last byte of the file so far
// With switch 2 the search for lost records has nearly no budget. With switch 4 session keys are
// wrapped for a private key, otherwise they are not encrypted. The rest of the byte selects the
// size of the pieces in which the parser gets the file.
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "ByteReader.h"
#include "Check.h"
#include "FuzzTarget.h"
#include "Reference.h"
#include "TestKeys.h"
#include "Watchdog.h"
#include "orblog/Format.h"
#include "orblog/LinePrinter.h"
#include "orblog/LogLine.h"
#include "orblog/LogParser.h"
#include "orblog/PrivateKey.h"
#include "orblog/Text.h"

namespace {

using Bytes = std::vector<uint8_t>;

enum : uint8_t { kSteps = 1, kNoBudget = 2, kPrivateKey = 4 };

const orblog::PrivateKey* privateKey = nullptr;
Bytes wrapped[2];  // the session keys 1 and 2, wrapped for that key
FILE* sink = nullptr;

orblog::SessionKey keyOf(uint8_t seed) {
  orblog::SessionKey key;
  for (size_t i = 0; i < key.bytes.size(); ++i) key.bytes[i] = static_cast<uint8_t>(seed * 7 + i);
  return key;
}

// Builds a file.
class File {
 public:
  File(ByteReader& input, bool wrapsKeys) : mWrapsKeys(wrapsKeys) {
    while (!input.empty()) step(input);
  }
  const Bytes& bytes() const { return mBytes; }

 private:
  void step(ByteReader& input) {
    const uint8_t code = input.byte();
    if (code < 192) {
      addRecord(code < 128 ? 1 : 2, input.bytes(code % 128));
    } else if (code < 200) {
      addHeader(code % 4);
    } else if (code < 255) {
      append(input.bytes(code - 200u));
    } else if (!mBytes.empty()) {
      mBytes.back() ^= 1;
    }
  }
  void append(const Bytes& bytes) { mBytes.insert(mBytes.end(), bytes.begin(), bytes.end()); }

  void addRecord(uint8_t seed, const Bytes& text) {
    Bytes iv(orblog::kIvSize);
    iv[0] = seed;
    std::memcpy(&iv[1], &mCount, sizeof mCount);
    ++mCount;
    const orblog::SessionKey key = keyOf(seed);
    const auto sealed = reference::seal({key.bytes.begin(), key.bytes.end()}, iv, text);
    const size_t length = orblog::kSealSize + text.size();
    append({static_cast<uint8_t>(length), static_cast<uint8_t>(length >> 8)});
    append(iv);
    append(sealed.tag);
    append(sealed.cipher);
  }
  // A session key that is not encrypted follows a byte 0xAB.
  void addHeader(int kind) {
    Bytes header(orblog::kHeaderSize);
    if (kind < 2 && mWrapsKeys) {
      std::copy(wrapped[kind].begin(), wrapped[kind].end(), header.begin());
    } else if (kind < 2) {
      header[0] = 0xAB;
      const orblog::SessionKey key = keyOf(static_cast<uint8_t>(kind + 1));
      std::copy(key.bytes.begin(), key.bytes.end(), header.begin() + 1);
    } else if (kind == 2) {
      std::fill(header.begin(), header.end(), uint8_t{0xCD});
    }
    append(header);
  }

  const bool mWrapsKeys;
  Bytes mBytes;
  uint32_t mCount = 0;
};

std::optional<size_t> openInTheClear(orblog::ByteView header, orblog::KeyRing& ring) {
  if (header.data[0] != 0xAB) return std::nullopt;
  orblog::SessionKey key;
  std::copy_n(header.data + 1, key.bytes.size(), key.bytes.begin());
  return ring.add(key, "this file");
}

// A parser with its keys.
struct Parser {
  explicit Parser(uint8_t switches) {
    ring.add(keyOf(2), "another file");
    if ((switches & kNoBudget) != 0) parser.setSearchBudget(1000);
    opensWithKey = (switches & kPrivateKey) != 0;
  }
  orblog::KeyRing ring;
  orblog::KeyFinder finder{*privateKey, ring};
  bool opensWithKey = false;
  orblog::LogParser parser{ring, [this](orblog::ByteView header) {
                             return opensWithKey ? finder.open(header, "this file")
                                                 : openInTheClear(header, ring);
                           }};
};

// With @p known the parser is told whether more bytes follow, as if the whole file existed.
orblog::Parsed parse(const Bytes& file, uint8_t switches, bool known) {
  Parser made(switches);
  orblog::LogParser& parser = made.parser;
  orblog::Parsed out;
  const size_t piece = (switches >> 3) == 0 ? file.size() : size_t{1} << (switches >> 4);
  for (size_t at = 0; at < file.size(); at += piece) {
    const size_t size = std::min(piece, file.size() - at);
    parser.feed({file.data() + at, size}, out, known && at + size < file.size());
  }
  parser.finish(out);
  return out;
}

// Pauses after each record and continues with a copy of the parser, which gets no new keys.
orblog::Parsed parseWithLittleRoom(const Bytes& file, uint8_t switches) {
  Parser made(switches);
  orblog::LogParser parser = made.parser;
  parser.knowNoMoreKeys();
  made.ring.add(keyOf(1), "a later file");
  orblog::Parsed all;
  for (bool more = true; more;) {
    orblog::Parsed out;
    out.room = 1;
    const size_t at = parser.restart();
    more = !parser.feed({file.data() + at, file.size() - at}, out);
    if (!more) parser.finish(out);
    std::move(out.records.begin(), out.records.end(), std::back_inserter(all.records));
    std::move(out.findings.begin(), out.findings.end(), std::back_inserter(all.findings));
  }
  return all;
}

bool areSame(const orblog::Parsed& one, const orblog::Parsed& other) {
  return std::equal(one.records.begin(), one.records.end(), other.records.begin(),
                    other.records.end(),
                    [](const auto& a, const auto& b) {
                      return a.offset == b.offset && a.text == b.text;
                    }) &&
         std::equal(one.findings.begin(), one.findings.end(), other.findings.begin(),
                    other.findings.end(),
                    [](const auto& a, const auto& b) { return a.text() == b.text(); });
}

// The result does not depend on how much of the file the reader has seen, or on its space for
// records.
orblog::Parsed parse(const Bytes& file, uint8_t switches) {
  const orblog::Parsed whole = parse(file, switches & (kNoBudget | kPrivateKey), true);
  FUZZ_CHECK(areSame(parse(file, switches, true), whole));
  FUZZ_CHECK(areSame(parseWithLittleRoom(file, switches), whole));
  return parse(file, switches, false);
}

bool isControl(char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

// No content of a line can harm a terminal or a reader of JSON.
void checkText(const std::string& text) {
  const std::string safe = orblog::terminalSafe(text);
  FUZZ_CHECK(
      std::none_of(safe.begin(), safe.end(), [](char c) { return isControl(c) && c != '\t'; }));
  FUZZ_CHECK(orblog::terminalSafe(safe) == safe);
  std::string json;
  orblog::appendJson(json, text);
  FUZZ_CHECK(json.size() >= 2 && json.front() == '"' && json.back() == '"');
  FUZZ_CHECK(std::none_of(json.begin(), json.end(), isControl));
  if (const auto line = orblog::parseLine(text)) {
    FUZZ_CHECK(line->stamp >= 0 && orblog::levelRank(line->level) >= 0);
    FUZZ_CHECK(line->message.size() < text.size() && line->tag.size() < text.size());
  }
  (void)orblog::parseMoment(text, tm{}, true);
  using Form = orblog::LinePrinter::Form;
  for (const Form form : {Form::Text, Form::SafeText, Form::Json})
    orblog::LinePrinter(sink, form, {}).print("file", {0, text}, 0);
}

// The record that another implementation reads at the same position with one of the two keys.
bool isGenuine(const orblog::Record& record, const Bytes& file) {
  const auto iv = file.begin() + static_cast<ptrdiff_t>(record.offset + orblog::kLengthSize);
  const auto tag = iv + orblog::kIvSize;
  const auto cipher = tag + (orblog::kSealSize - orblog::kIvSize);
  const auto end = cipher + static_cast<ptrdiff_t>(record.text.size());
  for (const uint8_t seed : {uint8_t{1}, uint8_t{2}}) {
    const orblog::SessionKey key = keyOf(seed);
    const auto text = reference::open({key.bytes.begin(), key.bytes.end()}, {iv, tag},
                                      {tag, cipher}, {cipher, end});
    if (text && std::string(text->begin(), text->end()) == record.text) return true;
  }
  return false;
}

// Records are in the order of the file and do not overlap. Findings are inside the file.
void checkPlaces(const orblog::Parsed& out, size_t size) {
  uint64_t end = 0;
  for (const orblog::Record& record : out.records) {
    FUZZ_CHECK(record.offset >= end);
    end = record.offset + orblog::kLengthSize + orblog::kSealSize + record.text.size();
    FUZZ_CHECK(end <= size);
  }
  for (const orblog::Finding& finding : out.findings) {
    FUZZ_CHECK(finding.offset <= size && finding.end <= size);
    const std::string text = finding.text();
    FUZZ_CHECK(!text.empty() && std::none_of(text.begin(), text.end(), isControl));
  }
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "orblog-fuzz-key.pem";
  const testkeys::RsaKey& pair = testkeys::rsaKey(2048);
  std::ofstream(path) << pair.privatePem;
  std::string error;
  auto key = orblog::PrivateKey::load(path, "", error);
  std::filesystem::remove(path);
  FUZZ_CHECK(key.has_value());
  privateKey = new orblog::PrivateKey(std::move(*key));
  for (uint8_t i = 0; i < 2; ++i) {
    const orblog::SessionKey session = keyOf(static_cast<uint8_t>(i + 1));
    wrapped[i] =
        reference::oaepEncrypt(pair.n, pair.e, {session.bytes.begin(), session.bytes.end()});
  }
  sink = std::fopen("/dev/null", "w");
  FUZZ_CHECK(sink != nullptr);
  return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Watchdog::Step step("orblog");
  ByteReader input(data, size);
  const uint8_t switches = input.byte();
  if ((switches & kSteps) == 0) {
    const Bytes file = input.rest();
    checkPlaces(parse(file, switches), file.size());
    checkText(std::string(file.begin(), file.end()));
    return 0;
  }
  const File file(input, (switches & kPrivateKey) != 0);
  const orblog::Parsed out = parse(file.bytes(), switches);
  checkPlaces(out, file.bytes().size());
  for (const orblog::Record& record : out.records) {
    FUZZ_CHECK(isGenuine(record, file.bytes()));
    checkText(record.text);
  }
  return 0;
}

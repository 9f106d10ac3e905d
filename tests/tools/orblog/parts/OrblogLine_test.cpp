// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <gtest/gtest.h>

#include "OrblogFiles.h"
#include "orblog/LinePrinter.h"
#include "orblog/LogLine.h"
#include "orblog/Merge.h"
#include "orblog/Text.h"

using namespace orblog;

namespace {

const char kLine[] =
    "2025-05-24 13:02:07.045  1234  1240 E ORB : |ORB|Log::init:225 cannot open liborbalog.so";

tm dayOf(int year, int month, int day) {
  tm today = {};
  today.tm_year = year - 1900;
  today.tm_mon = month - 1;
  today.tm_mday = day;
  return today;
}

std::optional<Stamp> moment(const std::string& text, bool latest = false) {
  return parseMoment(text, dayOf(2025, 5, 24), latest);
}

Stamp stampOf(const std::string& time) {
  return parseLine(time + " 1 2 D ORB : x").value_or(LogLine()).stamp;
}

TEST(OrblogLine, PartsAreTaken) {
  const std::optional<LogLine> line = parseLine(kLine);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->time, "2025-05-24 13:02:07.045");
  EXPECT_EQ(line->pid, 1234);
  EXPECT_EQ(line->tid, 1240u);
  EXPECT_EQ(line->level, 'E');
  EXPECT_EQ(line->tag, "ORB");
  EXPECT_EQ(line->message, "|ORB|Log::init:225 cannot open liborbalog.so");
}

TEST(OrblogLine, MessageMayBeEmptyOrHoldTheSeparator) {
  EXPECT_EQ(parseLine("2025-05-24 13:02:07.045     1     1 D DMAP : ")->message, "");
  EXPECT_EQ(parseLine("2025-05-24 13:02:07.045 123456 123457 D DMAP : a : b")->message, "a : b");
}

TEST(OrblogLine, EveryBeginningOfALineIsNoLine) {
  const std::string whole = kLine;
  const size_t separator = whole.find(" : ");
  for (size_t size = 0; size < separator + 3; ++size)
    EXPECT_FALSE(parseLine(whole.substr(0, size))) << size;
}

// The time has the format of the application's locale.
TEST(OrblogLine, TwelveHourTimesAreThoseOfTheWholeDay) {
  const struct {
    const char* written;
    const char* meant;
  } kTimes[] = {{"12:00:00 AM.000", "00:00:00.000"},   {"12:59:59 AM.999", "00:59:59.999"},
                {"01:00:00 AM.161", "01:00:00.161"},   {"11:59:60 AM.000", "11:59:60.000"},
                {"12:00:00 PM.000", "12:00:00.000"},   {"12:30:00 pm.000", "12:30:00.000"},
                {"01:02:03 Pm.004", "13:02:03.004"},   {"11:59:59 PM.999", "23:59:59.999"},
                {"12:00:00 a.m..000", "00:00:00.000"}, {"10:54:01 p.m..161", "22:54:01.161"}};
  for (const auto& time : kTimes) {
    const std::string text = "2026-11-21 " + std::string(time.written) + " 11145 11146 E ORB : x";
    const std::optional<LogLine> line = parseLine(text);
    ASSERT_TRUE(line) << text;
    const std::string meant = "2026-11-21 " + std::string(time.meant);
    EXPECT_EQ(line->time, meant);
    EXPECT_EQ(line->stamp, stampOf(meant)) << text;
    EXPECT_EQ(line->pid, 11145);
    EXPECT_EQ(line->tid, 11146u);
    EXPECT_EQ(line->level, 'E');
    EXPECT_EQ(line->tag, "ORB");
    EXPECT_EQ(line->message, "x");
  }
}

TEST(OrblogLine, WhatNoTwelveHourTimeCanBeIsNoLine) {
  for (const char* time : {"00:00:00 AM.000", "13:00:00 PM.000", "10:00:00 XM.000",
                           "10:00:00 A.000", "10:00:00 PM", "10:00:00 PM.00", "10:00:00PM.000",
                           "10:00:00  PM.000", "10:00:00 P.M.000", "10:00 PM.000", "10:00 PM"})
    EXPECT_FALSE(parseLine(std::string("2026-11-21 ") + time + " 1 1 D ORB : x")) << time;
}

TEST(OrblogLine, WhatNoDateOrLevelCanBeIsNoLine) {
  for (const char* text :
       {"2025-13-24 13:02:07.045 1 1 D ORB : x", "2025-02-29 13:02:07.045 1 1 D ORB : x",
        "2025-05-24 24:02:07.045 1 1 D ORB : x", "2025-05-24 13:60:07.045 1 1 D ORB : x",
        "2025-05-24 13:02:61.045 1 1 D ORB : x", "2025-05-24 13:02:07,045 1 1 D ORB : x",
        "2025-05-24 13:02:07.045 1 1 Q ORB : x", "2025-05-24 13:02:07.045 -1 1 D ORB : x",
        "2025-05-24 13:02:07.045 99999999999999999999 1 D ORB : x"})
    EXPECT_FALSE(parseLine(text)) << text;
}

TEST(OrblogLine, StampsOrderLikeTheirTexts) {
  const char* const kTimes[] = {"2024-02-29 23:59:59.999", "2024-03-01 00:00:00.000",
                                "2024-12-31 23:59:60.000", "2025-01-01 00:00:00.000",
                                "2025-01-01 00:00:00.001", "2025-01-01 00:00:01.000",
                                "2025-01-01 00:01:00.000", "2025-01-01 01:00:00.000"};
  for (size_t i = 1; i < std::size(kTimes); ++i)
    EXPECT_LT(stampOf(kTimes[i - 1]), stampOf(kTimes[i])) << kTimes[i];
}

TEST(OrblogMoment, DateAloneIsTheWholeDay) {
  EXPECT_EQ(moment("2025-05-23"), stampOf("2025-05-23 00:00:00.000"));
  EXPECT_EQ(moment("2025-05-23", true), stampOf("2025-05-23 23:59:60.999"));
}

TEST(OrblogMoment, TimeAloneIsOfToday) {
  EXPECT_EQ(moment("13:02"), stampOf("2025-05-24 13:02:00.000"));
  EXPECT_EQ(moment("13:02", true), stampOf("2025-05-24 13:02:60.999"));
  EXPECT_EQ(moment("13:02:07", true), stampOf("2025-05-24 13:02:07.999"));
  EXPECT_EQ(moment("13:02:07.045", true), stampOf("2025-05-24 13:02:07.045"));
}

TEST(OrblogMoment, DateAndTimeMayBeJoinedByT) {
  EXPECT_EQ(moment("2025-05-23 13:02:07.045"), stampOf("2025-05-23 13:02:07.045"));
  EXPECT_EQ(moment("2025-05-23T13:02"), stampOf("2025-05-23 13:02:00.000"));
}

TEST(OrblogMoment, TwelveHourTimesAreTakenAsInTheLines) {
  EXPECT_EQ(moment("2025-05-23 01:02:07 PM.045"), stampOf("2025-05-23 13:02:07.045"));
  EXPECT_EQ(moment("01:02 pm", true), stampOf("2025-05-24 13:02:60.999"));
  EXPECT_EQ(moment("12:02:07 AM"), stampOf("2025-05-24 00:02:07.000"));
  EXPECT_FALSE(moment("13:02 PM"));
  EXPECT_FALSE(moment("01:02 P"));
  EXPECT_FALSE(moment("01:02 PM "));
}

TEST(OrblogMoment, AnythingElseIsNone) {
  for (const char* text : {"", "now", "13", "13:2", "25:00", "13:02:07.4", "2025-05", "2025-02-30",
                           "2025-05-24 ", "2025-05-24 13", "2025-05-24 13:02:07.045 ", "13:02x"})
    EXPECT_FALSE(moment(text)) << text;
}

TEST(OrblogLevel, LettersAreRanked) {
  EXPECT_LT(levelRank('X'), levelRank('V'));
  EXPECT_LT(levelRank('V'), levelRank('D'));
  EXPECT_LT(levelRank('D'), levelRank('I'));
  EXPECT_LT(levelRank('I'), levelRank('W'));
  EXPECT_LT(levelRank('W'), levelRank('E'));
  EXPECT_LT(levelRank('E'), levelRank('F'));
  EXPECT_EQ(levelRank('S'), -1);
  EXPECT_EQ(levelRank('\0'), -1);
}

TEST(OrblogText, ControlCharactersAreEscapedButNoOthers) {
  EXPECT_EQ(terminalSafe("a\tb\x1b[31m\r\n\x7f"), "a\tb\\x1b[31m\\x0d\\x0a\\x7f");
  EXPECT_EQ(terminalSafe(std::string_view("\0", 1)), "\\x00");
  EXPECT_EQ(terminalSafe("gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x9B\xB0"),
            "gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x9B\xB0");
}

TEST(OrblogText, C1ControlsAndBrokenUtf8AreEscaped) {
  EXPECT_EQ(terminalSafe("\xC2\x9B"
                         "31m"),
            "\\xc2\\x9b31m");
  EXPECT_EQ(terminalSafe("\x9B"
                         "31m\xC3"),
            "\\x9b31m\\xc3");
  EXPECT_EQ(terminalSafe("\xC0\x80"), "\\xc0\\x80");                    // overlong
  EXPECT_EQ(terminalSafe("\xED\xA0\x80"), "\\xed\\xa0\\x80");           // surrogate
  EXPECT_EQ(terminalSafe("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");  // above the maximum
}

TEST(OrblogText, JsonHoldsNoControlCharacters) {
  std::string out;
  appendJson(out,
             "\x7f\xC2\x80\xC2\x9B"
             "31m\xC2\x9F\xC2\xA0");
  EXPECT_EQ(out, "\"\\u007f\\u0080\\u009b31m\\u009f\\u00a0\"");
}

TEST(OrblogText, JsonStringsAreWellFormed) {
  std::string out;
  appendJson(out, "a\"b\\c\n\x7f\xC3\xBC\xFF");
  EXPECT_EQ(out, "\"a\\\"b\\\\c\\n\\u007f\\u00fc\\ufffd\"");
}

// The contents of a file, in pieces of this number of records.
struct Batch {
  std::string file;
  std::vector<std::string> texts;
  int64_t changed = 0;
};

std::vector<Record> recordsOf(const std::vector<std::string>& texts) {
  std::vector<Record> records;
  for (const std::string& text : texts) records.push_back({0, text});
  return records;
}

RecordTimes timesOf(const std::vector<std::string>& texts, Stamp former = kNoStamp) {
  RecordTimes times(former);
  for (const std::string& text : texts) times.add(recordsOf({text}));
  return times;
}

RecordStream streamOf(const Batch& batch, const RecordTimes& times, size_t piece) {
  const auto load = [texts = batch.texts, next = size_t{0}, piece]() mutable {
    const auto from = texts.begin() + static_cast<std::ptrdiff_t>(next);
    const size_t size = std::min(piece, texts.size() - next);
    next += size;
    return recordsOf({from, from + static_cast<std::ptrdiff_t>(size)});
  };
  return RecordStream(batch.file, batch.changed, times, load);
}

Batch batchOf(const std::string& file, const std::vector<std::string>& texts, int64_t changed = 0) {
  return {file, texts, changed};
}

std::string at(const std::string& time, const std::string& text) {
  return orblogtest::lineAt(time, text);
}

std::string mergedInPieces(const std::vector<Batch>& batches, size_t piece) {
  RecordStreams streams;
  for (const Batch& batch : batches)
    streams.push_back(streamOf(batch, timesOf(batch.texts), piece));
  sortByAge(streams);
  std::string all;
  mergeByTime(streams, [&all](const std::string&, const Record& record, Stamp) {
    all += record.text.substr(record.text.size() - 2) + " ";
  });
  return all;
}

std::string merged(const std::vector<Batch>& batches) {
  const std::string all = mergedInPieces(batches, 1000);
  EXPECT_EQ(mergedInPieces(batches, 1), all);
  EXPECT_EQ(mergedInPieces(batches, 2), all);
  return all;
}

// The stamps of all records, with `former` as the stamp of the line before them.
std::vector<Stamp> stampsOf(const std::vector<std::string>& texts, Stamp former = kNoStamp) {
  RecordStreams streams;
  const Batch batch = batchOf("x", texts);
  streams.push_back(streamOf(batch, timesOf(texts, former), 1));
  std::vector<Stamp> stamps;
  mergeByTime(streams, [&stamps](const std::string&, const Record&, Stamp stamp) {
    stamps.push_back(stamp);
  });
  return stamps;
}

TEST(OrblogMerge, LinesOfAllFilesComeInTheOrderOfTime) {
  EXPECT_EQ(merged({batchOf("x", {at("10:00:00.000", "a1"), at("10:00:02.000", "a3")}),
                    batchOf("y", {at("10:00:01.000", "b2"), at("10:00:03.000", "b4")})}),
            "a1 b2 a3 b4 ");
}

TEST(OrblogMerge, EqualTimesComeInTheOrderOfTheFilesAge) {
  const Batch older = batchOf(
      "f_03", {at("10:00:00.000", "o1"), at("10:00:01.000", "o2"), at("10:00:01.000", "o3")});
  const Batch younger = batchOf("f_01", {at("10:00:01.000", "y1"), at("10:00:01.000", "y2")});
  EXPECT_EQ(merged({older, younger}), "o1 o2 o3 y1 y2 ");
  EXPECT_EQ(merged({younger, older}), "o1 o2 o3 y1 y2 ");
}

TEST(OrblogMerge, FilesOfOneMomentComeInTheOrderOfTheirLastChange) {
  const Batch one = batchOf("f_01", {at("10:00:00.000", "a1")}, 7);
  const Batch two = batchOf("f_00", {at("10:00:00.000", "b1")}, 8);
  EXPECT_EQ(merged({two, one}), "a1 b1 ");
}

TEST(OrblogMerge, FileKeepsItsOrderWhereTheClockWasSetBack) {
  EXPECT_EQ(merged({batchOf("x", {at("10:00:05.000", "a1"), at("10:00:01.000", "a2")}),
                    batchOf("y", {at("10:00:03.000", "b1"), at("10:00:06.000", "b2")})}),
            "b1 a1 a2 b2 ");
}

TEST(OrblogMerge, TextsWithoutTimeTakeThatOfTheLineOfAnEarlierRound) {
  const Stamp five = stampOf("2025-05-24 10:00:05.000");
  const std::vector<std::string> texts = {"odd", at("10:00:05.000", "x"), "odd"};
  EXPECT_EQ(stampsOf(texts, 7), (std::vector<Stamp>{7, five, five}));
  EXPECT_EQ(stampsOf(texts), (std::vector<Stamp>{five, five, five}));
  EXPECT_EQ(stampsOf({"odd", "odd"}), (std::vector<Stamp>{kNoStamp, kNoStamp}));
}

TEST(OrblogMerge, TimesAreTheSameInAnyPieces) {
  const std::vector<std::string> texts = {"odd", at("10:00:05.000", "x"), at("10:00:04.000", "y"),
                                          "odd"};
  for (const Stamp former : {kNoStamp, Stamp{7}}) {
    const RecordTimes single = timesOf(texts, former);
    RecordTimes whole(former);
    whole.add({});
    whole.add(recordsOf(texts));
    EXPECT_EQ(whole.count(), 4u);
    EXPECT_EQ(single.count(), 4u);
    const Stamp first = former == kNoStamp ? stampOf("2025-05-24 10:00:05.000") : former;
    for (const RecordTimes& times : {single, whole}) {
      EXPECT_EQ(times.lead(), first);
      EXPECT_EQ(times.first(), first);
      EXPECT_EQ(times.last(), stampOf("2025-05-24 10:00:04.000"));
    }
  }
}

TEST(OrblogMerge, RecordsThatAreGoneAreCounted) {
  Batch batch = batchOf("x", {at("10:00:00.000", "a1"), at("10:00:02.000", "a2")});
  const RecordTimes times = timesOf(batch.texts);
  batch.texts.pop_back();
  RecordStreams streams;
  streams.push_back(streamOf(batch, times, 1));
  size_t count = 0;
  mergeByTime(streams, [&count](const std::string&, const Record&, Stamp) { ++count; });
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(streams[0].missing(), 1u);
}

TEST(OrblogMerge, TextWithoutTimeStaysBehindTheLineBeforeIt) {
  EXPECT_EQ(merged({batchOf("x", {"head0", at("10:00:00.000", "a1"), "no time2",
                                  at("10:00:05.000", "a3")}),
                    batchOf("y", {at("09:00:00.000", "b1"), at("10:00:01.000", "b2")})}),
            "b1 d0 a1 e2 b2 a3 ");
}

TEST(OrblogSelection, LevelTakesThatAndAbove) {
  Selection selection;
  selection.leastLevel = levelRank('W');
  for (const char level : std::string("XVDIWEF")) {
    const std::string text = orblogtest::lineAt("10:00:00.000", "x", level);
    EXPECT_EQ(selection.takes(parseLine(text), 0),
              std::string("WEF").find(level) != std::string::npos)
        << level;
  }
  EXPECT_TRUE(selection.takes(std::nullopt, 0));
}

TEST(OrblogSelection, BothEndsOfTheTimeAreIncluded) {
  Selection selection;
  selection.since = 10;
  selection.until = 20;
  EXPECT_FALSE(selection.takes(std::nullopt, 9));
  EXPECT_TRUE(selection.takes(std::nullopt, 10));
  EXPECT_TRUE(selection.takes(std::nullopt, 20));
  EXPECT_FALSE(selection.takes(std::nullopt, 21));
  EXPECT_TRUE(selection.takes(std::nullopt, kNoStamp));
}

}  // namespace

// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <algorithm>
#include <cstdio>

#include "orbctl/Plot.h"

namespace orbctl {
namespace {

// These colours can be distinguished with any kind of colour vision. The two directions also have
// different dashes.
constexpr char kStyles[] =
    "set style line 1 linecolor rgb '#0072B2' linewidth 2 dashtype 1\n"
    "set style line 2 linecolor rgb '#D55E00' linewidth 2 dashtype '-'\n";
constexpr size_t kMostMarks = 100;  // per piece of a curve; more would hide the line
constexpr char kPreparing[] = "#F0E442", kInterrupted[] = "#CC79A7", kAbsent[] = "#999999";

std::string numberText(double number) {
  char text[64];
  std::snprintf(text, sizeof text, "%.6g", number);
  return text;
}

// A blank line ends a piece of a curve.
std::string blockOf(const char* name, const Curve& curve) {
  std::string text = std::string("$") + name + " << EOD\n";
  for (const auto& piece : curve) {
    for (const Point& point : piece)
      text += numberText(point.seconds) + " " + numberText(point.value) + "\n";
    if (!piece.empty()) text += "\n";
  }
  return text + "EOD\n";
}

void addSpans(const std::vector<TimeSpan>& spans, const char* color, double least, int& object,
              std::string& text) {
  for (const TimeSpan& span : spans) {
    // A very short span gets a visible width.
    const double to = std::max(span.to, span.from + least);
    text += "set object " + std::to_string(++object) + " rectangle from " + numberText(span.from) +
            ", graph 0 to " + numberText(to) + ", graph 1 behind fillcolor rgb '" + color +
            "' fillstyle solid 0.35 noborder\n";
  }
}

// An entry for the legend without a point in the picture.
std::string legendOf(const std::vector<TimeSpan>& spans, const char* color, const char* title) {
  if (spans.empty()) return "";
  return std::string(", NaN with boxes fillstyle solid 0.35 noborder linecolor rgb '") + color +
         "' title '" + title + "'";
}

size_t mostPoints(const Curve& curve) {
  size_t most = 0;
  for (const auto& piece : curve) most = std::max(most, piece.size());
  return most;
}

// Without a point gnuplot cannot find a range of values.
std::string rangeOf(const Curve& first, const Curve& second) {
  const bool any = mostPoints(first) + mostPoints(second) > 0;
  return std::string("set yrange [0:") + (any ? "*" : "1") + "]\n";
}

// Draws the pieces as lines. A single point makes no line, so it gets a mark.
std::string curveOf(const char* block, const Curve& curve, bool marked, int style,
                    const char* title) {
  if (mostPoints(curve) == 0) return "NaN notitle";
  return std::string("$") + block + " using 1:2 with " + (marked ? "linespoints" : "lines") +
         " linestyle " + std::to_string(style) + (marked ? " pointtype 7 pointsize 0.4" : "") +
         " title '" + title + "'";
}

}  // namespace

std::string plotScript(const PlotData& data, PlotForm form, PlotSize size) {
  const std::string sizes = std::to_string(size.width) + "," + std::to_string(size.height);
  std::string text = "set encoding utf8\n";
  text += form == PlotForm::kSvg
              ? "set terminal svg size " + sizes + " font 'sans-serif,14' background 'white'\n"
              : "set terminal pngcairo size " + sizes + " font 'sans,11' background 'white'\n";
  text += blockOf("dr", data.downlinkCapacity) + blockOf("ur", data.uplinkCapacity) +
          blockOf("dl", data.downlinkLatency) + blockOf("ul", data.uplinkLatency);
  text += kStyles;
  const double end = std::max(data.end, 0.001);
  size_t most = 0;
  for (const Curve* const curve :
       {&data.downlinkCapacity, &data.uplinkCapacity, &data.downlinkLatency, &data.uplinkLatency})
    most = std::max(most, mostPoints(*curve));
  const bool marked = most <= kMostMarks;
  int object = 0;
  addSpans(data.absences, kAbsent, 0, object, text);
  addSpans(data.preparations, kPreparing, 0, object, text);
  addSpans(data.interruptions, kInterrupted, end / size.width * 2, object, text);
  text += "set xrange [0:" + numberText(end) +
          "]\n"
          "set grid xtics ytics linecolor rgb '#DDDDDD' linewidth 1 dashtype 1\nset border 3\nset "
          "tics nomirror out\n"
          "set key outside right top\nset lmargin 10\nset rmargin 24\n"
          "set multiplot layout 2,1 title 'Capacity, latency and handoffs'\n"
          "set ylabel 'capacity, Mbit/s'\nset format x ''\nset bmargin 0.5\nset tmargin 2\n";
  text += rangeOf(data.downlinkCapacity, data.uplinkCapacity);
  text += "plot " + curveOf("dr", data.downlinkCapacity, marked, 1, "downlink") + ", " +
          curveOf("ur", data.uplinkCapacity, marked, 2, "uplink") +
          legendOf(data.preparations, kPreparing, "handoff ahead") +
          legendOf(data.interruptions, kInterrupted, "handoff") +
          legendOf(data.absences, kAbsent, "daemon away") + "\n";
  text +=
      "set ylabel 'latency, ms'\nset format x '%g'\nset xlabel 'time, s'\n"
      "set tmargin 1.5\nset bmargin 3.5\n";
  text += rangeOf(data.downlinkLatency, data.uplinkLatency);
  text += "plot " + curveOf("dl", data.downlinkLatency, marked, 1, "downlink") + ", " +
          curveOf("ul", data.uplinkLatency, marked, 2, "uplink") + "\n";
  return text + "unset multiplot\n";
}

}  // namespace orbctl

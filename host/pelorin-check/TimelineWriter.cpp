#include "host/pelorin-check/TimelineWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "host/common/TimeText.h"
#include "host/pelorin-check/TimeAxis.h"
#include "host/pelorin-check/XmlText.h"

namespace PelorinCheck {
namespace {

using PelorinTools::TimeText;

const int kLeft = 290;  // room for the lane names
const int kRight = 30;
const int kTop = 100;  // of the first lane
const int kLaneHeight = 20;
const int kLanePitch = 24;
const int kLevels = 8;  // of mark opacity

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.2f", value);
  return text;
}

struct ProblemStyle {
  const char* kind;
  const char* colour;
  const char* legend;
};

const ProblemStyle kProblemStyles[] = {
    {"tpeg-file-missing", "#e67e00", "\"setNewData\" file missing"},
    {"time-backwards", "#8e44ad", "time stamp goes back"},
    {"playback-ends", "#d62728", "playback ends"},
};

const ProblemStyle& StyleOf(Timeline::ProblemKind kind) {
  return kProblemStyles[static_cast<int>(kind)];
}

std::string DateTime(double time) { return TimeText::DateTime(time, TimeText::Style::kText); }

std::string Span(double from, double to) {
  return TimeText::Duration(TimeText::RoundedMs(to - from));
}

}  // namespace

TimelineWriter::TimelineWriter(const Timeline& timeline) : m_timeline(timeline) {
  const TimelineBins& bins = timeline.Bins();
  if (bins.Empty()) return;
  m_from = bins.First();
  m_to = bins.Last();
  // A single moment gets a second around it.
  if (m_to - m_from < 0.001) {
    m_from -= 0.5;
    m_to += 0.5;
  }
}

double TimelineWriter::X(double time) const {
  return kLeft + (time - m_from) / (m_to - m_from) * kPlotWidth;
}

int TimelineWriter::Pixel(double time) const {
  const double x = std::floor((time - m_from) / (m_to - m_from) * kPlotWidth);
  return static_cast<int>(std::min(std::max(x, 0.0), kPlotWidth - 1.0));
}

std::string TimelineWriter::Svg() {
  const size_t lanes = m_timeline.Lanes().size();
  const int bottom = kTop + static_cast<int>(lanes) * kLanePitch;
  const int height = bottom + 70;
  const std::string width = std::to_string(kLeft + kPlotWidth + kRight);
  const std::string size = "width=\"" + width + "\" height=\"" + std::to_string(height) +
                           "\" viewBox=\"0 0 " + width + " " + std::to_string(height) + "\"";
  m_out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  m_out += "<svg xmlns=\"http://www.w3.org/2000/svg\" " + size +
           " font-family=\"sans-serif\" font-size=\"11\">\n"
           "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
  WriteTitle();
  if (!m_timeline.Bins().Empty()) WriteAxis();
  for (size_t lane = 0; lane < lanes; ++lane) {
    WriteLane(lane, kTop + static_cast<int>(lane) * kLanePitch);
  }
  if (!m_timeline.Bins().Empty()) WriteGaps(bottom);
  WriteProblems(bottom);
  WriteLegend(bottom + 36);
  m_out += "</svg>\n";
  return std::move(m_out);
}

void TimelineWriter::Text(double x, double y, const char* attributes, const std::string& text) {
  m_out += "<text x=\"" + Number(x) + "\" y=\"" + Number(y) + "\"" + attributes + ">";
  XmlText::AppendEscaped(m_out, text);
  m_out += "</text>\n";
}

void TimelineWriter::WriteTitle() {
  const Timeline& timeline = m_timeline;
  m_out += "<title>";
  XmlText::AppendEscaped(m_out, timeline.File());
  m_out += "</title>\n";
  Text(10, 22, " class=\"title\" font-size=\"15\" font-weight=\"bold\"", timeline.File());
  const TimelineBins& bins = timeline.Bins();
  const std::string when = bins.Empty() ? std::string("no record with a date-time")
                                        : DateTime(bins.First()) + " to " + DateTime(bins.Last()) +
                                              ", span " + Span(bins.First(), bins.Last());
  Text(10, 42, " class=\"subtitle\"",
       when + "; " + std::to_string(timeline.Lines()) + " lines, " +
           std::to_string(timeline.Records()) + " records, " +
           std::to_string(timeline.PlayedRecords()) + " play");
}

void TimelineWriter::WriteAxis() {
  const int bottom = kTop + static_cast<int>(m_timeline.Lanes().size()) * kLanePitch;
  m_out += "<g class=\"axis\" stroke=\"#ccc\">\n";
  for (const TimeAxis::Tick& tick : TimeAxis::Ticks(m_from, m_to)) {
    const std::string x = Number(X(tick.at));
    m_out += "<line x1=\"" + x + "\" x2=\"" + x + "\" y1=\"" + std::to_string(kTop - 6) +
             "\" y2=\"" + std::to_string(bottom) + "\"/>\n";
  }
  m_out += "</g>\n<g class=\"axis-labels\" text-anchor=\"middle\" fill=\"#333\">\n";
  for (const TimeAxis::Tick& tick : TimeAxis::Ticks(m_from, m_to)) {
    if (!tick.date.empty()) Text(X(tick.at), kTop - 24, "", tick.date);
    if (!tick.clock.empty()) Text(X(tick.at), kTop - 10, "", tick.clock);
  }
  m_out += "</g>\n";
  // Clear of the first tick's label, which is centred on the plot's edge.
  Text(kLeft - 40, kTop - 10, " text-anchor=\"end\" fill=\"#333\"", "UTC");
}

void TimelineWriter::WriteLane(size_t lane, int top) {
  const Timeline::Lane& info = m_timeline.Lanes()[lane];
  m_out += "<g class=\"lane\" data-lane=\"";
  XmlText::AppendEscaped(m_out, Timeline::LaneName(info));
  m_out += "\" data-records=\"" + std::to_string(info.records) + "\" transform=\"translate(0," +
           std::to_string(top) + ")\">\n<rect class=\"row\" x=\"" + std::to_string(kLeft) +
           "\" width=\"" + std::to_string(kPlotWidth) + "\" height=\"" +
           std::to_string(kLaneHeight) + "\" fill=\"#f4f6f8\"/>\n";
  Text(kLeft - 8, 14, " text-anchor=\"end\"",
       Timeline::LaneName(info) + " (" + std::to_string(info.records) + ")");
  const TimelineBins& bins = m_timeline.Bins();
  std::vector<uint64_t> pixels(kPlotWidth, 0);
  for (int64_t column = bins.LowColumn(); !bins.Empty() && column <= bins.HighColumn(); ++column) {
    const uint64_t count = bins.ColumnRecords(column) == 0 ? 0 : bins.Count(lane, column);
    if (count == 0) continue;
    pixels[Pixel((bins.ColumnFirst(column) + bins.ColumnLast(column)) / 2)] += count;
  }
  WriteMarks(pixels);
  m_out += "</g>\n";
}

// One path per density level, of one rectangle per run of neighbouring
// pixel columns at that level; the path's data-n counts its records.
void TimelineWriter::WriteMarks(const std::vector<uint64_t>& pixels) {
  const uint64_t busiest = *std::max_element(pixels.begin(), pixels.end());
  const auto level = [busiest](uint64_t count) {
    if (busiest <= 1) return kLevels - 1;
    return static_cast<int>((kLevels - 1) * std::log(static_cast<double>(count)) /
                            std::log(static_cast<double>(busiest)));
  };
  std::string paths[kLevels];
  uint64_t records[kLevels] = {};
  for (size_t start = 0; start < pixels.size();) {
    if (pixels[start] == 0) {
      ++start;
      continue;
    }
    const int runLevel = level(pixels[start]);
    size_t end = start;
    for (; end < pixels.size() && pixels[end] != 0 && level(pixels[end]) == runLevel; ++end) {
      records[runLevel] += pixels[end];
    }
    const std::string width = std::to_string(end - start);
    paths[runLevel] += "M" + std::to_string(kLeft + start) + " 0h" + width + "v" +
                       std::to_string(kLaneHeight) + "h-" + width + "z";
    start = end;
  }
  m_out += "<g class=\"marks\" fill=\"#2f6da3\">\n";
  for (int i = 0; i < kLevels; ++i) {
    if (paths[i].empty()) continue;
    m_out += "<path data-n=\"" + std::to_string(records[i]) + "\"";
    if (i < kLevels - 1) {
      m_out += " fill-opacity=\"" + Number(0.3 + 0.7 * i / (kLevels - 1)) + "\"";
    }
    m_out += " d=\"" + paths[i] + "\"/>\n";
  }
  m_out += "</g>\n";
}

void TimelineWriter::WriteGaps(int bottom) {
  const TimelineBins& bins = m_timeline.Bins();
  bool hasPrevious = false;
  double previousLast = 0.0;
  for (int64_t column = bins.LowColumn(); column <= bins.HighColumn(); ++column) {
    if (bins.ColumnRecords(column) == 0) continue;
    if (hasPrevious) WriteGap(previousLast, bins.ColumnFirst(column), bottom);
    hasPrevious = true;
    previousLast = bins.ColumnLast(column);
  }
}

void TimelineWriter::WriteGap(double from, double to, int bottom) {
  if (to - from < kGapShare * (m_to - m_from) || to - from < kGapMinimumSeconds) return;
  m_out += "<rect class=\"gap\" x=\"" + Number(X(from)) + "\" y=\"" + std::to_string(kTop) +
           "\" width=\"" + Number(X(to) - X(from)) + "\" height=\"" +
           std::to_string(bottom - kTop) + "\" fill=\"#999\" fill-opacity=\"0.15\"/>\n";
  Text((X(from) + X(to)) / 2, bottom + 14, " class=\"gap-label\" text-anchor=\"middle\"",
       "gap " + Span(from, to));
}

void TimelineWriter::WriteProblems(int bottom) {
  for (const Timeline::Problem& problem : m_timeline.Problems()) {
    const ProblemStyle& style = StyleOf(problem.kind);
    const std::string x = Number(problem.placed ? X(problem.time) : kLeft);
    m_out += std::string("<line class=\"problem\" data-kind=\"") + style.kind + "\" data-line=\"" +
             std::to_string(problem.line) + "\" x1=\"" + x + "\" x2=\"" + x + "\" y1=\"" +
             std::to_string(kTop - 4) + "\" y2=\"" + std::to_string(bottom) + "\" stroke=\"" +
             style.colour + "\" stroke-width=\"2\"" +
             (problem.placed ? "" : " stroke-dasharray=\"4 3\"") + "><title>";
    XmlText::AppendEscaped(m_out, "line " + std::to_string(problem.line) + ": " + problem.message);
    m_out += "</title></line>\n";
  }
}

void TimelineWriter::WriteLegend(int top) {
  double x = 10;
  for (const ProblemStyle& style : kProblemStyles) {
    m_out += "<rect x=\"" + Number(x) + "\" y=\"" + std::to_string(top - 9) +
             "\" width=\"10\" height=\"10\" fill=\"" + style.colour + "\"/>\n";
    Text(x + 14, top, "", style.legend);
    x += 190;
  }
  Text(x, top, " fill=\"#666\"",
       "shaded: no record for a minute and " +
           std::to_string(static_cast<int>(kGapShare * 100)) + "% of the span or longer");
  std::string notes;
  if (m_timeline.Unplaced() > 0) {
    notes += std::to_string(m_timeline.Unplaced()) + " records without a date-time are not drawn. ";
  }
  if (m_timeline.ProblemsNotKept() > 0) {
    notes += std::to_string(m_timeline.ProblemsNotKept()) + " more problems are not drawn.";
  }
  if (!notes.empty()) Text(10, top + 20, " class=\"notes\"", notes);
}

}  // namespace PelorinCheck

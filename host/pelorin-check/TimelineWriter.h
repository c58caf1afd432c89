#pragma once
// TimelineWriter: draws a Timeline as a self-contained SVG picture: a title
// with the file name, its span and record counts, a UTC time axis, one row
// (lane) per tag or "$TOT" method with a mark on every pixel column that
// holds records (its opacity tells how many, relative to the lane's
// busiest column; one path per opacity level keeps the file small), long
// gaps shaded and labelled with their length, and the problems as coloured
// lines at their place. The size of the picture does not depend on the
// number of records. Reads the Timeline it is given, which must outlive
// it; one thread.

#include <cstdint>
#include <string>
#include <vector>

#include "host/pelorin-check/Timeline.h"

namespace PelorinCheck {

class TimelineWriter {
 public:
  static constexpr int kPlotWidth = 1000;  // pixels
  // A gap is labelled when no record falls into this part of the span, and
  // into at least this many seconds.
  static constexpr double kGapShare = 0.05;
  static constexpr double kGapMinimumSeconds = 60.0;

  explicit TimelineWriter(const Timeline& timeline);

  // The whole SVG document. Call once.
  std::string Svg();

 private:
  double X(double time) const;
  int Pixel(double time) const;
  void WriteTitle();
  void WriteAxis();
  void WriteLane(size_t lane, int top);
  void WriteMarks(const std::vector<uint64_t>& pixels);
  void WriteGaps(int bottom);
  void WriteGap(double from, double to, int bottom);
  void WriteProblems(int bottom);
  void WriteLegend(int top);
  void Text(double x, double y, const char* attributes, const std::string& text);

  const Timeline& m_timeline;
  double m_from = 0.0;  // the times at the plot's edges
  double m_to = 1.0;
  std::string m_out;
};

}  // namespace PelorinCheck

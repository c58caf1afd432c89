#pragma once
// ShiftedText: moves the times written in a record by a number of seconds,
// its time stamp and the "timeStamp" values of a "$TMC" payload together,
// and leaves every other byte of the line as it was. A number keeps the
// precision and the decimal mark it was written with (1416131460,25 moved
// by 1.5 s is 1416131461,75; a whole number stays whole, the move rounded
// to the second). The "timeStamp" values are found with the module's own
// "$TMC" key table and payload grammar; a payload the module refuses is
// left alone, as playback drops it anyway. One thread.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "producers/TmcMessageProducer.h"

namespace PelorinEdit {

class ShiftedText {
 public:
  // `text` (a plain decimal number: sign, digits, one "." or "," and digits)
  // moved by `seconds` into `out`; false when `text` is no such number or
  // has more than 9 decimals or 18 digits.
  static bool Decimal(std::string_view text, double seconds, std::string* out);

  // The line of a record (without its line end) with its time stamp
  // `timeText` (the bytes before the first blank) replaced by `newTime` and,
  // for a "$TMC" record whose payload `payload` starts at `payloadOffset`,
  // each "timeStamp" value moved by `seconds`.
  std::string Line(std::string_view line, size_t timeTextLength, const std::string& newTime,
                   const std::string& tag, const std::string& payload, size_t payloadOffset,
                   double seconds);

  // A record's time text moved by `seconds`: as written when it is a plain
  // decimal, else the shortest form of `time` + `seconds` for a number in
  // another form, unchanged for a text that is no number (playback reads 0).
  static std::string Time(std::string_view text, double time, double seconds);

 private:
  // The TMC producer, noting where each "timeStamp" value stands.
  class TimeStamps : public Quillan::TmcMessageProducer {
   public:
    int SetField(int field, const std::string& value) override;
    std::vector<std::pair<size_t, size_t>> spans;  // offset, length in the payload
  };

  TimeStamps m_timeStamps;
};

}  // namespace PelorinEdit

#pragma once
// RecordChecks: the checks of one record that the reader accepted: its time
// stamp (does it convert, does it go backwards), its tag (does any consumer
// take it) and its payload, run through the very producers that playback
// uses: the record dispatcher's "$TMC" and "$TSL" producers with their
// failure report and every value they store (CheckedProducer), and the
// online traffic producer's check of a "$TOT" call (method, argument count
// and integer arguments, without a service). It also checks that every
// "setNewData" file exists in the TPEG directory and stays inside it.
//
// One object per events file, fed its records in file order; it keeps only
// the previous record's time stamp. One thread.

#include <cstdint>
#include <string>
#include <vector>

#include "host/pelorin-check/CheckedProducer.h"
#include "host/pelorin-check/Diagnostic.h"
#include "host/common/LineShape.h"
#include "host/pelorin-check/TpegDirectory.h"
#include "player/Record.h"
#include "producers/RecordDispatcher.h"
#include "producers/TotCall.h"

namespace PelorinCheck {

using PelorinTools::LineShape;

class RecordChecks {
 public:
  // `eventsPath`: where the events file is, for the default TPEG directory
  // (empty: the current folder). `tpegs` must outlive this object.
  RecordChecks(std::string file, std::string eventsPath, const TpegDirectory& tpegs);

  // Appends what is wrong with the record on `line` to `out`. `shape` is
  // what the tap saw of that line. False when the record reaches no
  // consumer (dropped).
  bool Check(uint64_t line, const Quillan::Record& record, const LineShape& shape,
             std::vector<Diagnostic>& out);

 private:
  void CheckTime(uint64_t line, double time, const LineShape& shape, std::vector<Diagnostic>& out);
  bool CheckTag(uint64_t line, const Quillan::Record& record, std::vector<Diagnostic>& out);
  bool CheckPayload(uint64_t line, const Quillan::Record& record,
                    Quillan::PayloadProducer& producer, CheckedProducer* checked,
                    std::vector<Diagnostic>& out);
  bool CheckOnlineCall(uint64_t line, const Quillan::Record& record, std::vector<Diagnostic>& out);
  void CheckIntegerArguments(uint64_t line, const Quillan::TotCall& call,
                             std::vector<Diagnostic>& out);
  void CheckTpegFile(uint64_t line, const std::string& fileName, std::vector<Diagnostic>& out);

  Diagnostic Make(uint64_t line, DiagnosticKind kind, std::string message) const;

  std::string m_file;
  std::string m_eventsPath;
  const TpegDirectory& m_tpegs;
  // Used only for its producers (FindProducer); nothing is dispatched.
  Quillan::RecordDispatcher m_dispatcher;
  CheckedProducer m_tmc;
  CheckedProducer m_tsl;
  uint64_t m_payloadColumn = 0;  // of the record being checked
  bool m_hasPrevious = false;
  double m_previousTime = 0.0;
  uint64_t m_previousLine = 0;
};

}  // namespace PelorinCheck

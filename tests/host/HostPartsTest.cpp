// The host's own parts: output items, the simulated data
// pool's read-back, status line, private configuration, trace following.

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "CITypesFactory.h"
#include "DataPoolDirectory.h"
#include "DataPoolProviderInterface.h"
#include "EndSignal.h"
#include "JsonValue.h"
#include "Output.h"
#include "Reporter.h"
#include "SimulatedDataPool.h"
#include "StatusLine.h"
#include "StorageRoot.h"
#include "TraceFollower.h"
#include "tracing/Channel.h"

namespace PelorinHost {
namespace {

using pelorin_tool_test::JsonValue;

// Collects what a Reporter writes, through a pipe.
class ReporterCapture {
 public:
  explicit ReporterCapture(bool json) {
    EXPECT_EQ(pipe(m_fds), 0);
    m_output = std::make_unique<Output>(m_fds[1], m_fds[1]);
    m_reporter = std::make_unique<Reporter>(*m_output, json);
  }
  ~ReporterCapture() {
    close(m_fds[0]);
    close(m_fds[1]);
  }
  Reporter& reporter() { return *m_reporter; }
  // The lines written so far; JSON lines must parse and start with "t" and
  // "type", and come back without their "t".
  std::vector<std::string> Lines() {
    m_output->Flush();
    char buffer[65536];
    const ssize_t got = read(m_fds[0], buffer, sizeof(buffer));
    const std::string text(buffer, got > 0 ? static_cast<size_t>(got) : 0);
    std::vector<std::string> lines;
    size_t start = 0;
    for (size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
      std::string line = text.substr(start, end - start);
      if (line[0] == '{') {
        JsonValue value;
        EXPECT_TRUE(JsonValue::Parse(line, &value)) << line;
        EXPECT_EQ(value.members.size() >= 2 ? value.members[0].first + value.members[1].first : "",
                  "ttype") << line;
        line = "{" + line.substr(line.find(',') + 1);
      }
      lines.push_back(line);
    }
    return lines;
  }

 private:
  int m_fds[2] = {-1, -1};
  std::unique_ptr<Output> m_output;
  std::unique_ptr<Reporter> m_reporter;
};

TEST(HostReporter, EveryItemAsJson) {
  using asi::navigation::trafficinfo::sTIServiceDescription;
  using asi::navigation::trafficinfo::sTIServiceIdentifiers;
  using asi::navigation::trafficinfo::sTIServiceListEntry;
  ReporterCapture capture(true);
  Reporter& reporter = capture.reporter();
  Quillan::TmcMessageData message;
  message.timeStamp = 1416131460;
  reporter.Tmc(message);
  reporter.Tmc(Quillan::TmcMessageData());
  // A message's own time stamp is no playback clock.
  EXPECT_EQ(reporter.RecordTime(), 0);
  auto entry = std::make_shared<sTIServiceListEntry>();
  entry->serviceType = 1;
  entry->monitorState = 1;
  entry->serviceDescription = std::make_shared<sTIServiceDescription>();
  entry->serviceDescription->sd_SID = 34;
  entry->serviceDescription->sd_LTCC = 13;
  entry->serviceDescription->sd_SPN = CITypesFactory::createString("RADIO 1", 3);
  entry->serviceIdentifiers = std::make_shared<sTIServiceIdentifiers>();
  entry->serviceIdentifiers->SS_ID = -2;
  Quillan::ServiceListEntries entries{entry};
  reporter.ServiceList(&entries);
  reporter.ServiceList(nullptr);
  reporter.OnlineTrafficCall("setNewData", {CallArgument::Text("/fs/sda0/quillan//a.bin")});
  reporter.OnlineTrafficCall("setTimeoutForFallback", {CallArgument::Number(-30)});
  reporter.OnlineTrafficCall("getInventory", {});
  reporter.DataPoolValue(0x4d000000, true, 13);
  reporter.DataPoolValue(0x4d000001, false, 0);
  reporter.Event(0x4d000000);
  reporter.Trace("Pelorin", 3, "a\tb");
  reporter.Finished();
  ScanResult stopped;
  stopped.complete = false;
  stopped.records = 12;
  stopped.stopLine = 13;
  stopped.reason = "empty line";
  reporter.SetFileScan(stopped);
  reporter.Finished();
  const std::vector<std::string> expected = {
      "{\"type\":\"tmc\",\"timeStamp\":1416131460,\"ltn\":0,\"sid\":0,\"pid\":0,\"tmcData\":null}",
      "{\"type\":\"tmc\",\"timeStamp\":0,\"ltn\":0,\"sid\":0,\"pid\":0,\"tmcData\":null}",
      "{\"type\":\"serviceList\",\"entries\":[{\"serviceType\":1,\"sid\":34,\"mgs\":0,"
      "\"ltcc\":13,\"ltn\":0,\"pid\":0,\"st\":0,\"spn\":\"RADIO 1\","
      "\"senderName\":null,\"q\":0,\"sidA\":0,\"sidB\":0,\"sidC\":0,\"ssId\":-2,"
      "\"monitorState\":1}]}",
      "{\"type\":\"serviceList\",\"entries\":[]}",
      "{\"type\":\"onlineTraffic\",\"call\":\"setNewData\",\"args\":[\"/fs/sda0/quillan//a.bin\"]}",
      "{\"type\":\"onlineTraffic\",\"call\":\"setTimeoutForFallback\",\"args\":[-30]}",
      "{\"type\":\"onlineTraffic\",\"call\":\"getInventory\",\"args\":[]}",
      "{\"type\":\"dataPool\",\"id\":\"0x4d000000\",\"value\":13}",
      "{\"type\":\"dataPool\",\"id\":\"0x4d000001\",\"value\":null}",
      "{\"type\":\"event\",\"id\":\"0x4d000000\"}",
      "{\"type\":\"trace\",\"channel\":\"Pelorin\",\"level\":3,\"text\":\"a\\tb\"}",
      "{\"type\":\"finished\"}",
      "{\"type\":\"finished\",\"complete\":false,\"records\":12,\"stopLine\":13,"
      "\"reason\":\"empty line\""};
  std::vector<std::string> lines = capture.Lines();
  ASSERT_FALSE(lines.empty());
  // The wall time is the run's own; the figures that follow it are checked end to end.
  lines.back().erase(std::min(lines.back().find(",\"wallSeconds\":"), lines.back().size() - 1));
  EXPECT_EQ(lines, expected);
  EXPECT_EQ(reporter.RecordsPlayed(), 7u);
  // The published tick is the record time the status line shows.
  EXPECT_EQ(reporter.RecordTime(), 13);
}

TEST(HostReporter, ReadableLinesOnePerItem) {
  ReporterCapture capture(false);
  Quillan::TmcMessageData message;
  message.sid = 34;
  message.tmcData = CITypesFactory::createUInt8Array(0);
  message.tmcData->append(0xab);
  message.tmcData->append(0x01);
  capture.reporter().Tmc(message);
  capture.reporter().Trace("Pelorin", 2, "line\nbreak");
  // Bytes of a recording cannot retitle or recolour the terminal.
  capture.reporter().OnlineTrafficCall("setNewData", {CallArgument::Text("\x1b]0;x\x07\xff.bin")});
  capture.reporter().Trace("Pelorin", 2, "tag \x1b[31m");
  const auto lines = capture.Lines();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_NE(lines[0].find("sid=34"), std::string::npos);
  EXPECT_NE(lines[0].find("tmcData=ab01"), std::string::npos);  // as in JSON
  EXPECT_NE(lines[1].find("line\\nbreak"), std::string::npos);
  for (const std::string& line : lines) {
    EXPECT_EQ(line.find_first_of("\x1b\x07\xff"), std::string::npos) << line;
  }
}

// A provider that serves 0x4d000000 and checks that it is read inside its
// read section.
class FakeProvider : public DataPoolProviderInterface {
 public:
  void LockRead() override { ++m_readers; }
  void UnlockRead() override { --m_readers; }
  bool GetValue(uint32_t id, int32_t* value) override {
    EXPECT_EQ(m_readers, 1);
    *value = 1416131470;
    return id == 0x4d000000;
  }
  bool GetIntAt(uint32_t, uint32_t, int32_t*) override { return false; }
  bool GetText(uint32_t, std::string*) override { return false; }
  bool GetTextAt(uint32_t, uint32_t, std::string*) override { return false; }
  bool GetBuffer(uint32_t, const uint8_t**, uint32_t*) override { return false; }
  bool GetBufferAt(uint32_t, uint32_t, const uint8_t**, uint32_t*) override { return false; }
  uint32_t GetValueType(uint32_t) override { return 0; }
  uint32_t GetCount(uint32_t) override { return 0; }
  bool GetRange(uint32_t, uint32_t*, uint32_t*) override { return false; }
  void StartUp() override {}
  void ShutDown() override {}
  void LockWrite() override {}
  void UnlockWrite() override {}
  void PublishChanges() override {}

  int m_readers = 0;
};

TEST(HostDataPool, ChangeReportsAreReadBackFromTheProvider) {
  ReporterCapture capture(true);
  SimulatedDataPool pool(capture.reporter());
  FakeProvider provider;
  DataPoolDirectory::EnterProvider(SimulatedDataPool::kPlaybackProviderId, &provider);
  const uint32_t ids[] = {0x4d000000, 0x4d000001};
  pool.ReportChangedValues(ids, 2);
  pool.ReportChangedValues(ids, 0);
  DataPoolDirectory::LeaveProvider(SimulatedDataPool::kPlaybackProviderId, &provider);
  EXPECT_EQ(provider.m_readers, 0);
  EXPECT_EQ(capture.Lines(),
            (std::vector<std::string>{
                "{\"type\":\"dataPool\",\"id\":\"0x4d000000\",\"value\":1416131470}",
                "{\"type\":\"dataPool\",\"id\":\"0x4d000001\",\"value\":null}"}));
  // Without the module's speed table the speed cannot be set.
  EXPECT_FALSE(pool.SetSpeedPercent(150));
}

TEST(HostStatusLine, ShowsUtcTimeRecordsAndSpeed) {
  EXPECT_EQ(StatusLine::FormatUtc(0), "--");
  StatusInfo info;
  info.recordTime = 1416131460;
  info.records = 42;
  info.speed = "1.5x";
  info.state = "playing";
  EXPECT_EQ(StatusLine::Format(info), "records 42  2014-11-16 09:51:00 UTC  speed 1.5x  playing");
  // The line reached, once known, and the time left at the speed.
  info.line = 120;
  info.lines = 480;
  info.leftMs = 187000;
  EXPECT_EQ(StatusLine::Format(info),
            "line 120 of 480 (25 %)  2014-11-16 09:51:00 UTC  speed 1.5x  left 3m07s  playing");
}

TEST(HostStorageRoot, PrivateConfigurationFromOptions) {
  PlaybackSettings settings;
  settings.eventsFile = "/data/rec/a.txt";
  settings.tpegsDir = "/data/tpeg";
  settings.interactive = false;
  settings.playbackSpeed = 2.5;
  const std::string text = StorageRoot::ConfigText(settings);
  for (const char* line : {"eventsFile=/data/rec/a.txt", "tpegsDir=/data/tpeg",
                           "interactive=false", "playbackSpeed=2.5", "autostart=false"}) {
    EXPECT_NE(text.find("\n" + std::string(line) + "\n"), std::string::npos) << line;
  }
  settings.playbackSpeed = 0.0;
  EXPECT_EQ(StorageRoot::ConfigText(settings).find("playbackSpeed"), std::string::npos);

  StorageRoot root;
  std::string error;
  ASSERT_TRUE(root.MakePrivate(settings, &error)) << error;
  const std::string folder = root.Path();
  EXPECT_EQ(access((folder + "/quillan/Pelorin.cfg").c_str(), R_OK), 0);
  root.Remove();
  EXPECT_NE(access(folder.c_str(), F_OK), 0);
  EXPECT_FALSE(root.UseFolder("/nonexistent-pelorin-folder", &error));
}

TEST(HostTraceFollower, LearnsTheRunnerChoice) {
  const struct {
    const char* text;
    RunnerKind kind;
    double speed;
  } cases[] = {
      {"DataPlayer: using InteractiveRunner autostart=0, speed=2.5", RunnerKind::kInteractive, 2.5},
      {"DataPlayer: using RealTimeRunner speed=4", RunnerKind::kRealtime, 4.0},
      {"DataPlayer: using BatchedRunner", RunnerKind::kBatched, 0.0},
  };
  RunnerKind kind = RunnerKind::kUnknown;
  double speed = 0.0;
  for (const auto& c : cases) {
    EXPECT_TRUE(TraceFollower::ParseRunnerChoice(c.text, &kind, &speed)) << c.text;
    EXPECT_EQ(kind, c.kind) << c.text;
    EXPECT_DOUBLE_EQ(speed, c.speed) << c.text;
  }
  EXPECT_FALSE(TraceFollower::ParseRunnerChoice("Player::Run", &kind, &speed));
}

TEST(HostTraceFollower, FinishedReachesTheMainThreadAndFailuresAreKept) {
  ReporterCapture capture(true);
  EndSignal endSignal;
  TraceFollower follower(capture.reporter(), endSignal, 3);
  follower.Install();
  tracing::Channel channel("Pelorin", 7, 2);
  channel.log(2, "Runner::NotifyFinished");
  channel.log(4, "DataPlayer::CreateInput: failed to open /x, error=1");
  channel.log(4, "Player::Initialize: Failed to create input.");
  follower.Remove();
  EXPECT_EQ(endSignal.WaitFor(0), EndSignal::kFinished);
  EXPECT_EQ(follower.FinishedCount(), 1u);
  EXPECT_EQ(follower.FirstFailure(), "DataPlayer::CreateInput: failed to open /x, error=1");
  const auto lines = capture.Lines();
  // "finished", then the two failures as trace items (level 3 and above).
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], "{\"type\":\"finished\"}");
  EXPECT_NE(lines[1].find("\"level\":4"), std::string::npos);
}

}  // namespace
}  // namespace PelorinHost

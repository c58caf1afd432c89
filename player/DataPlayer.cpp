#include "player/DataPlayer.h"

#include "player/PlayerLifecycle.h"
#include "player/Runner.h"
#include "producers/OnlineTrafficProducer.h"
#include "producers/RecordDispatcher.h"
#include "runtime/DateTime.h"

namespace Quillan {
namespace {

// Offsets of the two date-times in the host's traffic message, each month,
// day, hour and minute, one byte apiece.
constexpr int kFirstDateTime = 14;
constexpr int kSecondDateTime = 18;

// Moves one date-time by `offset` seconds. The message carries no year or
// second: those of `now` stand in, so month and year roll over as they do
// in the present. A month or day of 0 marks an unused date-time.
void ShiftDateTime(uint8_t* field, int32_t offset, const DateTime& now) {
  if (field[0] == 0 || field[1] == 0) return;
  DateTime recorded;
  recorded.year = now.year;
  recorded.month = field[0];
  recorded.day = field[1];
  recorded.hour = field[2];
  recorded.minute = field[3];
  recorded.second = now.second;
  const uint32_t shiftedSeconds = DateTimeToSeconds(recorded) + static_cast<uint32_t>(offset);
  DateTime shifted;
  if (!DateTimeFromSeconds(shifted, shiftedSeconds)) return;
  field[0] = static_cast<uint8_t>(shifted.month);
  field[1] = static_cast<uint8_t>(shifted.day);
  field[2] = static_cast<uint8_t>(shifted.hour);
  field[3] = static_cast<uint8_t>(shifted.minute);
}

}  // namespace

DataPlayer::DataPlayer(const Config& config) : Player(config), m_dateTimeSource(&CurrentDateTime) {
  m_onlineProducer = new OnlineTrafficProducer();
  m_onlineProducer->SetTpegsDir(GetTpegsDirPath());
  m_dispatcher = new RecordDispatcher();
  m_lifecycle = new PlayerLifecycle();
}

DataPlayer::~DataPlayer() {
  // The runner's steps call the consumers: playback ends before they go. A
  // step may be waiting for an online traffic answer that never comes: the
  // runner turns inert first, so that the step ends when its wait is given
  // up, and only then does the producer give up its waits.
  if (m_runner != nullptr) m_runner->ShutDown();
  if (m_onlineProducer != nullptr) m_onlineProducer->AbandonWaits();
  ShutDownPlayback();
  delete m_lifecycle;
  m_lifecycle = nullptr;
  delete m_dispatcher;
  m_dispatcher = nullptr;
  delete m_onlineProducer;
  m_onlineProducer = nullptr;
}

std::vector<RecordConsumer*> DataPlayer::GetConsumers() {
  std::vector<RecordConsumer*> consumers;
  if (m_dispatcher != nullptr) consumers.push_back(m_dispatcher);
  if (m_onlineProducer != nullptr) consumers.push_back(m_onlineProducer);
  return consumers;
}

int DataPlayer::Run() { return Player::Run(); }

OnlineTrafficReply* DataPlayer::GetOnlineTrafficReply() { return m_onlineProducer; }

RecordDispatcher* DataPlayer::GetRecordDispatcher() { return m_dispatcher; }

comm::Lifecycle* DataPlayer::GetLifecycle() { return m_lifecycle; }

TimeAdjuster* DataPlayer::GetTimeAdjuster() { return this; }

uint32_t DataPlayer::TimeBaseFor(uint8_t kind) const {
  if (kind == 1 || kind == 2) {
    return m_onlineProducer != nullptr ? m_onlineProducer->GetLastDataTime() : 0u;
  }
  if (kind == 0) return m_dispatcher != nullptr ? m_dispatcher->GetLastTmcTime() : 0u;
  return 0u;
}

void DataPlayer::AdjustMessageTimes(uint8_t* message) {
  if (message == nullptr) return;
  const uint32_t timeBase = TimeBaseFor(message[0]);
  if (timeBase == 0) return;
  DateTime now;
  m_dateTimeSource.load()(now);
  const int32_t offset = static_cast<int32_t>(DateTimeToSeconds(now) - timeBase);
  ShiftDateTime(message + kFirstDateTime, offset, now);
  ShiftDateTime(message + kSecondDateTime, offset, now);
}

}  // namespace Quillan

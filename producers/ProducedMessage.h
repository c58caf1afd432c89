#pragma once
// ProducedMessage: what a payload producer builds from one record, ready to
// go to every traffic-data listener. It shares its data with the producer
// that built it, so a listener may keep the shared pointer it receives after
// the call. Owned by whoever asked the producer for it (the RecordDispatcher,
// which destroys it after delivery). Used on the work loop's thread.
//
// Messages are made and destroyed once per record: the memory of the last
// one destroyed is kept for the next, so that steady playback does not
// allocate (any thread may make or destroy one).

#include <cstddef>

namespace Quillan {

class TrafficDataListener;

class ProducedMessage {
 public:
  virtual ~ProducedMessage() = default;
  // Hands the message's data to one listener.
  virtual void DeliverTo(TrafficDataListener& listener) = 0;

  static void* operator new(std::size_t size);
  static void operator delete(void* memory, std::size_t size);
};

}  // namespace Quillan

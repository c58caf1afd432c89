#pragma once
// BackgroundScan: runs the EventsScan of the events file on a thread of its
// own while the module already plays, so that playback does not wait for a
// read of the whole file. Where playback stops is needed only when the
// "finished" item is written, and the line count only for a status line.
// Start (the main thread) opens the file; Done may be asked from any thread,
// Result waits for the scan and may be called from any thread. Stop (also
// the destructor) cuts the scan short and ends the thread.

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "EventsScan.h"
#include "host/recording/Selection.h"

namespace PelorinHost {

using PelorinRecording::Selection;

class BackgroundScan {
 public:
  explicit BackgroundScan(const Selection& selection) : m_selection(selection) {}
  ~BackgroundScan() { Stop(); }
  BackgroundScan(const BackgroundScan&) = delete;
  BackgroundScan& operator=(const BackgroundScan&) = delete;

  // Opens `path` and starts the scan; false with `error` (the OS reason)
  // when the file cannot be opened or is a directory.
  bool Start(const std::string& path, std::string* error);
  void Stop();

  bool Done() const { return m_done.load(std::memory_order_acquire); }
  // The scan's result, once it has ended; a part that ends before the stop
  // counts as complete.
  const ScanResult& Result();

 private:
  void Run();

  const Selection& m_selection;
  PelorinRecording::RecordingReader m_reader;
  std::thread m_thread;
  std::atomic<bool> m_cancel{false};
  std::atomic<bool> m_done{false};
  std::mutex m_lock;
  std::condition_variable m_ended;
  ScanResult m_result;  // written by the scan before m_done
};

}  // namespace PelorinHost

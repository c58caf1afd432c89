#pragma once
// Output: the host's standard output (items) and its status line on standard
// error. Every item is written as one whole line under one lock, so lines
// from the module's threads and the host's threads never interleave.
// When standard output is not a terminal, lines collect in a buffer that is
// written when full and by Flush, which the main thread calls a few times a
// second; on a terminal every line is written at once. A status line shown
// on a terminal is erased before an item line goes out and redrawn by the
// next ShowStatus.
// Close (the main thread, once the run's end is decided) writes what was
// written before and drops every later item but the module's traces, which
// tell of its shutdown. A failed write drops every later line and keeps the
// error for WriteError. Thread-safe; owns neither descriptor.

#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>

namespace PelorinHost {

class Output {
 public:
  Output(int itemFd, int statusFd);
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  // One item line made under the output's lock, for items whose making
  // must keep the order of the lines (the reporter reads each record item's
  // origin while it holds one). Append to Text(); the destructor ends the
  // line and writes it as WriteLine would, or drops it when it is empty or
  // was Refused() when it began. One at a time per thread.
  class Line {
   public:
    explicit Line(Output& output);
    ~Line();
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;
    std::string& Text() { return m_output.m_buffer; }
    // The output refused items or was closed when this line began: it will
    // be dropped, even when a stop comes while it is made.
    bool Refused() const { return m_refused; }
    // Drops this line, whatever the output does.
    void Drop() { m_refused = true; }

   private:
    Output& m_output;
    std::lock_guard<std::mutex> m_guard;
    size_t m_start;
    bool m_refused;
  };

  // Writes `line` and a line feed.
  void WriteLine(const char* line, size_t size);
  void WriteLine(const std::string& line) { WriteLine(line.data(), line.size()); }
  // A trace item: written as WriteLine does, after Close and RefuseLines too.
  void WriteTrace(const std::string& line);
  void Flush();
  // Flushes, then drops every later item line but traces.
  void Close();
  // Drops every later item line but traces; what was written before still
  // goes out at the next Flush. Only sets a flag: safe in a signal handler.
  void RefuseLines() { m_refusing.store(true); }

  // The errno of the first failed write of an item line, 0 when none.
  int WriteError() const { return m_writeError.load(); }
  // True when the reader of a pipe on the item descriptor went away, seen
  // without writing (the write end of a pipe polls POLLERR then).
  bool ReaderGone() const;

  // Replaces the status line on the status descriptor (a terminal).
  void ShowStatus(const std::string& status);
  void ClearStatus();
  // A whole line on the status descriptor (not a terminal: no redraw).
  void WriteStatusLine(const std::string& text);

  // False once an item line has erased the status line.
  bool StatusShown();
  bool ItemsToTerminal() const { return m_itemsToTerminal; }

 private:
  static constexpr size_t kBufferSize = 64 * 1024;

  void FlushLocked();
  void EraseStatusLocked();
  bool RefusesItemsLocked() const { return m_failed || m_closed || m_refusing.load(); }
  // Ends the line that began at `start` of the buffer, or drops it.
  void EndLineLocked(size_t start, bool drop);

  std::mutex m_lock;
  int m_itemFd;
  int m_statusFd;
  bool m_itemsToTerminal;
  bool m_statusShown = false;
  bool m_closed = false;  // by Close: traces only
  bool m_failed = false;  // by a failed write: nothing more
  std::atomic<int> m_writeError{0};
  std::atomic<bool> m_refusing{false};
  std::string m_buffer;
};

}  // namespace PelorinHost

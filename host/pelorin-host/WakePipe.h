#pragma once
// WakePipe: ends the poll() of a thread that waits on descriptors of its
// own. The thread polls ReadFd() for POLLIN beside them; Wake makes it
// readable for good, so that the thread sees it however often it polls.
// Open, Wake and Close run on the owner's thread; the destructor closes.

namespace PelorinHost {

class WakePipe {
 public:
  WakePipe() = default;
  ~WakePipe() { Close(); }
  WakePipe(const WakePipe&) = delete;
  WakePipe& operator=(const WakePipe&) = delete;

  // False, with errno set, when no pipe could be made.
  bool Open();
  // Only the first call after Open writes.
  void Wake();
  int ReadFd() const { return m_fds[0]; }
  void Close();

 private:
  int m_fds[2] = {-1, -1};
  bool m_woken = false;
};

}  // namespace PelorinHost

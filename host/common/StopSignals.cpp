#include "host/common/StopSignals.h"

#include <signal.h>
#include <unistd.h>

#include <initializer_list>

namespace PelorinTools {

static_assert(std::atomic<int>::is_always_lock_free, "the handler needs a lock-free flag");

std::atomic<int> StopSignals::s_caught{0};
std::atomic<void (*)(int)> StopSignals::s_onStop{nullptr};

void StopSignals::Install(void (*onStop)(int number)) {
  s_onStop.store(onStop);
  struct sigaction action {};
  action.sa_handler = &StopSignals::OnSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = 0;  // no SA_RESTART: blocked reads and writes return
  for (int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGALRM}) {
    sigaction(number, &action, nullptr);
  }
  signal(SIGPIPE, SIG_IGN);
}

void StopSignals::OnSignal(int number) {
  int none = 0;
  if (number != SIGALRM && s_caught.compare_exchange_strong(none, number)) {
    void (*onStop)(int) = s_onStop.load();
    if (onStop != nullptr) onStop(number);
  }
  // A signal that lands after a loop's last look but before it blocks in a
  // read or write would go unseen until that call returned: once stopped,
  // an alarm a second interrupts it.
  if (s_caught.load() != 0) alarm(1);
}

}  // namespace PelorinTools

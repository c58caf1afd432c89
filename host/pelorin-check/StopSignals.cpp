#include "host/pelorin-check/StopSignals.h"

#include <signal.h>
#include <unistd.h>

#include <initializer_list>

namespace PelorinCheck {

volatile std::sig_atomic_t StopSignals::s_caught = 0;

void StopSignals::Install() {
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
  if (number != SIGALRM && s_caught == 0) s_caught = number;
  // A signal that lands after the checker's last look but before it blocks
  // in a read would go unseen until more input came: once stopped, an alarm
  // a second interrupts that read.
  if (s_caught != 0) alarm(1);
}

}  // namespace PelorinCheck

#include "host/pelorin-check/StopSignals.h"

#include <signal.h>

#include <initializer_list>

namespace PelorinCheck {

volatile std::sig_atomic_t StopSignals::s_caught = 0;

void StopSignals::Install() {
  struct sigaction action {};
  action.sa_handler = &StopSignals::OnSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = 0;  // no SA_RESTART: blocked reads and writes return
  for (int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaction(number, &action, nullptr);
  signal(SIGPIPE, SIG_IGN);
}

void StopSignals::OnSignal(int number) {
  if (s_caught == 0) s_caught = number;
}

}  // namespace PelorinCheck

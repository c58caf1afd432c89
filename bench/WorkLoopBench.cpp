// Posts and executions per second through one work loop, with one and with
// several posting threads. Each iteration posts a batch at priority 16 from
// the posting threads and waits until the loop has run all of it; "posts/s"
// counts the posting time only, "executions/s" the time until the last item
// ran.

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "runtime/Event.h"
#include "runtime/WorkHandler.h"
#include "runtime/WorkLoop.h"

namespace {

using Clock = std::chrono::steady_clock;

// Sets `done` when it has run the expected number of times.
class CountingHandler : public Quillan::WorkHandler {
 public:
  void Expect(int64_t count) {
    done.Reset();
    m_remaining = count;
  }
  void Execute() override {
    if (--m_remaining == 0) done.Set();
  }
  void Release() override {}

  Quillan::Event done;

 private:
  std::atomic<int64_t> m_remaining{0};
};

void PostAndRun(benchmark::State& state, bool delayed) {
  const int posters = static_cast<int>(state.range(0));
  const int perPoster = static_cast<int>(state.range(1));
  CountingHandler handler;
  Quillan::WorkLoop loop;
  loop.Start();
  double postingSeconds = 0;
  int64_t posted = 0;
  for (auto _ : state) {
    handler.Expect(static_cast<int64_t>(posters) * perPoster);
    const Clock::time_point start = Clock::now();
    std::vector<std::thread> threads;
    for (int poster = 0; poster < posters; ++poster) {
      threads.emplace_back([&] {
        for (int index = 0; index < perPoster; ++index) {
          if (delayed) {
            loop.PostDelayed(&handler, 0, 16);
          } else {
            loop.Post(&handler, 16);
          }
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    const Clock::time_point postedAll = Clock::now();
    handler.done.Wait();
    const Clock::time_point ranAll = Clock::now();
    state.SetIterationTime(std::chrono::duration<double>(ranAll - start).count());
    postingSeconds += std::chrono::duration<double>(postedAll - start).count();
    posted += static_cast<int64_t>(posters) * perPoster;
  }
  state.counters["posts/s"] = benchmark::Counter(static_cast<double>(posted) / postingSeconds);
  state.counters["executions/s"] =
      benchmark::Counter(static_cast<double>(posted), benchmark::Counter::kIsRate);
}

void BM_Post(benchmark::State& state) { PostAndRun(state, false); }
void BM_PostDelayed(benchmark::State& state) { PostAndRun(state, true); }

BENCHMARK(BM_Post)
    ->ArgNames({"posters", "each"})
    ->Args({1, 20000})
    ->Args({2, 10000})
    ->Args({4, 5000})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PostDelayed)
    ->ArgNames({"posters", "each"})
    ->Args({1, 20000})
    ->Args({4, 5000})
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();

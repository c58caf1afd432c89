#pragma once
// RunnerListener: what a runner reports its progress to. Called on the work
// loop's thread inside the runner's step (the runner's lock held). Every
// operation has an empty default, so a listener overrides only what it needs.

namespace Quillan {

class Runner;

class RunnerListener {
 public:
  virtual ~RunnerListener() = default;
  // The runner reached the end of its input (or a read error, or a malformed
  // line).
  virtual void OnFinished(Runner* runner) { (void)runner; }
  // A tick of the playback clock at record time `time` (seconds).
  virtual void OnTick(Runner* runner, double time) { (void)runner; (void)time; }
  // The record read ahead carries the time stamp `time` (seconds).
  virtual void OnNextEvent(Runner* runner, double time) { (void)runner; (void)time; }
};

}  // namespace Quillan

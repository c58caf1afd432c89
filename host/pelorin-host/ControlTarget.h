#pragma once
// ControlTarget: what the controls steer, as the HMI would: start and stop
// playback, set the speed in percent. Implemented by the HeadUnit; called on
// the controls thread.

#include <cstdint>

namespace PelorinHost {

class ControlTarget {
 public:
  virtual ~ControlTarget() = default;
  virtual void StartPlayback() = 0;
  virtual void StopPlayback() = 0;
  virtual void SetSpeedPercent(int32_t percent) = 0;
  virtual int32_t SpeedPercent() const = 0;
  virtual bool IsPlaying() const = 0;
};

}  // namespace PelorinHost

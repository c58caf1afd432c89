#pragma once
// The module's "Pelorin" trace channel and the one way to write to it.
//
//   PELORIN_TRACE(2, "Player::RewindInput:", " error=", status);
//
// A message of level L is built and logged only when the channel's threshold
// is at most L: below it the arguments are not even formatted. Levels: 2
// progress, 3 warning, 4 failure. Arguments are concatenated: texts as they
// are, integers and bools in decimal (a bool as 0 or 1), doubles in their
// shortest exact decimal form. Callable from any thread.

#include <cstdint>
#include <string>
#include <type_traits>

#include "tracing/Channel.h"

namespace Quillan {

// The module-wide channel: a static object, built when the module is loaded
// and destroyed when it is unloaded.
tracing::Channel& PelorinChannel();

namespace trace_detail {

void Append(std::string& out, const char* text);
void Append(std::string& out, const std::string& text);
void Append(std::string& out, double value);
void AppendSigned(std::string& out, long long value);
void AppendUnsigned(std::string& out, unsigned long long value);

template <typename T>
void AppendValue(std::string& out, const T& value) {
  if constexpr (std::is_same_v<T, bool>) {
    out += value ? '1' : '0';
  } else if constexpr (std::is_enum_v<T>) {
    AppendSigned(out, static_cast<long long>(value));
  } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
    AppendSigned(out, value);
  } else if constexpr (std::is_integral_v<T>) {
    AppendUnsigned(out, value);
  } else if constexpr (std::is_floating_point_v<T>) {
    Append(out, static_cast<double>(value));
  } else {
    Append(out, value);
  }
}

template <typename... Args>
void Write(int level, const Args&... args) {
  std::string text;
  (AppendValue(text, args), ...);
  PelorinChannel().log(level, text.c_str());
}

}  // namespace trace_detail

inline bool TraceEnabled(int level) { return PelorinChannel().GetThreshold() <= level; }

}  // namespace Quillan

#define PELORIN_TRACE(level, ...)                                 \
  do {                                                            \
    if (::Quillan::TraceEnabled(level)) {                         \
      ::Quillan::trace_detail::Write((level), __VA_ARGS__);       \
    }                                                             \
  } while (0)

#include "runtime/Trace.h"

#include <charconv>
#include <cstdio>

namespace Quillan {
namespace {

// Built when the module is loaded, destroyed when it is unloaded.
tracing::Channel g_pelorinChannel("Pelorin", 7, 2u);

}  // namespace

tracing::Channel& PelorinChannel() { return g_pelorinChannel; }

namespace trace_detail {

void Append(std::string& out, const char* text) { out += text ? text : "(null)"; }

void Append(std::string& out, const std::string& text) { out += text; }

void Append(std::string& out, double value) {
  char buffer[32];
  auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
  out.append(buffer, result.ptr);
}

void AppendSigned(std::string& out, long long value) {
  char buffer[24];
  auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
  out.append(buffer, result.ptr);
}

void AppendUnsigned(std::string& out, unsigned long long value) {
  char buffer[24];
  auto result = std::to_chars(buffer, buffer + sizeof(buffer), value);
  out.append(buffer, result.ptr);
}

}  // namespace trace_detail
}  // namespace Quillan

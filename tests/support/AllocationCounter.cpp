#include "tests/support/AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> g_allocations{0};

// Not inlined, so that the compiler does not pair malloc with operator new.
[[gnu::noinline]] void FreeMemory(void* memory) { std::free(memory); }

[[gnu::noinline]] void* CountedAllocation(std::size_t size) {
  g_allocations += 1;
  return std::malloc(size != 0 ? size : 1);
}

}  // namespace

namespace pelorin_test {

long AllocationCount() { return g_allocations.load(); }

}  // namespace pelorin_test

void* operator new(std::size_t size) {
  void* memory = CountedAllocation(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return CountedAllocation(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return CountedAllocation(size);
}
void operator delete(void* memory) noexcept { FreeMemory(memory); }
void operator delete[](void* memory) noexcept { FreeMemory(memory); }
void operator delete(void* memory, std::size_t) noexcept { FreeMemory(memory); }
void operator delete[](void* memory, std::size_t) noexcept { FreeMemory(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { FreeMemory(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { FreeMemory(memory); }

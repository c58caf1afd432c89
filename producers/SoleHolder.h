#pragma once
// IsSoleHolder: whether `pointer` is the only owner of its object, so that
// its holder may reuse the object in place instead of making a new one. A
// copy released on another thread before the check is complete: the acquire
// fence pairs with the release of that copy's count. Only for objects that
// nobody reaches through a weak pointer.

#include <atomic>
#include <memory>

namespace Quillan {

template <typename T>
bool IsSoleHolder(const std::shared_ptr<T>& pointer) {
  if (!pointer || pointer.use_count() != 1) return false;
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wtsan"
#endif
  std::atomic_thread_fence(std::memory_order_acquire);
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif
  return true;
}

}  // namespace Quillan

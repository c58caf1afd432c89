#include "producers/ProducedMessage.h"

#include <atomic>
#include <new>

namespace Quillan {
namespace {

// Every message up to this size gets a block of this size, so that any such
// block fits the next message of any kind.
constexpr std::size_t kKeptBlockBytes = 8 * sizeof(void*);

// The block of the last message destroyed, or null; freed when the module
// is unloaded.
struct KeptBlock {
  std::atomic<void*> block{nullptr};
  ~KeptBlock() { ::operator delete(block.exchange(nullptr, std::memory_order_acquire)); }
};
KeptBlock g_kept;

}  // namespace

void* ProducedMessage::operator new(std::size_t size) {
  if (size > kKeptBlockBytes) return ::operator new(size);
  void* kept = g_kept.block.exchange(nullptr, std::memory_order_acquire);
  return kept != nullptr ? kept : ::operator new(kKeptBlockBytes);
}

void ProducedMessage::operator delete(void* memory, std::size_t size) {
  if (memory == nullptr) return;
  if (size > kKeptBlockBytes) {
    ::operator delete(memory);
    return;
  }
  void* empty = nullptr;
  if (!g_kept.block.compare_exchange_strong(empty, memory, std::memory_order_release,
                                           std::memory_order_relaxed)) {
    ::operator delete(memory);
  }
}

}  // namespace Quillan

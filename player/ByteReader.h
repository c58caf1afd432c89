#pragma once
// ByteReader: the source of bytes that RecordReader and the configuration
// reader take their input from. Called from one thread at a time.

#include <cstdint>

#include "player/FileStatus.h"

namespace Quillan {

class ByteReader {
 public:
  virtual ~ByteReader() = default;
  // Reads up to `length` bytes; `count` gets how many were read. kEndOfFile
  // when none was, kIoError on failure (count 0).
  virtual FileStatus Read(void* buffer, uint32_t length, uint32_t* count) = 0;
  // The single-byte form: reads one byte into `byte`, `count` gets 0 or 1.
  FileStatus Read(uint8_t* byte, uint32_t* count) {
    return Read(static_cast<void*>(byte), 1u, count);
  }

  // Optional read-ahead view, so that a byte-at-a-time reader need not make
  // a call per byte: the bytes that the next single-byte reads would deliver
  // at once, already in memory (`count` gets how many; none by default).
  // TakeReady(n) then counts as n single-byte reads of them.
  virtual const uint8_t* PeekReady(uint32_t* count) {
    *count = 0;
    return nullptr;
  }
  virtual void TakeReady(uint32_t count) { static_cast<void>(count); }
};

}  // namespace Quillan

#pragma once
// Counts every allocation of a test program: AllocationCounter.cpp replaces
// the global operator new and delete. Calling AllocationCount() links the
// replacement in; the count is atomic, so any thread may allocate.

namespace pelorin_test {

// Allocations made through operator new since the program started.
long AllocationCount();

}  // namespace pelorin_test

#pragma once

#include <cstdint>

namespace quobrix::test {

/// How often this program has taken memory with operator new so far. A program that links allocation_counter.cpp has
/// its own operator new, which counts.
std::uint64_t allocations();
/// The allocation that is so many ahead (1: the next one) fails; 0: none does.
void failAllocation(std::uint64_t ahead);

} // namespace quobrix::test

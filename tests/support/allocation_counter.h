#pragma once

#include <cstdint>

namespace quobrix::test {

/// How often this program has taken memory with operator new so far. A program that links allocation_counter.cpp has
/// its own operator new, which counts.
std::uint64_t allocations();

} // namespace quobrix::test

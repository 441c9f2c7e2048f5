#include "support/allocation_counter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::uint64_t> count{0}, failing{0};

/// Null if there is no memory, or it is to fail.
void* tryAllocate(std::size_t size) noexcept {
    if (count.fetch_add(1, std::memory_order_relaxed) + 1 == failing.load(std::memory_order_relaxed))
        return nullptr;
    return std::malloc(size == 0 ? 1 : size);
}

void* allocate(std::size_t size) {
    if (void* memory = tryAllocate(size))
        return memory;
    throw std::bad_alloc();
}

} // namespace

// All forms but those for over-aligned types, which are not used here: sanitizers have their own of each.
void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return tryAllocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return tryAllocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace quobrix::test {

std::uint64_t allocations() { return count.load(std::memory_order_relaxed); }

void failAllocation(std::uint64_t ahead) { failing = ahead == 0 ? 0 : allocations() + ahead; }

} // namespace quobrix::test

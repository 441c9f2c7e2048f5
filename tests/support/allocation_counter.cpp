#include "support/allocation_counter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::uint64_t> count{0}, failing{0};

void* allocate(std::size_t size) {
    if (count.fetch_add(1, std::memory_order_relaxed) + 1 == failing.load(std::memory_order_relaxed))
        throw std::bad_alloc();
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

} // namespace

// The forms that the library does not build on these two are not used with over-aligned types here.
void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace quobrix::test {

std::uint64_t allocations() { return count.load(std::memory_order_relaxed); }

void failAllocation(std::uint64_t ahead) { failing = ahead == 0 ? 0 : allocations() + ahead; }

} // namespace quobrix::test

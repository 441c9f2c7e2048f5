#pragma once

#include <cstddef>

#if defined(_WIN32)
#include <malloc.h>
#elif defined(__APPLE__)
#include <malloc/malloc.h>
#else
#include <malloc.h>
#endif

namespace quobrix {

/// Bytes that may be read of BLOCK, which malloc has made; at least as many as were asked for.
inline std::size_t allocatedSize(void* block) {
#if defined(_WIN32)
    return _msize(block);
#elif defined(__APPLE__)
    return malloc_size(block);
#else
    return malloc_usable_size(block);
#endif
}

} // namespace quobrix

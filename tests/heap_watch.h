// The allocator as the library sees it, in tests that link its objects. The linker sends calls of
// malloc and free to the __wrap names; these count the blocks that are held, fill fresh ones with a
// pattern, and fail when told to.
#ifndef TESSEL_TESTS_HEAP_WATCH_H
#define TESSEL_TESTS_HEAP_WATCH_H

#include <stddef.h>
#include <string.h>

struct heap_state {
    bool fails;       // from now on
    int spared;       // blocks that are still handed out before that
    int held;         // blocks that are not released
    size_t last_size; // of the last block
};

inline heap_state heap;

constexpr unsigned char heap_pattern = 0xa5;

extern "C" void *__real_malloc(size_t size);
extern "C" void __real_free(void *block);

extern "C" __attribute__((used)) inline void *__wrap_malloc(size_t size)
{
    const bool failing = heap.fails && heap.spared-- <= 0;
    void *const block = failing ? nullptr : __real_malloc(size);
    if (!block)
        return nullptr;
    heap.held++;
    heap.last_size = size;
    return memset(block, heap_pattern, size);
}

extern "C" __attribute__((used)) inline void __wrap_free(void *block)
{
    heap.held -= block != nullptr;
    __real_free(block);
}

#endif

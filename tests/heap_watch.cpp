#include "heap_watch.h"

#include <new>
#include <stdlib.h>
#include <string.h>

extern "C" {
void *__real_malloc(size_t size);
void __real_free(void *block);

void *__wrap_malloc(size_t size)
{
    const bool failing = heap.fails && heap.spared-- <= 0;
    void *const block = failing ? nullptr : __real_malloc(size);
    if (!block)
        return nullptr;
    heap.held++;
    heap.last_size = size;
    return memset(block, heap_pattern, size);
}

void __wrap_free(void *block)
{
    heap.held -= block != nullptr;
    __real_free(block);
}
}

// The blocks of the tests themselves do not count, not even where the C++ library is linked
// statically, so that its calls of malloc come here too.
void *operator new(size_t size)
{
    void *const block = __real_malloc(size);
    return block ? block : (abort(), nullptr);
}

void operator delete(void *block) noexcept
{
    __real_free(block);
}

void operator delete(void *block, size_t) noexcept
{
    __real_free(block);
}

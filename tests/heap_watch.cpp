#include "heap_watch.h"

#include <new>
#include <stdlib.h>
#include <string.h>

extern "C" {
void *__real_malloc(size_t size);
void *__real_realloc(void *block, size_t size);
void __real_free(void *block);

static bool fails_now(size_t size)
{
    heap.last_size = size;
    if (!heap.fails || heap.spared-- > 0)
        return false;
    heap.fails = !heap.once;
    return true;
}

void *__wrap_malloc(size_t size)
{
    void *const block = fails_now(size) ? nullptr : __real_malloc(size);
    heap.held += block != nullptr;
    return block ? memset(block, heap_pattern, size) : nullptr;
}

// The compiler may make this of a call of malloc and one of memset.
void *__wrap_calloc(size_t count, size_t size)
{
    void *const block = __wrap_malloc(count * size);
    return block ? memset(block, 0, count * size) : nullptr;
}

void *__wrap_realloc(void *old, size_t size)
{
    void *const block = fails_now(size) ? nullptr : __real_realloc(old, size);
    heap.held += block && !old;
    return block;
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

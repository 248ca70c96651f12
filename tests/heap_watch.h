// The allocator as the library sees it, in tests that link its objects. The linker sends calls of
// malloc, calloc, realloc and free to the watch, which counts the blocks that are held, fills fresh
// ones with a pattern, and fails when told to.
#ifndef TESSEL_TESTS_HEAP_WATCH_H
#define TESSEL_TESTS_HEAP_WATCH_H

#include <stddef.h>

struct heap_state {
    bool fails;       // from now on
    int spared;       // blocks that are still handed out before that
    int held;         // blocks that are not released
    size_t last_size; // of the last block
    bool once;        // only the first block behind those fails
};

inline heap_state heap;

constexpr unsigned char heap_pattern = 0xa5;

#endif

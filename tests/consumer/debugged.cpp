// Stands still with a tree, a ring and a stream in view of a debugger.
#include <tessel.h>

struct number {
    bintree_node head;
    int32_t value;
};

static int32_t compare(const bintree_node *node, const void *key)
{
    const int32_t value = reinterpret_cast<const number *>(node)->value;
    const int32_t wanted = *static_cast<const int32_t *>(key);
    return (value > wanted) - (value < wanted);
}

static void stand_still()
{
}

int main()
{
    number numbers[] = {{{}, 30}, {{}, 10}, {{}, 20}};
    bintree_node *root = nullptr;
    for (number &n : numbers)
        bintreeAddExt(&root, &n.head, &n.value, compare, BINTREE_BALANCED);

    list_dnode second = {};
    list_dnode first = {&second, &second};
    second = {&first, &first};

    char room[8];
    io_memory memory = {sizeof room, 0, room};
    io_stream stream = {};
    stream.write = memWrite;
    stream.handle = reinterpret_cast<intptr_t>(&memory);
    ioAllocBuffer(&stream, 16);
    ioWriteInt(&stream, 7, 4);
    stand_still();
    ioFreeBuffer(&stream);
    return first.next == &second && root ? 0 : 1;
}

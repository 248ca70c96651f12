// Keeps numbers in a balanced tree, as a program in C++20 does.
#include <tessel.h>

#include <cstdint>
#include <cstdio>
#include <string_view>

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

int main()
{
    static_assert(std::string_view(TESSEL_VERSION).starts_with("0."));
    number numbers[] = {{{}, 30}, {{}, 10}, {{}, 20}};
    bintree_node *root = nullptr;
    for (number &n : numbers)
        bintreeAddExt(&root, &n.head, &n.value, compare, BINTREE_BALANCED);
    // A null link counts as a level.
    const bool balanced = root == &numbers[2].head && bintreeGetHeight(root) == 3;
    std::printf("%s: height %d\n", TESSEL_VERSION, static_cast<int>(bintreeGetHeight(root)));
    return balanced ? 0 : 1;
}

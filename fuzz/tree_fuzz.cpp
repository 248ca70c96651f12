// Operations on a tree, plain or balanced, beside a map, with paths of all kinds.
#include "fuzz_input.h"

#include <map>

// A node is a head of this size and, directly behind it, its key.
static size_t head;

static int32_t compare(const bintree_node *node, const void *key)
{
    return reinterpret_cast<const int8_t *>(node)[head] - *static_cast<const int8_t *>(key);
}

void run(fuzz_input input)
{
    const uint32_t kind = input.byte(), balanced = kind & 1, grows = kind >> 1 & 1;
    const uint32_t flags = balanced * BINTREE_BALANCED | kind >> 4 << BINTREE_GROWTH_SHIFT;
    head = sizeof(bintree_plain_node) + balanced * sizeof(int32_t);
    std::vector<bintree_step> steps(1 + input.byte() % 8);
    bintree_path path = {steps.data(), static_cast<int32_t>(steps.size()) - 1,
                         flags | grows * BINTREE_GROW, 0, 0};
    bintree_node *root = nullptr;
    std::map<int8_t, bintree_node *> model;
    while (input.at < input.end) {
        const uint32_t adds = input.byte() & 1;
        const int8_t key = input.byte();
        bintree_node *node = nullptr;
        const int32_t result = adds ? bintreeCreate(&node, &root, &key, compare, &path, head + 1, 0)
                                    : bintreeRemove(&root, &key, compare, &path);
        const bool full = result == BINTREE_NO_ROOM && !grows;
        const int32_t otherwise = adds ? BINTREE_EXISTS : BINTREE_NOT_FOUND;
        expect(full || result == (model.count(key) == !adds ? int32_t{BINTREE_DONE} : otherwise));
        if (result == BINTREE_DONE && adds)
            reinterpret_cast<int8_t *>(model[key] = node)[head] = key;
        else if (result == BINTREE_DONE)
            model.erase(key);
        expect(bintreeCount(root) == static_cast<int32_t>(model.size()));
        for (const auto &[each, linked] : model)
            expect(bintreeSearch(root, &each, compare) == linked);
        const auto visit = [](bintree_node *, void *) -> int32_t { return 0; };
        expect(!balanced || bintreeCheckBalance(root, visit, nullptr) == 0);
    }
    if (path.flags & BINTREE_OWNED)
        memFree(path.steps);
    bintreeClear(&root);
}

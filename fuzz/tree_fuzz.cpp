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
    const uint32_t kind = input.byte(), balanced = kind & 1, grows = kind & 2, zero = kind >> 3 & 1;
    const uint32_t flags = (balanced ? BINTREE_BALANCED : 0) | (kind >> 4) << BINTREE_GROWTH_SHIFT;
    head = sizeof(bintree_plain_node) + (balanced ? sizeof(int32_t) : 0);
    const size_t bytes = head + 1;
    std::vector<bintree_step> steps(1 + input.byte() % 8);
    bintree_path path = {steps.data(), static_cast<int32_t>(steps.size()) - 1, flags, 0, 0};
    if (grows && kind & 4)
        path = {nullptr, -1, flags, 0, 0};
    path.flags |= grows ? BINTREE_GROW : 0;
    bintree_node *root = nullptr;
    std::map<int8_t, bintree_node *> model;
    while (input.at < input.end) {
        const uint32_t bits = input.byte(), adds = bits & 1, own_path = bits & 2, given = bits & 4;
        const int8_t key = input.byte();
        const auto found = model.find(key);
        const bool there = found != model.end();
        bintree_node *node = nullptr;
        int32_t result;
        if (adds && given) {
            node = static_cast<bintree_node *>(memAlloc(bytes));
            result = own_path ? bintreeAddExt(&root, node, &key, compare, flags)
                              : bintreeAdd(&root, node, &key, compare, &path);
        } else if (adds) {
            result = own_path ? bintreeCreateExt(&node, &root, &key, compare, bytes, flags | zero)
                              : bintreeCreate(&node, &root, &key, compare, &path, bytes, zero);
            expect(result != BINTREE_DONE || !zero || reinterpret_cast<int8_t *>(node)[head] == 0);
        } else if (given) {
            result = own_path ? bintreeCutExt(&node, &root, &key, compare, flags)
                              : bintreeCut(&node, &root, &key, compare, &path);
            expect(result != BINTREE_DONE || node == found->second);
        } else {
            result = own_path ? bintreeRemoveExt(&root, &key, compare, flags)
                              : bintreeRemove(&root, &key, compare, &path);
        }
        if (given && adds != (result == BINTREE_DONE))
            memFree(node);
        const int32_t otherwise = adds ? BINTREE_EXISTS : BINTREE_NOT_FOUND;
        const bool full = result == BINTREE_NO_ROOM && !grows && !own_path;
        expect(full || result == (there == !adds ? int32_t{BINTREE_DONE} : otherwise));
        if (result == BINTREE_DONE && adds)
            reinterpret_cast<int8_t *>(model[key] = node)[head] = key;
        else if (result == BINTREE_DONE)
            model.erase(found);
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

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
        // With a node of the caller's, and with a path of the call's own.
        const uint32_t how = input.byte(), adds = how & 1, given = how & 2, apart = how & 4;
        const int8_t key = input.byte();
        bintree_node *node = nullptr;
        if (given && adds)
            node = static_cast<bintree_node *>(memAlloc(static_cast<uint32_t>(head + 1)));
        const int32_t result =
            given && adds && apart ? bintreeAddExt(&root, node, &key, compare, flags)
            : given && adds        ? bintreeAdd(&root, node, &key, compare, &path)
            : given && apart       ? bintreeCutExt(&node, &root, &key, compare, flags)
            : given                ? bintreeCut(&node, &root, &key, compare, &path)
            : adds && apart        ? bintreeCreateExt(&node, &root, &key, compare, head + 1, flags)
            : adds                 ? bintreeCreate(&node, &root, &key, compare, &path, head + 1, 0)
            : apart                ? bintreeRemoveExt(&root, &key, compare, flags)
                                   : bintreeRemove(&root, &key, compare, &path);
        const bool full = result == BINTREE_NO_ROOM && !grows && !apart;
        const int32_t otherwise = adds ? BINTREE_EXISTS : BINTREE_NOT_FOUND;
        expect(full || result == (model.count(key) == !adds ? int32_t{BINTREE_DONE} : otherwise));
        const bool found = result == int32_t{adds ? BINTREE_EXISTS : BINTREE_DONE};
        expect(!found || !given == !adds || node == model[key]); // of Create and Cut
        if (given && adds == (result != BINTREE_DONE))
            memFree(node);
        if (result == BINTREE_DONE && adds)
            reinterpret_cast<int8_t *>(model[key] = node)[head] = key;
        else if (result == BINTREE_DONE)
            model.erase(key);
        expect(bintreeCount(root) == static_cast<int32_t>(model.size()));
        auto next = model.begin();
        const auto meet = [](bintree_node *met, void *at) -> int32_t {
            return (*static_cast<decltype(next) *>(at))++->second != met;
        };
        expect(bintreeTraverse(root, meet, &next, BINTREE_IN_ORDER) == 0);
        for (const auto &[each, linked] : model)
            expect(bintreeSearch(root, &each, compare) == linked);
        const auto visit = [](bintree_node *, void *) -> int32_t { return 0; };
        expect(!balanced || bintreeCheckBalance(root, visit, nullptr) == 0);
    }
    if (path.flags & BINTREE_OWNED)
        memFree(path.steps);
    bintreeClear(&root);
}

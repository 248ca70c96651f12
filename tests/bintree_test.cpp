#include "tessel/bintree.h"
#include "tessel/mem.h"
#include "tessel/string.h"

#include "heap_watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <stdlib.h>
#include <string.h>
#include <string>
#include <vector>

namespace
{

using numbers = std::vector<int32_t>;

// The key stands directly behind the balance word, where a store that is too wide would hit it.
struct item {
    bintree_node *child[2];
    int32_t balance;
    int32_t key;
    char text[8];
    const char *pointer;
};
static_assert(offsetof(item, key) == 2 * sizeof(void *) + sizeof(int32_t));

int32_t &key_of(const bintree_node *node)
{
    return const_cast<item *>(reinterpret_cast<const item *>(node))->key;
}

// Nothing but the sign of a comparison counts, in numbers of any size.
int32_t by_key(const bintree_node *node, const void *key)
{
    const int32_t left = key_of(node), right = *static_cast<const int32_t *>(key);
    return left < right ? INT32_MIN : left > right ? INT32_MAX : 0;
}

int32_t levels(const bintree_node *node)
{
    return node ? 1 + std::max(levels(node->child[0]), levels(node->child[1])) : 0;
}

int32_t lean(const bintree_node *node)
{
    return levels(node->child[0]) - levels(node->child[1]);
}

// Puts a tree in one line: each node's key and word, in front of its subtrees, and 0 for a null
// link. Gives its height.
int32_t flatten(const bintree_node *node, bool measured, numbers &line)
{
    line.push_back(node ? key_of(node) : 0);
    if (!node)
        return 0;
    const size_t word = line.size();
    line.push_back(node->balance);
    const int32_t heights[] = {flatten(node->child[0], measured, line),
                               flatten(node->child[1], measured, line)};
    if (measured)
        line[word] = heights[0] - heights[1];
    return 1 + std::max(heights[0], heights[1]);
}

numbers flat(const bintree_node *root, bool measured = false)
{
    numbers line;
    flatten(root, measured, line);
    return line;
}

// AVL trees by the book, for comparison: recursive, with heights that are measured at every step.
// The rotations are noted as the heavy side, the heavy child's word, and the word of its inner
// child where that rose. Without notes the tree is a plain one.
using rotations = std::set<numbers>;

bintree_node *turn(bintree_node *node, int side)
{
    bintree_node *const heavy = node->child[side];
    node->child[side] = heavy->child[!side];
    heavy->child[!side] = node;
    return heavy;
}

bintree_node *settle(bintree_node *node, rotations *notes)
{
    if (!notes || std::abs(lean(node)) < 2)
        return node;
    const int side = lean(node) < 0;
    bintree_node *&heavy = node->child[side];
    numbers row = {side, lean(heavy)};
    if (lean(heavy) * lean(node) < 0) {
        row.push_back(lean(heavy->child[!side]));
        heavy = turn(heavy, !side);
    }
    notes->insert(row);
    return turn(node, side);
}

bintree_node *change(bintree_node *node, int32_t key, bintree_node *added, rotations *notes)
{
    if (!node)
        return added;
    if (key_of(node) != key) {
        bintree_node *&child = node->child[key_of(node) < key];
        child = change(child, key, added, notes);
        return settle(node, notes);
    }
    if (!node->child[0] || !node->child[1])
        return node->child[!node->child[0]];
    bintree_node *next = node->child[1];
    while (next->child[0])
        next = next->child[0];
    next->child[1] = change(node->child[1], key_of(next), nullptr, notes);
    next->child[0] = node->child[0];
    return settle(next, notes);
}

// Inserts a key that is not in the tree or removes one that is, and checks all that is to be seen
// of it: the path, the results, the node, the tree against one by the book. A path that is too
// short for the search or for the rest of a removal has to leave all as it is.
void check_change(bintree_node **root, bintree_node **book, item *items, int32_t key,
                  bintree_path &path, rotations *notes)
{
    const numbers before = flat(*root);
    std::vector<bintree_step> way;
    int32_t depth = -1, pivot = *root ? 0 : -1;
    bintree_node *there = nullptr;
    for (bintree_node *node = *root; node && !there; node = node->child[way.back().direction]) {
        there = key_of(node) == key ? node : nullptr;
        way.push_back({key_of(node) < key, node});
        depth++;
        if (notes && node->balance != 0)
            pivot = depth;
    }
    int32_t last = depth;
    if (there && there->child[0])
        for (const bintree_node *node = there->child[1]; node; node = node->child[0])
            last++;
    const int32_t capacity = path.flags & BINTREE_GROW ? INT32_MAX : path.capacity;
    const bool searched = capacity >= depth, done = capacity >= last;

    path.depth = path.pivot = -7;
    bintree_node *found = nullptr;
    EXPECT_EQ(bintreeSearch(*root, &key, by_key), there);
    EXPECT_EQ(bintreeIterate(&found, *root, &key, by_key, &path), !searched ? BINTREE_NO_ROOM
                                                                  : there   ? BINTREE_DONE
                                                                            : BINTREE_NOT_FOUND);
    EXPECT_EQ(found, searched ? there : nullptr);
    EXPECT_EQ(path.depth, searched ? depth : -7);
    EXPECT_EQ(path.pivot, searched ? pivot : -7);
    for (size_t i = 0; searched && i < way.size(); i++)
        EXPECT_TRUE(path.steps[i].node == way[i].node &&
                    path.steps[i].direction == way[i].direction);
    bintree_node *const added = reinterpret_cast<bintree_node *>(&items[key]);
    if (searched && there) {
        const item kept = items[key];
        EXPECT_EQ(bintreeUnlink(root, &path), done ? BINTREE_DONE : BINTREE_NO_ROOM);
        EXPECT_EQ(path.depth, done ? last : depth);
        EXPECT_EQ(memcmp(there, &kept, sizeof kept), 0);
    } else if (searched) {
        memset(items[key].child, heap_pattern, sizeof items[key].child);
        bintreeLink(root, added, &path);
    }
    // The nodes by the book stand behind ours.
    bintree_node *const model = reinterpret_cast<bintree_node *>(&items[key + 64]);
    if (done && !there)
        model->child[0] = model->child[1] = nullptr;
    if (done)
        *book = change(*book, key, model, notes ? notes + (there != nullptr) : nullptr);
    EXPECT_EQ(flat(*root), done ? flat(*book, notes != nullptr) : before)
        << key << " in " << testing::PrintToString(before);
}

TEST(Bintree, RandomChanges)
{
    heap = {};
    for (const uint32_t kind : {0u, uint32_t{BINTREE_BALANCED}}) {
        rotations notes[2];
        bintree_step fixed[64], outgrown[2];
        bintree_path paths[] = {{outgrown, 1, kind | BINTREE_GROW, 0, 0},
                                {nullptr, -1, kind | BINTREE_GROW, 0, 0},
                                {fixed, 63, kind, 0, 0}};
        // Where a balanced node has its word, a plain one has something of the caller's.
        std::vector<item> items(128, item{{}, 7, 0, "", nullptr});
        for (int32_t i = 0; i < 128; i++) {
            items[static_cast<size_t>(i)].key = i % 64;
            items[static_cast<size_t>(i)].balance = i % 64;
        }
        bintree_node *root = nullptr, *book = nullptr;
        std::mt19937 random(kind);
        const auto below = [&](int32_t limit) {
            return static_cast<int32_t>(random() % static_cast<uint32_t>(limit));
        };
        for (int32_t i = 0; i < 120000 && !HasFailure(); i++) {
            paths[2].capacity = below(12) - 1;
            // Large trees and small ones in turn.
            const int32_t key = 1 + below(i / 1000 % 2 ? 63 : 8);
            check_change(&root, &book, items.data(), key, paths[below(3)], kind ? notes : nullptr);
        }
        memFree(paths[0].steps);
        memFree(paths[1].steps);
        if (!kind)
            continue;
        rotations all = {{0, 1},  {0, -1, 0}, {0, -1, 1}, {0, -1, -1},
                         {1, -1}, {1, 1, 0},  {1, 1, 1},  {1, 1, -1}};
        EXPECT_EQ(notes[false], all);
        // An even heavy child comes up in removals alone.
        all.insert({{0, 0}, {1, 0}});
        EXPECT_EQ(notes[true], all);
    }
    EXPECT_EQ(heap.held, 0);
}

// A chain of plain nodes, through either child in turn, linked without searching.
bintree_node *make_chain(int32_t count)
{
    bintree_node *root = nullptr;
    for (int32_t i = 0; i < count; i++) {
        auto *const node = static_cast<bintree_plain_node *>(memAlloc(sizeof(bintree_plain_node)));
        node->child[i % 2] = root;
        node->child[1 - i % 2] = nullptr;
        root = reinterpret_cast<bintree_node *>(node);
    }
    return root;
}

// Goes to the end of a chain; the key counts the comparisons.
int32_t to_the_end(const bintree_node *node, const void *key)
{
    ++*static_cast<int32_t *>(const_cast<void *>(key));
    const auto *const plain = reinterpret_cast<const bintree_plain_node *>(node);
    return plain->child[1] ? -1 : plain->child[0] ? 1 : 0;
}

TEST(Bintree, PathsGrow)
{
    const struct {
        bool array;
        int32_t capacity;
        uint32_t flags;
        int32_t grown;
    } cases[] = {
        // 39 steps are needed.
        {false, -1, BINTREE_GROW, 39},
        {false, -1, BINTREE_GROW | 0x100, 38},
        {false, -1, BINTREE_GROW | 0x500, 41},
        {false, -1, BINTREE_GROW | 0xff00, 286},
        {true, 3, BINTREE_GROW, 39},
        {true, -1, BINTREE_GROW | 0x1400, 39},
        {true, -1, BINTREE_GROW | 0xff00, 254},
        {true, 38, 0, 38},
        // The comparison comes before the step, so it has seen the node that the path cannot take.
        {true, 37, 0xff00, -1},
        {false, -1, 0xff00, -1},
    };
    heap = {};
    bintree_node *root = make_chain(39);
    for (const auto &c : cases) {
        bintree_step array[39] = {};
        bintree_path path = {c.array ? array : nullptr, c.capacity, c.flags, -7, -7};
        bintree_node *found;
        int32_t compares = 0;
        const bool fits = c.grown > 0;
        EXPECT_EQ(bintreeIterate(&found, root, &compares, to_the_end, &path),
                  fits ? BINTREE_DONE : BINTREE_NO_ROOM);
        EXPECT_EQ(path.capacity, fits ? c.grown : c.capacity);
        EXPECT_EQ(compares, fits ? 39 : c.capacity + 2);
        EXPECT_EQ(path.pivot, fits ? 0 : -7);
        EXPECT_EQ(path.flags, c.flags | (c.flags & BINTREE_GROW ? BINTREE_OWNED : 0));
        if (path.flags & BINTREE_OWNED)
            memFree(path.steps);
    }
    bintreeClear(&root);
    EXPECT_EQ(heap.held, 0);
}

// Makes a node, with a path of the call's own.
int32_t create(bintree_node **root, int32_t key, uint32_t flags, uintptr_t size = sizeof(item))
{
    bintree_node *made = nullptr;
    const int32_t result = bintreeCreateExt(&made, root, &key, by_key, size, flags);
    EXPECT_EQ(made != nullptr, result >= 0);
    if (result == BINTREE_DONE)
        key_of(made) = key;
    return result;
}

bintree_node *make_tree(const numbers &keys, uint32_t flags)
{
    bintree_node *root = nullptr;
    for (const int32_t key : keys)
        EXPECT_EQ(create(&root, key, flags), BINTREE_DONE);
    return root;
}

TEST(Bintree, CreateAndAdd)
{
    heap = {};
    // 0x8000 is a part of the growth step here, and the size a size.
    bintree_node *root = make_tree({2}, 0x8010);
    EXPECT_EQ(reinterpret_cast<item *>(root)->text[7], static_cast<char>(heap_pattern));
    EXPECT_EQ(create(&root, 1, BINTREE_BALANCED | BINTREE_ZERO), BINTREE_DONE);
    EXPECT_EQ(reinterpret_cast<item *>(root->child[0])->pointer, nullptr);
    EXPECT_EQ(create(&root, 2, BINTREE_BALANCED, 0), BINTREE_EXISTS);
    // No room for the head, and more than any block has.
    constexpr uintptr_t links = sizeof(bintree_plain_node);
    EXPECT_EQ(create(&root, 3, BINTREE_BALANCED | BINTREE_ZERO, links + 3), BINTREE_NO_MEMORY);
    if (sizeof(uintptr_t) > sizeof(uint32_t)) {
        const auto size = static_cast<uintptr_t>(uint64_t{UINT32_MAX} + 25);
        EXPECT_EQ(create(&root, 3, BINTREE_BALANCED | BINTREE_ZERO, size), BINTREE_NO_MEMORY);
    }
    // A node may end right behind its head, whose word a plain one does not have.
    for (const uint32_t kind : {0u, uint32_t{BINTREE_BALANCED}}) {
        bintree_node *small = nullptr, *made;
        const uintptr_t size = kind ? links + sizeof(int32_t) : links;
        EXPECT_EQ(bintreeCreateExt(&made, &small, nullptr, nullptr, size, kind), BINTREE_DONE);
        bintreeClear(&small);
    }

    bintree_step steps[4];
    bintree_path path = {steps, 3, BINTREE_BALANCED, 0, 0};
    item own = {{}, 0, 3, "own", nullptr}, other = {{root, root}, 77, 3, "", nullptr};
    bintree_node *const node = reinterpret_cast<bintree_node *>(&own);
    bintree_node *found = nullptr;
    heap.fails = true;
    EXPECT_EQ(bintreeCreate(&found, &root, &own.key, by_key, &path, sizeof(item), 0),
              BINTREE_NO_MEMORY);
    EXPECT_TRUE(!found && heap.held == 2 && !root->child[1]);
    // The path is still good.
    bintreeLink(&root, node, &path);
    EXPECT_EQ(bintreeCut(&found, &root, &own.key, by_key, &path), BINTREE_DONE);
    EXPECT_EQ(bintreeCreate(&found, &root, &own.key, by_key, &path,
                            reinterpret_cast<uintptr_t>(&own), BINTREE_LINK_GIVEN | BINTREE_ZERO),
              BINTREE_DONE);
    EXPECT_TRUE(found == node && root->child[1] == node && own.text[0] == 'o');
    heap.fails = false;
    EXPECT_EQ(bintreeAddExt(&root, reinterpret_cast<bintree_node *>(&other), &other.key, by_key,
                            BINTREE_BALANCED),
              BINTREE_EXISTS);
    EXPECT_TRUE(other.child[0] == root && other.child[1] == root && other.balance == 77);
    EXPECT_EQ(bintreeCutExt(&found, &root, &own.key, by_key, BINTREE_BALANCED), BINTREE_DONE);
    EXPECT_EQ(bintreeRemoveExt(&root, &own.key, by_key, BINTREE_BALANCED), BINTREE_NOT_FOUND);
    bintreeClear(&root);
    EXPECT_EQ(heap.held, 0);
}

// What a walk has seen, and where it is to end.
struct visits {
    numbers keys;
    size_t last;
    int32_t result;
};

int32_t visit(bintree_node *node, void *context)
{
    visits *const seen = static_cast<visits *>(context);
    seen->keys.push_back(key_of(node));
    return seen->keys.size() == seen->last ? seen->result : 0;
}

void visit_all(const bintree_node *node, int32_t order, numbers &keys)
{
    for (int32_t i = 0; node && i < 3; i++) {
        if (i == order)
            keys.push_back(key_of(node));
        if (i < 2)
            visit_all(node->child[i], order, keys);
    }
}

TEST(Bintree, WalksEndAnywhere)
{
    const numbers trees[] = {{},
                             {1},
                             {2, 1, 3},
                             {1, 2, 3},
                             {3, 1, 2},
                             {9, 8, 5, 6, 7, 10},
                             {4, 2, 8, 1, 3, 6, 9, 5, 7, 10, 12, 11}};
    heap = {};
    for (const numbers &keys : trees) {
        bintree_node *root = make_tree(keys, 0);
        const int32_t held = heap.held;
        for (int32_t order = BINTREE_PRE_ORDER; order <= BINTREE_POST_ORDER; order++) {
            numbers expected;
            visit_all(root, order, expected);
            for (size_t last = keys.size(); last > 0; last--, expected.pop_back()) {
                visits seen = {{}, last, last % 2 ? 7 : INT32_MIN};
                EXPECT_EQ(bintreeTraverse(root, visit, &seen, order), seen.result);
                EXPECT_EQ(seen.keys, expected);
            }
            EXPECT_EQ(heap.held, held);
        }
        EXPECT_EQ(bintreeTraverse(root, visit, nullptr, -1), 0);
        bintreeClear(&root);
        EXPECT_EQ(heap.held, 0);
    }
}

int32_t count_visit(bintree_node *, void *count)
{
    ++*static_cast<int32_t *>(count);
    return 0;
}

// No call stack would hold a frame for every level.
TEST(Bintree, MillionLevels)
{
    constexpr int32_t count = 1000000;
    heap = {};
    bintree_node *root = make_chain(count);
    EXPECT_EQ(bintreeGetHeight(root), count + 1);
    for (int32_t order = BINTREE_IN_ORDER; order <= BINTREE_POST_ORDER; order++) {
        int32_t visited = 0;
        EXPECT_EQ(bintreeTraverse(root, count_visit, &visited, order), 0);
        EXPECT_EQ(visited, count);
    }
    std::vector<bintree_step> steps(count);
    bintree_path path = {steps.data(), count - 1, 0, 0, 0};
    int32_t compares = 0;
    EXPECT_EQ(bintreeRemove(&root, &compares, to_the_end, &path), BINTREE_DONE);
    EXPECT_EQ(bintreeCount(root), count - 1);
    bintreeClear(&root);
    EXPECT_TRUE(!root && heap.held == 0);
}

TEST(Bintree, Queries)
{
    heap = {};
    bintree_node *root = make_tree({5, 2, 7, 1, 3, 6}, BINTREE_BALANCED | BINTREE_ZERO);
    item *items[8];
    for (int32_t key = 1; key <= 7; key++)
        items[key] = reinterpret_cast<item *>(bintreeSearch(root, &key, by_key));
    for (const int32_t key : {1, 6, 7})
        items[key]->pointer = "other";
    // The first in order of those that match: pre-order meets 5 first, post-order 3.
    for (item *const like : {items[2], items[3], items[5]}) {
        strcpy(like->text, "Word\xff");
        like->pointer = "Away";
    }
    int16_t two;
    int32_t four;
    memcpy(&two, items[2]->text + 3, sizeof two);
    memcpy(&four, items[2]->text + 1, sizeof four);
    const auto text = static_cast<uint32_t>(offsetof(item, text));
    const auto pointer = static_cast<uint32_t>(offsetof(item, pointer));
    for (const bool fails : {false, true}) {
        heap.fails = fails;
        const bintree_node *const found[] = {bintreeFindInt1(root, -1, text + 4),
                                             bintreeFindInt2(root, two, text + 3),
                                             bintreeFindInt4(root, four, text + 1),
                                             bintreeFindStr(root, "Word\xff", text, 0),
                                             bintreeFindStr(root, "wORD\xff", text, STR_NO_CASE),
                                             bintreeFindStr(root, "Away", pointer, STR_POINTER)};
        for (const bintree_node *node : found)
            EXPECT_EQ(node ? key_of(node) : 0, fails ? 0 : 2);
        EXPECT_FALSE(bintreeFindInt1(root, 1, text) || bintreeFindStr(root, "word\xff", text, 0));
        EXPECT_EQ(bintreeCount(root), fails ? 1 : 6);
        EXPECT_EQ(bintreeCheckBalance(root, visit, nullptr), fails ? BINTREE_FAILED : 0);
    }
    EXPECT_EQ(bintreeFindInt1(nullptr, 0, 0), nullptr);
    EXPECT_EQ(bintreeCheckBalance(nullptr, visit, nullptr), 0);
    // Nothing is reached without memory: the nodes are lost, and the link is null.
    bintree_node *link = root;
    bintreeClear(&link);
    EXPECT_TRUE(!link && heap.held == 6);
    heap.fails = false;

    // Differences of 2 and -2, which no balanced tree has, and a word without its difference. They
    // are reported in order, a node behind the subtree of its smaller keys.
    item added[3] = {};
    bintree_node *const lower[] = {reinterpret_cast<bintree_node *>(&added[0]),
                                   reinterpret_cast<bintree_node *>(&added[1]),
                                   reinterpret_cast<bintree_node *>(&added[2])};
    items[1]->child[0] = lower[0];
    items[1]->balance = 1;
    memFree(items[3]);
    items[2]->child[1] = nullptr;
    items[2]->balance = 2;
    items[6]->child[1] = lower[1];
    items[6]->balance = -2;
    lower[1]->child[1] = lower[2];
    lower[1]->balance = -1;
    root->balance = -1;
    visits seen = {{}, 1, 5};
    EXPECT_EQ(bintreeCheckBalance(root, visit, &seen), 3);
    EXPECT_EQ(seen.keys, (numbers{2, 6, 7}));
    items[6]->child[1] = nullptr;
    items[1]->child[0] = nullptr;
    bintreeClear(&root);
    EXPECT_EQ(heap.held, 0);
}

} // namespace

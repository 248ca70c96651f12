#include "tessel/bintree.h"
#include "tessel/mem.h"
#include "tessel/string.h"

#include "heap_watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string.h>
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

item &item_of(const bintree_node *node)
{
    return *const_cast<item *>(reinterpret_cast<const item *>(node));
}

bintree_node *node_of(item &it)
{
    return reinterpret_cast<bintree_node *>(&it);
}

// Nothing but the sign of a comparison counts, in numbers of any size.
int32_t by_key(const bintree_node *node, const void *key)
{
    const int32_t left = item_of(node).key, right = *static_cast<const int32_t *>(key);
    return left < right ? INT32_MIN : left > right ? INT32_MAX : 0;
}

// Makes a node, with a path of the call's own.
int32_t create(bintree_node **root, int32_t key, uint32_t flags, uintptr_t size = sizeof(item))
{
    bintree_node *made = nullptr;
    const int32_t result = bintreeCreateExt(&made, root, &key, by_key, size, flags);
    EXPECT_EQ(made != nullptr, result >= 0);
    if (result == BINTREE_DONE)
        item_of(made).key = key;
    return result;
}

bintree_node *make_tree(const numbers &keys, uint32_t flags)
{
    bintree_node *root = nullptr;
    for (const int32_t key : keys)
        EXPECT_EQ(create(&root, key, flags), BINTREE_DONE);
    return root;
}

int32_t note_key(bintree_node *node, void *keys)
{
    static_cast<numbers *>(keys)->push_back(item_of(node).key);
    return 0;
}

numbers keys_of(bintree_node *root, int32_t order)
{
    numbers keys;
    EXPECT_EQ(bintreeTraverse(root, note_key, &keys, order), 0);
    return keys;
}

// Inserts a key that is not there or removes one that is, beside a set.
void change(bintree_node *&root, std::set<int32_t> &keys, item &own, bintree_path &path)
{
    const bool balanced = path.flags & BINTREE_BALANCED, there = keys.count(own.key) > 0;
    bintree_node *found = nullptr;
    numbers noted;
    EXPECT_EQ(bintreeSearch(root, &own.key, by_key), there ? node_of(own) : nullptr);
    EXPECT_EQ(bintreeIterate(&found, root, &own.key, by_key, &path),
              there ? BINTREE_DONE : BINTREE_NOT_FOUND);
    EXPECT_EQ(found, there ? node_of(own) : nullptr);
    int32_t index = -1, pivot = root ? 0 : -1;
    for (bintree_node *node = root, *next; node; node = next) {
        const bintree_step &step = path.steps[++index];
        EXPECT_TRUE(step.node == node && step.direction == (item_of(node).key < own.key));
        pivot = balanced && node->balance != 0 ? index : pivot;
        next = node == found ? nullptr : node->child[step.direction];
    }
    EXPECT_TRUE(path.depth == index && path.pivot == pivot);

    if (there) {
        const item kept = own;
        EXPECT_EQ(bintreeUnlink(&root, &path), BINTREE_DONE);
        EXPECT_EQ(memcmp(&own, &kept, sizeof own), 0);
        keys.erase(own.key);
    } else {
        memset(own.child, heap_pattern, sizeof own.child);
        bintreeLink(&root, node_of(own), &path);
        keys.insert(own.key);
    }
    EXPECT_TRUE(!balanced || bintreeCheckBalance(root, note_key, &noted) == 0);
    EXPECT_EQ(keys_of(root, BINTREE_IN_ORDER), numbers(keys.begin(), keys.end()));
}

TEST(Bintree, RandomChanges)
{
    heap = {};
    for (const uint32_t kind : {0u, uint32_t{BINTREE_BALANCED}}) {
        bintree_step fixed[64], outgrown[2];
        bintree_path paths[] = {{outgrown, 1, kind | BINTREE_GROW, 0, 0},
                                {nullptr, -1, kind | BINTREE_GROW, 0, 0},
                                {fixed, 63, kind, 0, 0}};
        item items[64] = {};
        for (int32_t i = 0; i < 64; i++)
            items[i].key = items[i].balance = i;
        bintree_node *root = nullptr;
        std::set<int32_t> keys;
        std::mt19937 random(kind);
        // Large trees and small ones in turn.
        for (uint32_t i = 0; i < 40000 && !HasFailure(); i++)
            change(root, keys, items[random() % (i / 1000 % 2 ? 64 : 8)], paths[random() % 3]);
        memFree(paths[0].steps);
        memFree(paths[1].steps);
        // What stands in the place of the word is the caller's, in a plain node.
        for (const item &it : items)
            EXPECT_TRUE(kind || it.balance == it.key);
    }
    EXPECT_EQ(heap.held, 0);
}

// Where more than one tree would be sound: which one the removal of 5 leaves, in pre-order.
TEST(Bintree, RemovalsKeepTheShape)
{
    const struct {
        uint32_t kind;
        numbers keys, left;
    } cases[] = {
        // The next node in order takes the place.
        {0, {5, 4, 6}, {6, 4}},
        {0, {5, 4, 8, 6, 9, 7}, {6, 4, 8, 7, 9}},
        {BINTREE_BALANCED, {5, 4, 8, 1, 6, 9}, {6, 4, 1, 8, 9}},
        // An even heavy child goes up with one rotation.
        {BINTREE_BALANCED, {6, 5, 8, 7, 9}, {8, 6, 7, 9}},
        {BINTREE_BALANCED, {4, 5, 2, 1, 3}, {2, 1, 4, 3}},
    };
    for (const auto &[kind, keys, left] : cases) {
        const int32_t removed = 5;
        bintree_node *root = make_tree(keys, kind);
        EXPECT_EQ(bintreeRemoveExt(&root, &removed, by_key, kind), BINTREE_DONE);
        EXPECT_EQ(bintreeRemoveExt(&root, &removed, by_key, kind), BINTREE_NOT_FOUND);
        EXPECT_EQ(keys_of(root, BINTREE_PRE_ORDER), left);
        bintreeClear(&root);
    }
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
    bintree_step array[39];
    const struct {
        bintree_path path;
        int32_t grown; // where 39 steps are needed
    } cases[] = {
        {{nullptr, -1, BINTREE_GROW, -7, -7}, 39},
        {{nullptr, -1, BINTREE_GROW | 0x100, -7, -7}, 38},
        {{array, -1, BINTREE_GROW | 0xff00, -7, -7}, 254},
        {{array, 38, 0, -7, -7}, 38},
        // The comparison comes before the step, so it has seen the node that the path cannot take.
        {{array, 37, 0xff00, -7, -7}, -1},
    };
    heap = {};
    bintree_node *root = make_chain(39);
    for (const auto &[given, grown] : cases) {
        bintree_path path = given;
        bintree_node *found;
        int32_t compares = 0;
        const bool fits = grown > 0;
        EXPECT_EQ(bintreeIterate(&found, root, &compares, to_the_end, &path),
                  fits ? BINTREE_DONE : BINTREE_NO_ROOM);
        EXPECT_EQ(path.capacity, fits ? grown : given.capacity);
        EXPECT_TRUE(compares == 39 && path.depth == (fits ? 38 : -7));
        EXPECT_EQ(path.flags, given.flags | (given.flags & BINTREE_GROW ? BINTREE_OWNED : 0));
        if (path.flags & BINTREE_OWNED)
            memFree(path.steps);
    }
    bintree_path broken = {nullptr, -2, BINTREE_GROW, 0, 0};
    bintree_node *found;
    int32_t compares = 0;
    EXPECT_EQ(bintreeIterate(&found, root, &compares, to_the_end, &broken), BINTREE_NO_ROOM);
    bintreeClear(&root);
    EXPECT_EQ(heap.held, 0);
}

TEST(Bintree, Creates)
{
    heap = {};
    constexpr uint32_t balanced = BINTREE_BALANCED;
    constexpr uintptr_t links = sizeof(bintree_plain_node), head = links + sizeof(int32_t);
    bintree_node *root = nullptr, *made;
    // 0x8000 is a part of the growth step here, and the size a size.
    EXPECT_EQ(create(&root, 2, 0x8000 | balanced), BINTREE_DONE);
    EXPECT_EQ(item_of(root).text[7], static_cast<char>(heap_pattern));
    EXPECT_EQ(create(&root, 1, balanced | BINTREE_ZERO), BINTREE_DONE);
    EXPECT_EQ(item_of(root->child[0]).pointer, nullptr);
    EXPECT_EQ(create(&root, 2, balanced, 0), BINTREE_EXISTS);
    EXPECT_EQ(create(&root, 3, balanced, head - 1), BINTREE_NO_MEMORY);
    EXPECT_EQ(create(&root, 3, 0, links - 1), BINTREE_NO_MEMORY);
    if constexpr (constexpr uint64_t much = uint64_t{UINT32_MAX} + 99; much <= UINTPTR_MAX) {
        EXPECT_EQ(create(&root, 3, balanced, much), BINTREE_NO_MEMORY);
    }
    // A node may end right behind its head, whose word a plain one does not have.
    for (const uint32_t kind : {0u, balanced}) {
        bintree_node *small = nullptr;
        EXPECT_EQ(bintreeCreateExt(&made, &small, nullptr, nullptr, kind ? head : links, kind), 0);
        bintreeClear(&small);
    }
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
    note_key(node, &seen->keys);
    return seen->keys.size() == seen->last ? seen->result : 0;
}

TEST(Bintree, WalksEndAnywhere)
{
    const numbers orders[] = {{4, 2, 1, 3, 8, 6, 5, 7, 9, 10, 12, 11},
                              {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
                              {1, 3, 2, 5, 7, 6, 11, 12, 10, 9, 8, 4}};
    heap = {};
    bintree_node *root = make_tree(orders[BINTREE_PRE_ORDER], 0);
    for (int32_t order = BINTREE_PRE_ORDER; order <= BINTREE_POST_ORDER; order++)
        for (numbers keys = orders[order]; !keys.empty(); keys.pop_back()) {
            visits seen = {{}, keys.size(), keys.size() % 2 ? 7 : INT32_MIN};
            EXPECT_EQ(bintreeTraverse(root, visit, &seen, order), seen.result);
            EXPECT_EQ(seen.keys, keys);
        }
    EXPECT_EQ(bintreeTraverse(root, visit, nullptr, -1), 0);
    EXPECT_EQ(bintreeTraverse(nullptr, visit, nullptr, BINTREE_PRE_ORDER), 0);
    bintreeClear(&root);
    EXPECT_EQ(heap.held, 0);
}

// No call stack would hold a frame for every level.
TEST(Bintree, MillionLevels)
{
    constexpr int32_t count = 1000000;
    heap = {};
    bintree_node *root = make_chain(count);
    EXPECT_EQ(bintreeGetHeight(root), count + 1);
    EXPECT_EQ(bintreeCount(root), count);
    bintreeClear(&root);
    EXPECT_TRUE(!root && heap.held == 0);
}

TEST(Bintree, FindsFields)
{
    bintree_node *root = make_tree({5, 2, 7, 1, 3, 6}, BINTREE_BALANCED);
    // The first in order of those that match: pre-order meets 5 first, post-order 3.
    const char word[8] = "Word\xff";
    for (const int32_t key : {1, 2, 3, 5, 6, 7}) {
        item &it = item_of(bintreeSearch(root, &key, by_key));
        const bool wanted = key == 2 || key == 3 || key == 5;
        memcpy(it.text, wanted ? word : "-------", sizeof it.text);
        it.pointer = wanted ? "Away" : key == 1 ? nullptr : "other";
    }
    int16_t two;
    int32_t four;
    memcpy(&two, word + 3, sizeof two);
    memcpy(&four, word + 1, sizeof four);
    constexpr uint32_t text = offsetof(item, text), pointer = offsetof(item, pointer);
    for (const bintree_node *const found :
         {bintreeFindInt1(root, -1, text + 4), bintreeFindInt2(root, two, text + 3),
          bintreeFindInt4(root, four, text + 1), bintreeFindStr(root, word, text, 0),
          bintreeFindStr(root, "wORD\xff", text, STR_NO_CASE),
          bintreeFindStr(root, "Away", pointer, STR_POINTER)})
        EXPECT_TRUE(found && item_of(found).key == 2);
    EXPECT_FALSE(bintreeFindInt1(root, 1, text) || bintreeFindStr(root, "word\xff", text, 0));
    bintreeClear(&root);
}

TEST(Bintree, ChecksTheWords)
{
    heap = {};
    bintree_node *root = make_tree({4, 3, 2, 1, 5, 6, 7}, BINTREE_ZERO);
    // Differences of 2 and -2, which no balanced tree has, and a word without its difference.
    const int32_t words[] = {0, 1, 2, 1, -2, -1, 0};
    for (int32_t key = 1; key <= 7; key++)
        bintreeSearch(root, &key, by_key)->balance = words[key - 1];
    visits seen = {{}, 1, 5};
    EXPECT_EQ(bintreeCheckBalance(root, visit, &seen), 3);
    EXPECT_EQ(seen.keys, (numbers{3, 4, 5}));
    // Without memory nothing is reached: the nodes are lost, and the link is null.
    bintree_node *link = root;
    heap.fails = true;
    bintreeClear(&link);
    heap.fails = false;
    EXPECT_TRUE(!link && heap.held == 7);
    bintreeClear(&root);
    EXPECT_EQ(heap.held, 0);
}

} // namespace

#include "tessel/list.h"
#include "tessel/mem.h"
#include "tessel/string.h"

#include "heap_watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stddef.h>
#include <string.h>
#include <utility>
#include <vector>

namespace
{

// Packed, so that no wide field stands at its natural alignment.
struct __attribute__((packed)) payload {
    char name[6];
    int8_t int1;
    int16_t int2;
    int32_t int4;
    const char *label;
};

struct item {
    list_dnode head;
    payload data;
};

constexpr int most = 4;
const payload payloads[most] = {{"red", -128, -32768, INT32_MIN, "One"},
                                {"Green", 7, 300, 0x20000, "two"},
                                {"green", 7, 300, 0x20000, nullptr},
                                {"blue", 5, -300, 0x10203, "TWO"}};
constexpr uint32_t name_at = offsetof(item, data.name);
constexpr uint32_t int1_at = offsetof(item, data.int1);
constexpr uint32_t int2_at = offsetof(item, data.int2);
constexpr uint32_t int4_at = offsetof(item, data.int4);
constexpr uint32_t label_at = offsetof(item, data.label);

// The first of the payloads as a list.
struct reader {
    int count;
    item items[most] = {};

    explicit reader(int length) : count(length)
    {
        for (int i = 0; i < count; i++)
            items[i].data = payloads[i];
    }
    const list_node *plain(int index = 0) const
    {
        return index < count ? reinterpret_cast<const list_node *>(&items[index]) : nullptr;
    }
    list_dnode *ring(int index = 0)
    {
        return index < count ? &items[index].head : nullptr;
    }
    int index_of(const void *node) const
    {
        return node ? static_cast<int>(static_cast<const item *>(node) - items) : -1;
    }
    void link(bool joined)
    {
        for (int i = 0; i < count; i++) {
            items[i].head.next = joined || i + 1 < count ? ring((i + 1) % count) : nullptr;
            items[i].head.prev = joined || i > 0 ? ring((i + count - 1) % count) : nullptr;
        }
    }

    // The index of the node that a procedure finds, -1 for null; its twin finds the same in the
    // ring and in the list. No link may change.
    template <typename Plain, typename Ring, typename... Arguments>
    int call(Plain *procedure, Ring *twin, Arguments... arguments)
    {
        link(false);
        const int found = index_of(procedure(plain(), arguments...));
        for (const bool joined : {false, true}) {
            link(joined);
            item before[most];
            memcpy(before, items, sizeof before);
            EXPECT_EQ(index_of(twin(ring(), arguments...)), found);
            EXPECT_EQ(memcmp(before, items, sizeof before), 0);
        }
        return found;
    }
};

class List : public testing::TestWithParam<int>
{
  protected:
    const int m = GetParam();
    reader list{m};
};
INSTANTIATE_TEST_SUITE_P(Lengths, List, testing::Range(0, most + 1));

TEST_P(List, Places)
{
    for (int i : {INT32_MIN, -1, 0, 1, 2, 3, 4, 5, INT32_MAX})
        EXPECT_EQ(list.call(listNode, listCNNode, i), i >= 0 && i < m ? i : -1) << i;
    // Behind the list's own nodes stands null; a node of another list is in none.
    const list_dnode stranger = {};
    for (const bool joined : {true, false}) {
        list.link(joined);
        EXPECT_EQ(listCNCount(list.ring()), m);
        for (int i = 0; i <= m; i++) {
            EXPECT_EQ(listCNIndex(list.ring(), list.ring(i)), i < m ? i : -1);
            EXPECT_EQ(listCNExist(list.ring(), list.ring(i)), i < m);
        }
        EXPECT_EQ(listCNIndex(list.ring(), &stranger), -1);
    }
    EXPECT_EQ(listCount(list.plain()), m);
    for (int i = 0; i <= m; i++) {
        EXPECT_EQ(listIndex(list.plain(), list.plain(i)), i < m ? i : -1);
        EXPECT_EQ(listExist(list.plain(), list.plain(i)), i < m);
        EXPECT_EQ(list.index_of(listFindPrev(list.plain(), list.plain(i))), i - 1);
    }
    EXPECT_EQ(listFindPrev(list.plain(), reinterpret_cast<const list_node *>(&stranger)), nullptr);
    EXPECT_EQ(list.index_of(listFindTail(list.plain())), m - 1);
    for (int32_t at : {INT32_MIN, -1, 0, 1, 2, 3, 4, 5, 6, INT32_MAX}) {
        const bool beyond = at > m + 1, front = at == 0 || m == 0;
        const int node = at < 0 || beyond ? m - 1 : at == m + 1 ? -1 : at - 1;
        uint32_t status = 99;
        for (uint32_t *const out : {&status, static_cast<uint32_t *>(nullptr)})
            EXPECT_EQ(list.call(listInsertionNode, listCNInsertionNode, at, out), node) << at;
        EXPECT_EQ(status, front ? LIST_BEFORE : beyond ? LIST_BEYOND_END : 0) << at;
        list.link(false);
        listInsertionNode(list.plain(), at, &status);
        EXPECT_EQ(status, at == 0 ? LIST_BEFORE : beyond ? LIST_BEYOND_END : 0) << at;
    }
}

TEST_P(List, FindsFields)
{
    const auto bit = [&](uint32_t mask, uint32_t at, uint32_t width, uint32_t flags) {
        return list.call(listFindBit, listCNFindBit, mask, at, width, flags);
    };
    const auto text = [&](const char *wanted, uint32_t at, uint32_t flags) {
        return list.call(listFindStr, listCNFindStr, wanted, at, flags);
    };
    constexpr uint32_t all = LIST_ALL_BITS, invert = LIST_INVERT;
    constexpr int none = most;
    // What is found, and the payload that should be.
    const std::pair<int, int> rows[] = {
        {bit(0x6, int1_at, 1, 0), 1},
        {bit(0xa, int1_at, 1, all), none},
        {bit(0x6, int1_at, 1, invert), 0},
        {bit(0x84, int1_at, 1, all | invert), 0},
        {bit(0, int1_at, 1, all), 0},
        // No sign is extended, and nothing behind the field is read.
        {bit(0xffffff00, int1_at, 1, 0), none},
        {bit(0xffff0000, int2_at, 2, 0), none},
        {bit(0x80000000, int4_at, 3, 0), 0},
        {list.call(listFindInt1, listCNFindInt1, int8_t{7}, int1_at), 1},
        {list.call(listFindInt1, listCNFindInt1, int8_t{6}, int1_at), none},
        {list.call(listFindInt2, listCNFindInt2, int16_t{-300}, int2_at), 3},
        {list.call(listFindInt2, listCNFindInt2, int16_t{0x2c}, int2_at), none},
        {list.call(listFindInt4, listCNFindInt4, 0x10203, int4_at), 3},
        {list.call(listFindInt4, listCNFindInt4, 0x203, int4_at), none},
        {text("green", name_at, 0), 2},
        {text("green", name_at, STR_NO_CASE), 1},
        {text("TWO", label_at, STR_POINTER), 3},
        {text("Two", label_at, STR_POINTER | STR_NO_CASE), 1},
    };
    for (const auto &[found, payload] : rows)
        EXPECT_EQ(found, payload < m ? payload : -1) << "row " << &found - &rows->first;
}

// The last of the items that hold the maximum. An empty ring leaves the result alone.
TEST_P(List, FindsMaxima)
{
    const int holder = std::min(m - 1, 2);
    const payload held = payloads[std::max(holder, 0)];
    const auto expect_max = [&](auto plain, auto twin, uint32_t at, auto value) {
        decltype(value) max = 99;
        EXPECT_EQ(list.call(plain, twin, &max, at), holder);
        EXPECT_EQ(max, m > 0 ? value : 0);
        EXPECT_EQ(list.call(plain, twin, decltype(&max){}, at), holder);
        twin(nullptr, &(max = 99), at);
        EXPECT_EQ(max, 99);
    };
    expect_max(listMaxInt1, listCNMaxInt1, int1_at, int8_t{held.int1});
    expect_max(listMaxInt2, listCNMaxInt2, int2_at, int16_t{held.int2});
    expect_max(listMaxInt4, listCNMaxInt4, int4_at, int32_t{held.int4});
}

// Every place in lists of up to three nodes; the node is then taken from there, with the node
// before it given or not.
TEST(SinglyLinkedList, AddsAndRemoves)
{
    heap = {};
    for (size_t bits = 0; bits < 2 * 4 * 4; bits++) {
        const size_t count = bits / 2 % 4, after = bits / 8; // 0 for none
        if (after > count)
            continue;
        SCOPED_TRACE(testing::Message() << count << " nodes, after " << after);
        list_node stranger, *head = nullptr;
        listPop(&head);
        std::vector<list_node *> order;
        for (size_t i = 0; i < count; i++)
            order.insert(order.begin(), listPush(&head, 40));
        list_node *const prev = after > 0 ? order[after - 1] : nullptr;
        list_node *const given = bits % 2 ? prev : nullptr;
        const auto expect_order = [&](const std::vector<list_node *> &nodes) {
            const list_node *at = head;
            for (size_t i = 0; i < nodes.size(); at = at->next, i++)
                ASSERT_EQ(at, nodes[i]) << i;
            EXPECT_EQ(at, nullptr);
            EXPECT_EQ(heap.held, static_cast<int>(nodes.size()));
        };
        list_node *const node = listCreate(&head, count ? prev : &stranger, 41);
        EXPECT_EQ(heap.last_size, 41u);
        std::vector<list_node *> longer = order;
        longer.insert(longer.begin() + static_cast<ptrdiff_t>(after), node);
        expect_order(longer);

        list_node *const next = node->next;
        listCut(&head, node, given);
        EXPECT_EQ(node->next, next);
        listAdd(&head, prev, node);
        listRemove(&head, node, given);
        expect_order(order);
        listAdd(&head, prev, nullptr);
        listRemove(&head, nullptr, prev);
        listRemove(&head, &stranger, nullptr);
        EXPECT_EQ(listPush(&head, sizeof *head - 1), nullptr);
        expect_order(order);
        listClear(&head);
        EXPECT_TRUE(!head && heap.held == 0);
    }
}

// Every flag, reference node and shape; the cut that follows takes the node from every place.
TEST(DoublyLinkedList, AddsAndRemoves)
{
    heap = {};
    for (uint32_t bits = 0; bits < 2 * 32 * 4 * 4; bits++) {
        const bool ring = bits & 1;
        const uint32_t flags = (bits & 2 ? LIST_BEYOND_END : 0) | (bits >> 2 & 15);
        const size_t count = bits / 64 % 4, ref = bits / 64 / 4; // 0 for none
        if (ref > count)
            continue;
        SCOPED_TRACE(testing::Message() << ring << ' ' << flags << ' ' << count << ' ' << ref);
        const auto expect_links = [](const std::vector<list_dnode *> &nodes, bool joined) {
            for (size_t i = 0, m = nodes.size(); i < m; i++) {
                EXPECT_EQ(nodes[i]->next, joined || i + 1 < m ? nodes[(i + 1) % m] : nullptr) << i;
                EXPECT_EQ(nodes[i]->prev, joined || i > 0 ? nodes[(i + m - 1) % m] : nullptr) << i;
            }
        };
        list_dnode *head = nullptr;
        std::vector<list_dnode *> order;
        for (size_t i = 0; i < count; i++)
            order.push_back(listDNCreate(&head, i > 0 ? order.back() : nullptr, sizeof *head,
                                         ring ? LIST_RING : 0));
        list_dnode *const first = head;

        list_dnode *const added =
            listDNCreate(&head, ref > 0 ? order[ref - 1] : nullptr, sizeof(item), flags);
        EXPECT_EQ(reinterpret_cast<unsigned char &>(added[1]),
                  flags & LIST_ZERO ? 0 : heap_pattern);
        std::vector<list_dnode *> longer = order;
        const size_t place = (ref > 1 ? ref - 1 : 0) + (first && !(flags & LIST_BEFORE));
        longer.insert(longer.begin() + static_cast<ptrdiff_t>(place), added);
        expect_links(longer, first ? ring : (flags & LIST_RING) != 0);
        EXPECT_EQ(head, first && (place > 0 || flags & LIST_KEEP_HEAD) ? first : added);

        const list_dnode links = *added;
        listDNAdd(&head, nullptr, nullptr, flags);
        listDNRemove(&head, nullptr);
        EXPECT_EQ(listDNCreate(&head, nullptr, sizeof *head - 1, flags), nullptr);
        listDNCut(&head, added);
        EXPECT_TRUE(added->next == links.next && added->prev == links.prev && head == first);
        memFree(added);
        expect_links(order, ring);
        if (head)
            listDNRemove(&head, head);
        EXPECT_EQ(heap.held, static_cast<int>(count) - (count > 0));
        listCNClear(&head);
        EXPECT_TRUE(!head && heap.held == 0);
    }
}

} // namespace

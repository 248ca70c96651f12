#include "tessel/list.h"
#include "tessel/string.h"

#include <gtest/gtest.h>

#include <stddef.h>
#include <string.h>
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
                                {"Green", 5, -300, 0x10203, "two"},
                                {"green", 7, 300, 0x20000, nullptr},
                                {"blue", 7, 300, 0x30000, "TWO"}};
constexpr uint32_t name_at = offsetof(item, data.name);
constexpr uint32_t int1_at = offsetof(item, data.int1);
constexpr uint32_t int2_at = offsetof(item, data.int2);
constexpr uint32_t int4_at = offsetof(item, data.int4);
constexpr uint32_t label_at = offsetof(item, data.label);

// A node for both families of procedures.
struct node_argument {
    const list_dnode *node;
    operator const list_dnode *() const
    {
        return node;
    }
    operator const list_node *() const
    {
        return reinterpret_cast<const list_node *>(node);
    }
};

union word {
    int32_t int4;
    int16_t int2;
    int8_t int1;
    uint32_t status;
};

constexpr int32_t untouched = 0x5a5a5a5a;

// A list to be read from its first item: that is item `start` of the payloads, as if it stood in
// the middle of a ring.
struct reader {
    bool ring;
    bool ring_procedures; // they are used on a linear list as well
    int count;
    int start;
    item items[most] = {};
    word out = {};

    int result(int32_t number) const
    {
        return number;
    }
    int result(const void *node) const
    {
        return node ? static_cast<int>(static_cast<const item *>(node) - items) : -1;
    }

    // The number that a call gives, or the index of the node, -1 for null. No link may change.
    template <typename Plain, typename Ring, typename... Arguments>
    int call(Plain *plain, Ring *ring_procedure, Arguments... arguments)
    {
        item before[most];
        memcpy(before, items, sizeof before);
        out.int4 = untouched;
        list_dnode *const list = count > 0 ? &items[0].head : nullptr;
        const int got = ring_procedures ? result(ring_procedure(list, arguments...))
                                        : result(plain(node_argument{list}, arguments...));
        EXPECT_EQ(memcmp(before, items, sizeof before), 0);
        return got;
    }

    // The first item, or the last, for which a row of marks, one for each payload, has an x.
    int marked(const char *marks, bool last = false) const
    {
        int found = -1;
        for (int i = 0; i < count && (found < 0 || last); i++)
            found = marks[(start + i) % count] == 'x' ? i : found;
        return found;
    }
};

template <typename Check>
void for_every_list(Check check)
{
    for (int bits = 0; bits < 3 * (most + 1) * most; bits++) {
        const int shape = bits % 3;
        reader list = {shape == 2, shape > 0, bits / 3 / most, bits / 3 % most};
        const int m = list.count;
        for (int i = 0; i < m; i++) {
            list.items[i].data = payloads[(list.start + i) % m];
            if (list.ring || i > 0)
                list.items[i].head.prev = &list.items[(i + m - 1) % m].head;
            if (list.ring || i + 1 < m)
                list.items[i].head.next = &list.items[(i + 1) % m].head;
        }
        SCOPED_TRACE(testing::Message() << "shape " << shape << ", " << m << " items");
        check(list);
    }
}

TEST(List, Places)
{
    for_every_list([](reader &list) {
        const int m = list.count;
        EXPECT_EQ(list.call(listCount, listCNCount), m);
        for (int i : {INT32_MIN, -1, 0, 1, 2, 3, 4, 5, INT32_MAX})
            EXPECT_EQ(list.call(listNode, listCNNode, i), i >= 0 && i < m ? i : -1) << i;
        // Behind the list's own nodes stand null and a node of another list.
        const list_dnode stranger = {};
        for (int i = 0; i < m + 2; i++) {
            const node_argument node = {i < m ? &list.items[i].head : i == m ? nullptr : &stranger};
            EXPECT_EQ(list.call(listIndex, listCNIndex, node), i < m ? i : -1);
            EXPECT_EQ(list.call(listExist, listCNExist, node), i < m);
            if (list.ring_procedures)
                continue;
            const node_argument first = {m > 0 ? &list.items[0].head : nullptr};
            EXPECT_EQ(list.result(listFindPrev(first, node)), i <= m ? i - 1 : -1);
        }
        const node_argument first = {m > 0 ? &list.items[0].head : nullptr};
        EXPECT_TRUE(list.ring_procedures || list.result(listFindTail(first)) == m - 1);
    });
}

TEST(List, InsertionPlaces)
{
    for_every_list([](reader &list) {
        const int m = list.count;
        for (int32_t at : {INT32_MIN, -2, -1, 0, 1, 2, 3, 4, 5, 6, INT32_MAX}) {
            const bool beyond = at > m + 1;
            const bool front = at == 0 || (m == 0 && list.ring_procedures);
            const int node = at < 0 || beyond ? m - 1 : at == m + 1 ? -1 : at - 1;
            uint32_t *status = &list.out.status;
            EXPECT_EQ(list.call(listInsertionNode, listCNInsertionNode, at, status), node) << at;
            EXPECT_EQ(list.out.int4, front ? LIST_BEFORE : beyond ? LIST_BEYOND_END : 0) << at;
            status = nullptr;
            EXPECT_EQ(list.call(listInsertionNode, listCNInsertionNode, at, status), node) << at;
        }
    });
}

TEST(List, FindsFields)
{
    static const struct {
        char kind; // b: bits, s: string, otherwise the bytes of an integer
        uint32_t value, offset, width, flags;
        const char *marks, *text;
    } rows[] = {
        {'b', 0x6, int1_at, 1, 0, ".xxx", ""},
        {'b', 0x6, int1_at, 1, LIST_ALL_BITS, "..xx", ""},
        {'b', 0x6, int1_at, 1, LIST_INVERT, "x...", ""},
        {'b', 0x6, int1_at, 1, LIST_ALL_BITS | LIST_INVERT, "xx..", ""},
        {'b', 0, int1_at, 1, LIST_ALL_BITS, "xxxx", ""},
        {'b', 0, int1_at, 1, LIST_INVERT, "xxxx", ""},
        {'b', 0, int1_at, 1, LIST_ALL_BITS | LIST_INVERT, "....", ""},
        // No sign is extended, and nothing behind the field is read.
        {'b', 0xffffff00, int1_at, 1, 0, "....", ""},
        {'b', 0xffff0000, int2_at, 2, 0, "....", ""},
        {'b', 0x8000, int2_at, 2, 0, "xx..", ""},
        {'b', 0x80000000, int4_at, 3, 0, "x...", ""},
        {'1', 7, int1_at, 0, 0, "..xx", ""},
        {'1', 6, int1_at, 0, 0, "....", ""},
        {'2', 300, int2_at, 0, 0, "..xx", ""},
        {'2', 0x2c, int2_at, 0, 0, "....", ""},
        {'4', 0x10203, int4_at, 0, 0, ".x..", ""},
        {'4', 0x203, int4_at, 0, 0, "....", ""},
        {'s', 0, name_at, 0, 0, "..x.", "green"},
        {'s', 0, name_at, 0, STR_NO_CASE, ".xx.", "green"},
        {'s', 0, label_at, 0, STR_POINTER, ".x..", "two"},
        {'s', 0, label_at, 0, STR_POINTER | STR_NO_CASE, ".x.x", "Two"},
    };
    for_every_list([](reader &list) {
        for (const auto &[kind, value, at, width, flags, marks, text] : rows) {
            int got = -2;
            if (kind == 'b')
                got = list.call(listFindBit, listCNFindBit, value, at, width, flags);
            else if (kind == 's')
                got = list.call(listFindStr, listCNFindStr, text, at, flags);
            else if (kind == '1')
                got = list.call(listFindInt1, listCNFindInt1, static_cast<int8_t>(value), at);
            else if (kind == '2')
                got = list.call(listFindInt2, listCNFindInt2, static_cast<int16_t>(value), at);
            else
                got = list.call(listFindInt4, listCNFindInt4, static_cast<int32_t>(value), at);
            EXPECT_EQ(got, list.marked(marks)) << kind << value << ' ' << flags << text;
        }
    });
}

// The last item holds the maximum, and where there are four the one before it may as well.
template <typename Int, typename Plain, typename Ring>
void expect_max(reader &list, Int word::*member, Plain *plain, Ring *ring, uint32_t at, word max,
                const char *holders)
{
    static const char *const marks[] = {"", "x", ".x", "..x"};
    const int holder = list.marked(list.count < most ? marks[list.count] : holders, true);
    Int *out = &(list.out.*member);
    EXPECT_EQ(list.call(plain, ring, out, at), holder);
    if (list.count == 0)
        max.int4 = list.ring_procedures ? untouched : 0;
    EXPECT_EQ(*out, max.*member);
    out = nullptr;
    EXPECT_EQ(list.call(plain, ring, out, at), holder);
}

TEST(List, FindsMaxima)
{
    for_every_list([](reader &list) {
        const payload last = payloads[list.count > 0 ? list.count - 1 : 0];
        const word max1 = {.int1 = last.int1}, max2 = {.int2 = last.int2};
        expect_max(list, &word::int1, listMaxInt1, listCNMaxInt1, int1_at, max1, "..xx");
        expect_max(list, &word::int2, listMaxInt2, listCNMaxInt2, int2_at, max2, "..xx");
        expect_max(list, &word::int4, listMaxInt4, listCNMaxInt4, int4_at, {last.int4}, "...x");
    });
}

// Every place in lists of up to three nodes; the cut that follows takes the node from there, with
// the node before it given or not.
TEST(List, AddsAndCuts)
{
    for (int bits = 0; bits < 2 * 4 * 4; bits++) {
        const int count = bits / 2 % 4, after = bits / 8 - 1;
        if (after >= count)
            continue;
        SCOPED_TRACE(testing::Message() << count << " nodes, after " << after);
        list_node nodes[3], node, stranger;
        list_node *head = nullptr;
        std::vector<list_node *> order;
        for (int i = 0; i < count; i++) {
            listAdd(&head, i > 0 ? &nodes[i - 1] : &stranger, &nodes[i]);
            order.push_back(&nodes[i]);
        }
        const auto expect_order = [&] {
            const list_node *at = head;
            for (size_t i = 0; i < order.size(); at = at->next, i++)
                ASSERT_EQ(at, order[i]) << i;
            EXPECT_EQ(at, nullptr);
        };
        listAdd(&head, after < 0 ? nullptr : &nodes[after], &node);
        order.insert(order.begin() + (after + 1), &node);
        expect_order();

        list_node *const next = node.next;
        list_node *const prev = after < 0 ? &stranger : &nodes[after];
        listCut(&head, &node, bits % 2 ? prev : nullptr);
        EXPECT_EQ(node.next, next);
        order.erase(order.begin() + (after + 1));
        expect_order();

        listAdd(&head, prev, nullptr);
        listCut(&head, nullptr, prev);
        listRemove(&head, nullptr, prev);
        listCut(&head, &node, nullptr);
        listRemove(&head, &node, nullptr);
        expect_order();
    }
}

void expect_links(const std::vector<list_dnode *> &nodes, bool ring)
{
    const size_t count = nodes.size();
    for (size_t i = 0; i < count; i++) {
        EXPECT_EQ(nodes[i]->next, ring || i + 1 < count ? nodes[(i + 1) % count] : nullptr) << i;
        EXPECT_EQ(nodes[i]->prev, ring || i > 0 ? nodes[(i + count - 1) % count] : nullptr) << i;
    }
}

// Every flag, reference node and shape; the cut that follows takes the node from every place.
TEST(DoublyLinkedList, AddsAndCuts)
{
    for (int bits = 0; bits < 2 * 32 * 4 * 4; bits++) {
        const bool ring = bits & 1;
        const uint32_t flags = (bits & 2 ? LIST_BEYOND_END : 0) | (bits >> 2 & 15);
        const int count = bits / 64 % 4;
        const int ref = bits / 64 / 4 - 1;
        if (ref >= count)
            continue;
        SCOPED_TRACE(testing::Message() << ring << ' ' << flags << ' ' << count << ' ' << ref);
        list_dnode nodes[3], added;
        list_dnode *head = nullptr;
        std::vector<list_dnode *> order;
        for (int i = 0; i < count; i++) {
            listDNAdd(&head, i > 0 ? order.back() : nullptr, &nodes[i], ring ? LIST_RING : 0);
            order.push_back(&nodes[i]);
        }
        list_dnode *const first = head;

        listDNAdd(&head, ref < 0 ? nullptr : &nodes[ref], &added, flags);
        std::vector<list_dnode *> after = order;
        const int place = (ref > 0 ? ref : 0) + (first && !(flags & LIST_BEFORE));
        after.insert(after.begin() + place, &added);
        expect_links(after, first ? ring : (flags & LIST_RING) != 0);
        EXPECT_EQ(head, first && (place > 0 || flags & LIST_KEEP_HEAD) ? first : &added);

        const list_dnode links = added;
        listDNAdd(&head, nullptr, nullptr, flags);
        listDNCut(&head, nullptr);
        listDNCut(&head, &added);
        EXPECT_TRUE(added.next == links.next && added.prev == links.prev);
        expect_links(order, ring);
        EXPECT_EQ(head, first);
    }
}

} // namespace

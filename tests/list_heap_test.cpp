#include "tessel/list.h"

#include "heap_watch.h"

#include <gtest/gtest.h>

namespace
{

TEST(ListHeap, Nodes)
{
    heap = {};
    list_node *head = nullptr;
    listPop(&head);
    list_node *const a = listPush(&head, 40);
    list_node *const b = listPush(&head, 41);
    EXPECT_EQ(heap.last_size, 41u);
    list_node *const c = listCreate(&head, b, 42);
    EXPECT_EQ(heap.last_size, 42u);
    EXPECT_TRUE(head == b && b->next == c && c->next == a && !a->next);
    listRemove(&head, c, b);
    EXPECT_TRUE(head == b && b->next == a && !a->next);
    listRemove(&head, a, nullptr);
    EXPECT_TRUE(head == b && !b->next);
    listPush(&head, 40);
    listPop(&head);
    EXPECT_TRUE(head == b && !b->next);
    EXPECT_EQ(heap.held, 1);
    listPush(&head, 40);
    listClear(&head);
    EXPECT_EQ(head, nullptr);
    EXPECT_EQ(heap.held, 0);
}

TEST(ListHeap, DoublyLinkedNodes)
{
    for (const uint32_t shape : {0u, uint32_t{LIST_RING}}) {
        heap = {};
        list_dnode *head = nullptr;
        listCNClear(&head);
        for (int i = 0; i < 4; i++) {
            const uint32_t flags = shape | LIST_BEFORE | (i % 2 ? LIST_ZERO : 0);
            list_dnode *const node = listDNCreate(&head, nullptr, sizeof *node + 1, flags);
            EXPECT_EQ(node, head);
            EXPECT_EQ(reinterpret_cast<unsigned char &>(node[1]), i % 2 ? 0 : heap_pattern);
            EXPECT_EQ(heap.last_size, sizeof *node + 1);
        }
        listDNRemove(&head, head->next);
        listDNRemove(&head, nullptr);
        EXPECT_EQ(heap.held, 3);
        EXPECT_EQ(listCNCount(head), 3);
        listCNClear(&head);
        EXPECT_EQ(head, nullptr);
        EXPECT_EQ(heap.held, 0);
    }
}

TEST(ListHeap, NodesTooSmallForAHead)
{
    heap = {};
    list_node *head = nullptr;
    list_dnode *dhead = nullptr;
    EXPECT_EQ(listPush(&head, sizeof *head - 1), nullptr);
    EXPECT_EQ(listCreate(&head, head, sizeof *head - 1), nullptr);
    EXPECT_EQ(listDNCreate(&dhead, nullptr, sizeof *dhead - 1, LIST_ZERO), nullptr);
    EXPECT_TRUE(!head && !dhead && heap.held == 0);
}

} // namespace

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

TEST(ListHeap, NodesThatCannotBeMade)
{
    heap = {};
    list_node *head = nullptr;
    list_dnode *dhead = nullptr;
    list_node *const node = listPush(&head, sizeof(list_node));
    list_dnode *const dnode = listDNCreate(&dhead, nullptr, sizeof(list_dnode), LIST_RING);
    for (const bool fails : {true, false}) {
        heap.fails = fails;
        // Too small for a head where memory is not the matter.
        const uint32_t size = fails ? 64 : sizeof(list_node) - 1;
        const uint32_t dsize = fails ? 64 : sizeof(list_dnode) - 1;
        EXPECT_EQ(listPush(&head, size), nullptr);
        EXPECT_EQ(listCreate(&head, head, size), nullptr);
        EXPECT_EQ(listDNCreate(&dhead, nullptr, dsize, LIST_ZERO | LIST_BEFORE), nullptr);
        EXPECT_TRUE(head == node && !node->next);
        EXPECT_TRUE(dhead == dnode && dnode->next == dnode && dnode->prev == dnode);
    }
    listClear(&head);
    listCNClear(&dhead);
    EXPECT_EQ(heap.held, 0);
}

} // namespace

#include "tessel/list.h"

#include "tessel/mem.h"

#include "bytes.h"
#include "string_internal.h"

#include <stddef.h>
#include <string.h>

static_assert(offsetof(list_node, next) == 0 && sizeof(list_node) == sizeof(void *));
static_assert(offsetof(list_dnode, next) == 0 && offsetof(list_dnode, prev) == sizeof(void *) &&
              sizeof(list_dnode) == 2 * sizeof(void *));

// Read as bytes: what is taken for a list_node here may be the head of a list_dnode, whose link is
// a pointer of another type.
static list_node *next_of(const list_node *node)
{
    return static_cast<list_node *>(load<void *>(node));
}

static const void *field_of(const list_node *node, uint32_t offset)
{
    return reinterpret_cast<const char *>(node) + offset;
}

// A node that would not hold its own links is refused, instead of linked through foreign memory.
static void *new_node(uint32_t size, size_t head_size)
{
    return size < head_size ? nullptr : memAlloc(size);
}

// Singly linked lists: changes

list_node *listPush(list_node **head, uint32_t size)
{
    return listCreate(head, nullptr, size);
}

void listPop(list_node **head)
{
    list_node *const node = *head;
    if (!node)
        return;
    *head = next_of(node);
    memFree(node);
}

list_node *listCreate(list_node **head, list_node *after, uint32_t size)
{
    list_node *const node = static_cast<list_node *>(new_node(size, sizeof(list_node)));
    listAdd(head, after, node);
    return node;
}

void listAdd(list_node **head, list_node *after, list_node *node)
{
    if (!node)
        return;
    list_node **const link = after && *head ? &after->next : head;
    node->next = *link;
    *link = node;
}

// Takes a node out, and tells whether it was there to be taken.
static bool cut_node(list_node **head, list_node *node, list_node *prev)
{
    if (!node)
        return false;
    if (*head == node) {
        *head = node->next;
        return true;
    }
    if (!prev)
        prev = listFindPrev(*head, node);
    if (!prev)
        return false;
    prev->next = node->next;
    return true;
}

void listCut(list_node **head, list_node *node, list_node *prev)
{
    cut_node(head, node, prev);
}

void listRemove(list_node **head, list_node *node, list_node *prev)
{
    if (cut_node(head, node, prev))
        memFree(node);
}

void listClear(list_node **head)
{
    while (*head)
        listPop(head);
}

// Singly linked lists: places

int32_t listCount(const list_node *list)
{
    uint32_t count = 0;
    for (; list; list = next_of(list))
        count++;
    return static_cast<int32_t>(count);
}

list_node *listNode(const list_node *list, int32_t index)
{
    if (index < 0)
        return nullptr;
    for (; list && index > 0; index--)
        list = next_of(list);
    return const_cast<list_node *>(list);
}

int32_t listIndex(const list_node *list, const list_node *node)
{
    uint32_t index = 0;
    for (; list && list != node; list = next_of(list))
        index++;
    return list ? static_cast<int32_t>(index) : -1;
}

int32_t listExist(const list_node *list, const list_node *node)
{
    while (list && list != node)
        list = next_of(list);
    return list != nullptr;
}

list_node *listFindTail(const list_node *list)
{
    return listFindPrev(list, nullptr);
}

list_node *listFindPrev(const list_node *list, const list_node *node)
{
    if (list == node)
        return nullptr;
    while (list && next_of(list) != node)
        list = next_of(list);
    return const_cast<list_node *>(list);
}

static void set_status(uint32_t *status, uint32_t value)
{
    if (status)
        *status = value;
}

list_node *listInsertionNode(const list_node *list, int32_t position, uint32_t *status)
{
    if (position == 0) {
        set_status(status, LIST_BEFORE);
        return nullptr;
    }
    const list_node *previous = nullptr;
    // Wide enough to count down from every position, also through a list of any length.
    int64_t left = int64_t{position} - 1;
    for (; left != 0 && list; left--) {
        previous = list;
        list = next_of(list);
    }
    set_status(status, left > 0 ? LIST_BEYOND_END : 0);
    return const_cast<list_node *>(left == 0 ? list : previous);
}

// Singly linked lists: searches

list_node *listFindBit(const list_node *list, uint32_t mask, uint32_t offset, uint32_t width,
                       uint32_t flags)
{
    const bool invert = flags & LIST_INVERT;
    for (; list; list = next_of(list)) {
        const uint32_t bits = memRestoreInt(field_of(list, offset), width) & mask;
        const bool set = flags & LIST_ALL_BITS ? bits == mask : bits != 0;
        if (set != invert)
            break;
    }
    return const_cast<list_node *>(list);
}

template <typename Int>
static list_node *find_int(const list_node *list, Int value, uint32_t offset)
{
    while (list && load<Int>(field_of(list, offset)) != value)
        list = next_of(list);
    return const_cast<list_node *>(list);
}

list_node *listFindInt1(const list_node *list, int8_t value, uint32_t offset)
{
    return find_int(list, value, offset);
}

list_node *listFindInt2(const list_node *list, int16_t value, uint32_t offset)
{
    return find_int(list, value, offset);
}

list_node *listFindInt4(const list_node *list, int32_t value, uint32_t offset)
{
    return find_int(list, value, offset);
}

list_node *listFindStr(const list_node *list, const char *text, uint32_t offset, uint32_t flags)
{
    str_compare_class wanted = {text, offset, flags, nullptr};
    while (list && !str_compare_class_str(list, &wanted))
        list = next_of(list);
    return const_cast<list_node *>(list);
}

template <typename Int>
static list_node *find_max(const list_node *list, Int *out_value, uint32_t offset)
{
    Int max = 0;
    const list_node *holder = nullptr;
    for (; list; list = next_of(list)) {
        const Int value = load<Int>(field_of(list, offset));
        if (!holder || value >= max) {
            max = value;
            holder = list;
        }
    }
    if (out_value)
        *out_value = max;
    return const_cast<list_node *>(holder);
}

list_node *listMaxInt1(const list_node *list, int8_t *out_value, uint32_t offset)
{
    return find_max(list, out_value, offset);
}

list_node *listMaxInt2(const list_node *list, int16_t *out_value, uint32_t offset)
{
    return find_max(list, out_value, offset);
}

list_node *listMaxInt4(const list_node *list, int32_t *out_value, uint32_t offset)
{
    return find_max(list, out_value, offset);
}

// Doubly linked lists

list_dnode *listDNCreate(list_dnode **head, list_dnode *ref, uint32_t size, uint32_t flags)
{
    list_dnode *const node = static_cast<list_dnode *>(new_node(size, sizeof(list_dnode)));
    if (!node)
        return nullptr;
    if (flags & LIST_ZERO)
        memset(node, 0, size);
    listDNAdd(head, ref, node, flags);
    return node;
}

static void link_between(list_dnode *prev, list_dnode *node, list_dnode *next)
{
    node->prev = prev;
    node->next = next;
    if (prev)
        prev->next = node;
    if (next)
        next->prev = node;
}

void listDNAdd(list_dnode **head, list_dnode *ref, list_dnode *node, uint32_t flags)
{
    if (!node)
        return;
    list_dnode *const first = *head;
    if (!first) {
        node->prev = flags & LIST_RING ? node : nullptr;
        node->next = node->prev;
        *head = node;
        return;
    }
    if (!ref)
        ref = first;
    if (!(flags & LIST_BEFORE)) {
        link_between(ref, node, ref->next);
        return;
    }
    link_between(ref->prev, node, ref);
    if (ref == first && !(flags & LIST_KEEP_HEAD))
        *head = node;
}

void listDNCut(list_dnode **head, list_dnode *node)
{
    if (!node)
        return;
    list_dnode *const prev = node->prev;
    list_dnode *const next = node->next;
    if (*head == node)
        *head = next == node ? nullptr : next;
    if (prev)
        prev->next = next;
    if (next)
        next->prev = prev;
}

void listDNRemove(list_dnode **head, list_dnode *node)
{
    listDNCut(head, node);
    memFree(node);
}

// Rings

// Cuts the link that leads to the node `list`, so that what is left is a linear list from there on.
// Null and a linear list are that already.
static list_node *open_ring(list_dnode *list)
{
    if (list && list->prev)
        list->prev->next = nullptr;
    return reinterpret_cast<list_node *>(list);
}

static void close_ring(list_dnode *list)
{
    if (list && list->prev)
        list->prev->next = list;
}

// Both hand on what was found in the open ring.
static int32_t close_ring(list_dnode *list, int32_t result)
{
    close_ring(list);
    return result;
}

static list_dnode *close_ring(list_dnode *list, list_node *result)
{
    close_ring(list);
    return reinterpret_cast<list_dnode *>(result);
}

static const list_node *plain(const list_dnode *node)
{
    return reinterpret_cast<const list_node *>(node);
}

void listCNClear(list_dnode **head)
{
    list_node *list = open_ring(*head);
    listClear(&list);
    *head = nullptr;
}

int32_t listCNCount(list_dnode *list)
{
    return close_ring(list, listCount(open_ring(list)));
}

list_dnode *listCNNode(list_dnode *list, int32_t index)
{
    return close_ring(list, listNode(open_ring(list), index));
}

int32_t listCNIndex(list_dnode *list, const list_dnode *node)
{
    return close_ring(list, listIndex(open_ring(list), plain(node)));
}

int32_t listCNExist(list_dnode *list, const list_dnode *node)
{
    return close_ring(list, listExist(open_ring(list), plain(node)));
}

list_dnode *listCNInsertionNode(list_dnode *list, int32_t position, uint32_t *status)
{
    if (!list) {
        set_status(status, LIST_BEFORE);
        return nullptr;
    }
    if (position < 0 && list->prev) {
        set_status(status, 0);
        return list->prev;
    }
    return close_ring(list, listInsertionNode(open_ring(list), position, status));
}

list_dnode *listCNFindBit(list_dnode *list, uint32_t mask, uint32_t offset, uint32_t width,
                          uint32_t flags)
{
    return close_ring(list, listFindBit(open_ring(list), mask, offset, width, flags));
}

list_dnode *listCNFindInt1(list_dnode *list, int8_t value, uint32_t offset)
{
    return close_ring(list, listFindInt1(open_ring(list), value, offset));
}

list_dnode *listCNFindInt2(list_dnode *list, int16_t value, uint32_t offset)
{
    return close_ring(list, listFindInt2(open_ring(list), value, offset));
}

list_dnode *listCNFindInt4(list_dnode *list, int32_t value, uint32_t offset)
{
    return close_ring(list, listFindInt4(open_ring(list), value, offset));
}

list_dnode *listCNFindStr(list_dnode *list, const char *text, uint32_t offset, uint32_t flags)
{
    return close_ring(list, listFindStr(open_ring(list), text, offset, flags));
}

list_dnode *listCNMaxInt1(list_dnode *list, int8_t *out_value, uint32_t offset)
{
    return list ? close_ring(list, listMaxInt1(open_ring(list), out_value, offset)) : nullptr;
}

list_dnode *listCNMaxInt2(list_dnode *list, int16_t *out_value, uint32_t offset)
{
    return list ? close_ring(list, listMaxInt2(open_ring(list), out_value, offset)) : nullptr;
}

list_dnode *listCNMaxInt4(list_dnode *list, int32_t *out_value, uint32_t offset)
{
    return list ? close_ring(list, listMaxInt4(open_ring(list), out_value, offset)) : nullptr;
}

/**
 * @file
 * Lists: singly linked, doubly linked and rings, over nodes that the caller defines.
 *
 * A node is a record of the caller's that begins with a list_node or a list_dnode. There is no list
 * object: a list is a pointer to its first node, null for the empty list.
 *
 * - `head` is the address of the variable that holds this pointer. It goes to every procedure that
 *   may change the first node.
 * - `list` is a node or null. Any node may stand there: the list is then seen from it on.
 * - `size` counts the bytes of the whole node, head included. One that is too small for the head
 *   counts as memory run out.
 * - `offset` counts bytes from the start of the node to a field, which may have any alignment. That
 *   the field lies inside of the node is the caller's business.
 *
 * Nodes that a procedure makes come from memAlloc(). The procedures that release nodes use
 * memFree(), so a node that meets them must have come from there; all others only relink.
 *
 * The procedures that only read, listCount() to listMaxInt4(), run on a linear doubly linked list
 * as well, with its pointers cast, since both heads begin with the link to the next node. They
 * change nothing, so threads may share a list that nobody changes.
 *
 * The ring procedures, listCN, do what those without CN do, on a ring that begins at `list`,
 * whichever node that is, and ends at the node before it. `list` may be null, an empty ring being
 * an empty list. A linear list, which must be given from its first node, is worked on as the linear
 * list that it is. They open the ring for the length of a call, by cutting the link that leads to
 * `list`: a ring cannot be shared, even by readers.
 *
 * All take one pass at most and do not recurse.
 */
#ifndef TESSEL_LIST_H
#define TESSEL_LIST_H

#include "tessel/base.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct list_node list_node;
typedef struct list_dnode list_dnode;

/** Flags of listDNCreate() and listDNAdd(). Other bits are ignored. */
enum {
    LIST_ZERO = 0x1,     /**< listDNCreate(): fill the new node with zero bytes */
    LIST_RING = 0x2,     /**< on an empty list: the node becomes a ring of one */
    LIST_BEFORE = 0x4,   /**< insert in front of the reference node, not behind it */
    LIST_KEEP_HEAD = 0x8 /**< with LIST_BEFORE: the first node stays the first */
};

/**
 * Status of listInsertionNode() for a position above the number of nodes plus one. Its other values
 * are 0, to insert behind the result if there is one, and LIST_BEFORE, to insert in front of the
 * first node.
 */
enum {
    LIST_BEYOND_END = 0x8000 /**< the position lies beyond the end */
};

/** Flags of listFindBit(). Other bits are ignored. */
enum {
    LIST_ALL_BITS = 0x1, /**< all bits of the mask must be set, not just one of them */
    LIST_INVERT = 0x2    /**< find what would not match without this flag */
};

/** The head of a node of a singly linked list. */
struct list_node {
    list_node *next; /**< library: the following node, null in the last one */
};

/**
 * The head of a node of a doubly linked list. In a ring the last node is followed by the first.
 */
struct list_dnode {
    list_dnode *next; /**< library: the following node, null in the last one of a linear list */
    list_dnode *prev; /**< library: the node before, null in the first one of a linear list */
};

/**
 * Makes a node and puts it in front of a list.
 *
 * @param head  the list
 * @param size  bytes of the node; those behind its head are undefined
 * @return the node, or null when memory ran out or `size` is less than that of the head; the list
 *         is then unchanged
 * @see listPop(), listCreate(), listAdd()
 */
TESSEL_API list_node *listPush(list_node **head, uint32_t size);

/**
 * Takes the first node off a list and releases it.
 *
 * @param head  the list; an empty one stays empty
 * @see listPush(), listRemove(), listClear()
 */
TESSEL_API void listPop(list_node **head);

/**
 * Makes a node and puts it into a list, behind another node or in front. It does as listAdd() does.
 *
 * @param head   the list
 * @param after  the node to put it behind, or null for the front; disregarded if the list is empty
 * @param size   bytes of the node; those behind its head are undefined
 * @return the node, or null when memory ran out or `size` is less than that of the head; the list
 *         is then unchanged
 * @see listAdd(), listPush(), listRemove(), listInsertionNode()
 */
TESSEL_API list_node *listCreate(list_node **head, list_node *after, uint32_t size);

/**
 * Puts the caller's node into a list.
 *
 * @param head   the list
 * @param after  the node to put it behind, or null for the front; disregarded if the list is empty
 * @param node   the node, or null, which does nothing
 * @see listCut(), listCreate(), listInsertionNode(), listDNAdd()
 */
TESSEL_API void listAdd(list_node **head, list_node *after, list_node *node);

/**
 * Takes a node out of a list. The node is not released and keeps its `next`.
 *
 * @param head  the list
 * @param node  the node, or null, which does nothing
 * @param prev  the node before it, which is not verified; disregarded for the first node. Null to
 *              have it searched for, and then a node that is not on the list changes nothing
 * @see listAdd(), listRemove(), listFindPrev(), listDNCut()
 */
TESSEL_API void listCut(list_node **head, list_node *node, list_node *prev);

/**
 * Takes a node out of a list and releases it. The node must have come from memAlloc().
 *
 * @param head  the list
 * @param node  the node, or null, which does nothing
 * @param prev  the node before it, which is not verified; disregarded for the first node. Null to
 *              have it searched for, and then a node that is not on the list changes nothing and is
 *              not released
 * @see listCut(), listPop(), listClear(), listDNRemove()
 */
TESSEL_API void listRemove(list_node **head, list_node *node, list_node *prev);

/**
 * Releases all nodes of a linear list and leaves it empty. The nodes must have come from
 * memAlloc().
 *
 * @param head  the list
 * @see listCNClear(), listPop(), listRemove()
 */
TESSEL_API void listClear(list_node **head);

/**
 * Counts the nodes of a list.
 *
 * @param list  the list
 * @return the number of nodes, 0 for an empty list
 * @see listCNCount(), listIndex()
 */
TESSEL_API int32_t listCount(const list_node *list);

/**
 * Finds the node at an index of a list.
 *
 * @param list   the list
 * @param index  the index, from 0 on
 * @return the node; null for an index that is negative or not on the list
 * @see listIndex(), listCNNode()
 */
TESSEL_API list_node *listNode(const list_node *list, int32_t index);

/**
 * Finds the index of a node in a list.
 *
 * @param list  the list
 * @param node  the node, or null
 * @return the index, from 0 on; -1 if the node is null or not on the list
 * @see listNode(), listExist(), listCNIndex()
 */
TESSEL_API int32_t listIndex(const list_node *list, const list_node *node);

/**
 * Tells whether a node is on a list.
 *
 * @param list  the list
 * @param node  the node, or null
 * @return 1 if it is on the list, 0 if it is null or is not
 * @see listIndex(), listCNExist()
 */
TESSEL_API int32_t listExist(const list_node *list, const list_node *node);

/**
 * Finds the last node of a linear list.
 *
 * @param list  the list
 * @return the last node, null for an empty list
 * @see listFindPrev(), listInsertionNode()
 */
TESSEL_API list_node *listFindTail(const list_node *list);

/**
 * Finds the node in front of another one in a list.
 *
 * @param list  the list
 * @param node  the node that follows the one to find, or null to find the last node
 * @return the node whose `next` is `node`; null if `node` is `list` itself or is not on the list
 * @see listFindTail(), listCut()
 */
TESSEL_API list_node *listFindPrev(const list_node *list, const list_node *node);

/**
 * Turns a position into the place of an insertion. Result and status go on to listAdd() and
 * listDNAdd() as `after`, `ref` and flags.
 *
 * @param list      the list, of m nodes
 * @param position  the index that a new node is to take; negative means the end
 * @param status    address of a word for the status, or null
 * @return by `position`:
 *         - 0: null, status LIST_BEFORE;
 *         - 1 to m: the node at `position` - 1, status 0;
 *         - m + 1: null, status 0: no place, and not to be handed on, since listAdd() takes it for
 *           the front and listDNAdd() for the place behind the first node;
 *         - above: the last node, null for an empty list, status LIST_BEYOND_END;
 *         - negative: the last node, null for an empty list, status 0
 * @see listAdd(), listDNAdd(), listNode(), listCNInsertionNode()
 */
TESSEL_API list_node *listInsertionNode(const list_node *list, int32_t position, uint32_t *status);

/**
 * Finds a node of a list by the bits of a field.
 *
 * @param list    the list
 * @param mask    the bits to look at
 * @param offset  bytes from the start of the node to the field
 * @param width   bytes of the field, 1 or 2; any other width means 4
 * @param flags   0 for any bit of the mask set; LIST_ALL_BITS, LIST_INVERT
 * @return the first match, or null. A `mask` of 0 matches every node when just one flag is given,
 *         and no node otherwise
 * @see listFindInt4(), listCNFindBit()
 */
TESSEL_API list_node *listFindBit(const list_node *list, uint32_t mask, uint32_t offset,
                                  uint32_t width, uint32_t flags);

/**
 * Finds a node of a list by the value of an 8-bit field.
 *
 * @param list    the list
 * @param value   the value to look for, of a signed field or an unsigned one
 * @param offset  bytes from the start of the node to the field
 * @return the first match, or null
 * @see listFindInt2(), listFindInt4(), listMaxInt1(), listCNFindInt1()
 */
TESSEL_API list_node *listFindInt1(const list_node *list, int8_t value, uint32_t offset);

/**
 * Finds a node of a list by the value of a 16-bit field.
 *
 * @param list    the list
 * @param value   the value to look for, of a signed field or an unsigned one, in machine order
 * @param offset  bytes from the start of the node to the field, at any alignment
 * @return the first match, or null
 * @see listFindInt1(), listFindInt4(), listMaxInt2(), listCNFindInt2()
 */
TESSEL_API list_node *listFindInt2(const list_node *list, int16_t value, uint32_t offset);

/**
 * Finds a node of a list by the value of a 32-bit field.
 *
 * @param list    the list
 * @param value   the value to look for, of a signed field or an unsigned one, in machine order
 * @param offset  bytes from the start of the node to the field, at any alignment
 * @return the first match, or null
 * @see listFindInt1(), listFindInt2(), listMaxInt4(), listFindBit(), listCNFindInt4()
 */
TESSEL_API list_node *listFindInt4(const list_node *list, int32_t value, uint32_t offset);

/**
 * Finds a node of a list by a text field.
 *
 * @param list    the list
 * @param text    the text to look for, not null
 * @param offset  bytes from the start of the node to the field
 * @param flags   STR_POINTER when the field holds a pointer to the text and not the text itself;
 *                STR_NO_CASE to compare without regard to case (see string.h)
 * @return the first match, or null
 * @see listFindInt4(), listCNFindStr(), strFind()
 */
TESSEL_API list_node *listFindStr(const list_node *list, const char *text, uint32_t offset,
                                  uint32_t flags);

/**
 * Finds the highest value of a signed 8-bit field in a list.
 *
 * @param list       the list
 * @param out_value  where to store the value, or null; an empty list stores 0
 * @param offset     bytes from the start of the node to the field
 * @return the last of the nodes that hold it, null for an empty list
 * @see listMaxInt2(), listMaxInt4(), listFindInt1(), listCNMaxInt1()
 */
TESSEL_API list_node *listMaxInt1(const list_node *list, int8_t *out_value, uint32_t offset);

/**
 * Finds the highest value of a signed 16-bit field in a list.
 *
 * @param list       the list
 * @param out_value  where to store the value, or null; an empty list stores 0
 * @param offset     bytes from the start of the node to the field, at any alignment
 * @return the last of the nodes that hold it, null for an empty list
 * @see listMaxInt1(), listMaxInt4(), listFindInt2(), listCNMaxInt2()
 */
TESSEL_API list_node *listMaxInt2(const list_node *list, int16_t *out_value, uint32_t offset);

/**
 * Finds the highest value of a signed 32-bit field in a list.
 *
 * @param list       the list
 * @param out_value  where to store the value, or null; an empty list stores 0
 * @param offset     bytes from the start of the node to the field, at any alignment
 * @return the last of the nodes that hold it, null for an empty list
 * @see listMaxInt1(), listMaxInt2(), listFindInt4(), listCNMaxInt4()
 */
TESSEL_API list_node *listMaxInt4(const list_node *list, int32_t *out_value, uint32_t offset);

/**
 * Makes a node and puts it into a doubly linked list or a ring. It does as listDNAdd() does.
 *
 * @param head   the list
 * @param ref    the node to put it behind, or in front of; null for the first one. Disregarded if
 *               the list is empty
 * @param size   bytes of the node; those behind its head are undefined without LIST_ZERO
 * @param flags  LIST_ZERO, and those of listDNAdd(): LIST_RING, LIST_BEFORE, LIST_KEEP_HEAD
 * @return the node, or null when memory ran out or `size` is less than that of the head; the list
 *         is then unchanged
 * @see listDNAdd(), listDNRemove(), listCreate(), listCNInsertionNode()
 */
TESSEL_API list_dnode *listDNCreate(list_dnode **head, list_dnode *ref, uint32_t size,
                                    uint32_t flags);

/**
 * Puts a node into a linear list or a ring, which stays what it is. The first node of an empty list
 * decides, with LIST_RING, which of the two it becomes.
 *
 * With LIST_BEFORE and a null `ref` the node becomes the first one. LIST_KEEP_HEAD added makes it
 * the last one of a ring; in a linear list it then stands in front of the first node, where `head`
 * does not lead.
 *
 * @param head   the list
 * @param ref    the node to put it behind, or in front of; null for the first one. Disregarded if
 *               the list is empty
 * @param node   the node, or null, which does nothing
 * @param flags  LIST_RING, LIST_BEFORE, LIST_KEEP_HEAD
 * @see listDNCut(), listDNCreate(), listAdd(), listCNInsertionNode()
 */
TESSEL_API void listDNAdd(list_dnode **head, list_dnode *ref, list_dnode *node, uint32_t flags);

/**
 * Takes a node out of a linear list or a ring. The node is not released and keeps its links.
 *
 * @param head  the list
 * @param node  a node of the list, or null, which does nothing
 * @see listDNRemove(), listDNAdd(), listCut()
 */
TESSEL_API void listDNCut(list_dnode **head, list_dnode *node);

/**
 * Takes a node out of a linear list or a ring and releases it. The node must have come from
 * memAlloc().
 *
 * @param head  the list
 * @param node  a node of the list, or null, which does nothing
 * @see listDNCut(), listDNCreate(), listCNClear(), listRemove()
 */
TESSEL_API void listDNRemove(list_dnode **head, list_dnode *node);

/**
 * Releases all nodes of a ring and leaves it empty. The nodes must have come from memAlloc().
 *
 * @param head  the ring
 * @see listClear(), listDNRemove()
 */
TESSEL_API void listCNClear(list_dnode **head);

/**
 * Counts the nodes of a ring.
 *
 * @param list  the ring, or null; opened for the length of the call
 * @return the number of nodes, 0 for an empty ring
 * @see listCount(), listCNIndex()
 */
TESSEL_API int32_t listCNCount(list_dnode *list);

/**
 * Finds the node at an index of a ring.
 *
 * @param list   the ring, or null; opened for the length of the call
 * @param index  the index, from 0 at `list` on; it does not go round
 * @return the node; null for an index that is negative or not on the ring
 * @see listNode(), listCNIndex()
 */
TESSEL_API list_dnode *listCNNode(list_dnode *list, int32_t index);

/**
 * Finds the index of a node in a ring.
 *
 * @param list  the ring, or null; opened for the length of the call
 * @param node  the node, or null
 * @return the index, from 0 at `list` on; -1 if the node is null or not on the ring
 * @see listIndex(), listCNNode(), listCNExist()
 */
TESSEL_API int32_t listCNIndex(list_dnode *list, const list_dnode *node);

/**
 * Tells whether a node is on a ring.
 *
 * @param list  the ring, or null; opened for the length of the call
 * @param node  the node, or null
 * @return 1 if it is on the ring, 0 if it is null or is not
 * @see listExist(), listCNIndex()
 */
TESSEL_API int32_t listCNExist(list_dnode *list, const list_dnode *node);

/**
 * Turns a position into the place of an insertion in a ring. Result and status go on to listDNAdd()
 * as `ref` and flags. A negative position takes no walk.
 *
 * @param list      the ring of m nodes, or null; opened for the length of the call
 * @param position  the index that a new node is to take; negative means the end
 * @param status    address of a word for the status, or null
 * @return for an empty ring null, status LIST_BEFORE, whatever the position. Otherwise by
 *         `position`:
 *         - 0: null, status LIST_BEFORE;
 *         - 1 to m: the node at `position` - 1, status 0;
 *         - m + 1: null, status 0: no place, and not to be handed on, since listDNAdd() takes it
 *           for the place behind the first node;
 *         - above: the last node, status LIST_BEYOND_END;
 *         - negative: the last node, status 0
 * @see listInsertionNode(), listDNAdd(), listDNCreate()
 */
TESSEL_API list_dnode *listCNInsertionNode(list_dnode *list, int32_t position, uint32_t *status);

/**
 * Finds a node of a ring by the bits of a field.
 *
 * @param list    the ring, or null; opened for the length of the call
 * @param mask    the bits to look at
 * @param offset  bytes from the start of the node to the field
 * @param width   bytes of the field, 1 or 2; any other width means 4
 * @param flags   0 for any bit of the mask set; LIST_ALL_BITS, LIST_INVERT
 * @return the first match, or null. A `mask` of 0 matches every node when just one flag is given,
 *         and no node otherwise
 * @see listFindBit(), listCNFindInt4()
 */
TESSEL_API list_dnode *listCNFindBit(list_dnode *list, uint32_t mask, uint32_t offset,
                                     uint32_t width, uint32_t flags);

/**
 * Finds a node of a ring by the value of an 8-bit field.
 *
 * @param list    the ring, or null; opened for the length of the call
 * @param value   the value to look for, of a signed field or an unsigned one
 * @param offset  bytes from the start of the node to the field
 * @return the first match, or null
 * @see listFindInt1(), listCNFindInt2(), listCNFindInt4(), listCNMaxInt1()
 */
TESSEL_API list_dnode *listCNFindInt1(list_dnode *list, int8_t value, uint32_t offset);

/**
 * Finds a node of a ring by the value of a 16-bit field.
 *
 * @param list    the ring, or null; opened for the length of the call
 * @param value   the value to look for, of a signed field or an unsigned one, in machine order
 * @param offset  bytes from the start of the node to the field, at any alignment
 * @return the first match, or null
 * @see listFindInt2(), listCNFindInt1(), listCNFindInt4(), listCNMaxInt2()
 */
TESSEL_API list_dnode *listCNFindInt2(list_dnode *list, int16_t value, uint32_t offset);

/**
 * Finds a node of a ring by the value of a 32-bit field.
 *
 * @param list    the ring, or null; opened for the length of the call
 * @param value   the value to look for, of a signed field or an unsigned one, in machine order
 * @param offset  bytes from the start of the node to the field, at any alignment
 * @return the first match, or null
 * @see listFindInt4(), listCNFindInt1(), listCNFindInt2(), listCNMaxInt4()
 */
TESSEL_API list_dnode *listCNFindInt4(list_dnode *list, int32_t value, uint32_t offset);

/**
 * Finds a node of a ring by a text field.
 *
 * @param list    the ring, or null; opened for the length of the call
 * @param text    the text to look for, not null
 * @param offset  bytes from the start of the node to the field
 * @param flags   STR_POINTER when the field holds a pointer to the text and not the text itself;
 *                STR_NO_CASE to compare without regard to case (see string.h)
 * @return the first match, or null
 * @see listFindStr(), listCNFindInt4(), strFind()
 */
TESSEL_API list_dnode *listCNFindStr(list_dnode *list, const char *text, uint32_t offset,
                                     uint32_t flags);

/**
 * Finds the highest value of a signed 8-bit field in a ring.
 *
 * @param list       the ring, or null; opened for the length of the call
 * @param out_value  where to store the value, or null; left alone if the ring is empty
 * @param offset     bytes from the start of the node to the field
 * @return the last of the nodes that hold it, null for an empty ring
 * @see listMaxInt1(), listCNMaxInt2(), listCNMaxInt4(), listCNFindInt1()
 */
TESSEL_API list_dnode *listCNMaxInt1(list_dnode *list, int8_t *out_value, uint32_t offset);

/**
 * Finds the highest value of a signed 16-bit field in a ring.
 *
 * @param list       the ring, or null; opened for the length of the call
 * @param out_value  where to store the value, or null; left alone if the ring is empty
 * @param offset     bytes from the start of the node to the field, at any alignment
 * @return the last of the nodes that hold it, null for an empty ring
 * @see listMaxInt2(), listCNMaxInt1(), listCNMaxInt4(), listCNFindInt2()
 */
TESSEL_API list_dnode *listCNMaxInt2(list_dnode *list, int16_t *out_value, uint32_t offset);

/**
 * Finds the highest value of a signed 32-bit field in a ring.
 *
 * @param list       the ring, or null; opened for the length of the call
 * @param out_value  where to store the value, or null; left alone if the ring is empty
 * @param offset     bytes from the start of the node to the field, at any alignment
 * @return the last of the nodes that hold it, null for an empty ring
 * @see listMaxInt4(), listCNMaxInt1(), listCNMaxInt2(), listCNFindInt4()
 */
TESSEL_API list_dnode *listCNMaxInt4(list_dnode *list, int32_t *out_value, uint32_t offset);

#ifdef __cplusplus
}
#endif

#endif

/**
 * @file
 * Search trees over the caller's own nodes, plain or height-balanced (AVL).
 *
 * There is no tree object. A tree is one pointer variable of the caller, its root link, null for
 * the empty tree; `root` below is the address of that variable, `tree` its value. Nodes have no
 * parent link. What stands in for it is a path: a search writes down the nodes that it passes, and
 * linking and unlinking act at the end of what it wrote. A search with its path is good for one
 * bintreeLink() or one bintreeUnlink(), with nothing changed in the tree between the two.
 *
 * A node begins with a head and goes on with whatever the caller wants; a pointer to the head is
 * the pointer to the node. Nodes of a balanced tree begin with a bintree_node. Nodes of a plain
 * tree need its two links only, a bintree_plain_node, and are handed over as bintree_node pointers
 * all the same. Nothing in a tree says which kind it is: BINTREE_BALANCED in the flags of every
 * path that is used on it does.
 *
 * Nobody reads or writes what stands behind a head, directly behind it, but the caller's procedures
 * and the searches by a field. So the room that compilers leave behind an embedded bintree_node may
 * be used too, by a node that declares the members of the head, in their order, as its own.
 *
 * Keys are the business of the caller's comparison: the library passes them on and never looks. No
 * two nodes of a tree have keys that compare equal.
 *
 * Plain trees are searched and changed in the manner of Knuth, The Art of Computer Programming,
 * volume 3, section 6.2.2, algorithms T and D. Balanced ones are the trees of G. M. Adelson-Velsky
 * and E. M. Landis, An algorithm for the organization of information (1962); section 6.2.3 of
 * Knuth's volume has their insertion as algorithm A, and describes their deletion.
 *
 * No procedure recurses. A tree, and a path, belong to one thread at a time; procedures without a
 * path that change nothing may run in several threads on a tree that nobody changes.
 */
#ifndef TESSEL_BINTREE_H
#define TESSEL_BINTREE_H

#include "tessel/base.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct bintree_node bintree_node;
typedef struct bintree_plain_node bintree_plain_node;
typedef struct bintree_step bintree_step;
typedef struct bintree_path bintree_path;

/** Results of the procedures that take a path or manage one. */
enum {
    BINTREE_DONE = 0,       /**< the key was found, the node linked or unlinked */
    BINTREE_EXISTS = 1,     /**< the key is in the tree already; nothing changed */
    BINTREE_NOT_FOUND = 3,  /**< the key is not in the tree; nothing changed */
    BINTREE_NO_MEMORY = -3, /**< no memory for the node; the tree is unchanged */
    BINTREE_NO_ROOM = -4    /**< the path, or the stack of a walk, could not take another entry; the
                                 tree is unchanged */
};

/** The failure of bintreeGetHeight() and bintreeCheckBalance(). */
enum {
    BINTREE_FAILED = -1 /**< memory ran out */
};

/**
 * Flags of a path, of bintreeCreate(), which reads the two that are marked so, and of the Ext
 * procedures. Other bits are ignored.
 */
enum {
    BINTREE_ZERO = 0x1,           /**< create: fill the new node with zero bytes */
    BINTREE_GROW = 0x2,           /**< the path may grow; otherwise BINTREE_NO_ROOM ends a search */
    BINTREE_OWNED = 0x4,          /**< `steps` is a block of memAlloc(), released at the next
                                       growth; the first growth sets this */
    BINTREE_BALANCED = 0x10,      /**< the tree is balanced, and is to be kept so */
    BINTREE_GROWTH_MASK = 0xff00, /**< steps to add at each growth; 0 adds two */
    BINTREE_GROWTH_SHIFT = 8,     /**< where that number begins */
    BINTREE_LINK_GIVEN = 0x8000   /**< create: `size` is the address of the node to link, which
                                       excludes BINTREE_ZERO */
};

/** The orders in which bintreeTraverse() visits nodes; `child[0]` comes before `child[1]`. */
enum {
    BINTREE_PRE_ORDER = 0, /**< a node before its subtrees */
    BINTREE_IN_ORDER = 1,  /**< a node between its subtrees: ascending by key */
    BINTREE_POST_ORDER = 2 /**< a node after its subtrees */
};

/** Head of a node in a balanced tree. The library writes it when it links the node. */
struct bintree_node {
    bintree_node *child[2]; /**< library: subtrees of smaller keys and of greater keys, or null */
    int32_t balance;        /**< library: height of the first subtree minus that of the second */
};

/** Head of a node in a plain tree. The library writes it when it links the node. */
struct bintree_plain_node {
    bintree_node *child[2]; /**< library: subtrees of smaller keys and of greater keys, or null */
};

/** One step of a search. */
struct bintree_step {
    int32_t direction;  /**< library: index of the child by which the search left the node; 0 at the
                             node found */
    bintree_node *node; /**< library: the node passed */
};

/**
 * A path. The caller sets the first three fields in one of three ways and can then use the path for
 * any number of searches, on any tree:
 *
 * - an array of n steps, `capacity` n - 1, BINTREE_GROW clear: a search that needs more fails;
 * - the same with BINTREE_GROW: a growth moves the steps to a block and leaves the array alone,
 *   unless BINTREE_OWNED says that it is a block itself, to be released;
 * - `steps` null, `capacity` -1, with BINTREE_GROW: the first growth makes 32 steps.
 *
 * When the caller is done with a path that has BINTREE_OWNED set, it releases `steps` with
 * memFree().
 */
struct bintree_path {
    bintree_step *steps; /**< both: the array, or null with `capacity` -1 */
    int32_t capacity;    /**< both: the highest index of `steps`; -1 means no steps at all */
    uint32_t flags;      /**< both: see above */
    int32_t depth;       /**< library: index of the last step; -1 for an empty tree */
    int32_t pivot;       /**< library: in a balanced tree index of the deepest step whose node has a
                              non-zero `balance`; 0 where there is none; -1 for an empty tree */
};

/**
 * Compares a node with a key. It may not change the tree.
 *
 * @param node  the node
 * @param key   what the caller gave to the search: an address, or any word of that size
 * @return 0 when this is the node; above 0 when the search is to go on at `child[0]`, below 0 when
 *         at `child[1]`. The sign of the node's key minus `key` gives ascending trees.
 */
typedef int32_t (*bintree_compare_proc)(const bintree_node *node, const void *key);

/**
 * Visits a node.
 *
 * @param node     the node
 * @param context  what the caller gave to the walk
 * @return 0 to go on; anything else ends the walk and becomes its result
 */
typedef int32_t (*bintree_visit_proc)(bintree_node *node, void *context);

/**
 * Searches a tree for a key, without a path.
 *
 * @param tree     the root node, or null
 * @param key      passed on to `compare`
 * @param compare  called once for each level
 * @return the node at which `compare` gave 0, or null
 * @see bintreeIterate(), bintreeFindInt4(), bintreeFindStr()
 */
TESSEL_API bintree_node *bintreeSearch(const bintree_node *tree, const void *key,
                                       bintree_compare_proc compare);

/**
 * Searches a tree for a key and writes the way into a path. Unless the path must grow, nothing is
 * allocated.
 *
 * @param out_node  receives the node found, and is not written otherwise
 * @param tree      the root node, or null
 * @param key       passed on to `compare`
 * @param compare   called once for each level, before the level's step is written
 * @param path      receives the steps, `depth` and `pivot`. Where nothing is found the last step
 *                  names the future parent and its free child. The `balance` of a node is read only
 *                  with BINTREE_BALANCED; without it `pivot` is 0, or -1 for an empty tree
 * @return BINTREE_DONE, the path being good for bintreeUnlink(); BINTREE_NOT_FOUND, the path being
 *         good for bintreeLink(); BINTREE_NO_ROOM, with `depth` and `pivot` as they were: nothing
 *         to link or unlink by, but the path can serve another search
 * @see bintreeLink(), bintreeUnlink(), bintreeSearch()
 */
TESSEL_API int32_t bintreeIterate(bintree_node **out_node, const bintree_node *tree,
                                  const void *key, bintree_compare_proc compare,
                                  bintree_path *path);

/**
 * Links a node where a search ended that found nothing. The node's head is written, and nothing of
 * what follows it. A balanced tree is kept so, by one single or double rotation at most.
 *
 * @param root  the root link
 * @param node  the node, which becomes part of the tree
 * @param path  the path of that search
 * @see bintreeIterate(), bintreeAdd(), bintreeUnlink()
 */
TESSEL_API void bintreeLink(bintree_node **root, bintree_node *node, bintree_path *path);

/**
 * Unlinks the node that a search found. The node is not released and its head not written. A
 * balanced tree is kept so, by one single or double rotation for each level at most.
 *
 * @param root  the root link
 * @param path  the path of that search; a node with two children needs more steps than the search
 *              did, down to the next node in order
 * @return BINTREE_DONE, or BINTREE_NO_ROOM with the tree and `depth` as they were
 * @see bintreeIterate(), bintreeCut(), bintreeLink()
 */
TESSEL_API int32_t bintreeUnlink(bintree_node **root, bintree_path *path);

/**
 * Makes a node for a key that is not in the tree yet and links it. The caller stores the key in the
 * node afterwards, before the next search.
 *
 * @param out_node  receives the new node, or the one that has the key already; not written on
 *                  failure
 * @param root      the root link
 * @param key       passed on to `compare`
 * @param compare   compares a node with `key`
 * @param path      the path to search with
 * @param size      bytes of the whole node, head included, for memAlloc(); with BINTREE_LINK_GIVEN
 *                  the address of the caller's node, not null
 * @param flags     BINTREE_ZERO or BINTREE_LINK_GIVEN
 * @return BINTREE_DONE, BINTREE_EXISTS, BINTREE_NO_ROOM, or BINTREE_NO_MEMORY, also for a size that
 *         is smaller than the head or does not fit 32 bits; bintreeLink() may then still follow,
 *         with a node of the caller's
 * @see bintreeCreateExt(), bintreeAdd(), bintreeRemove()
 */
TESSEL_API int32_t bintreeCreate(bintree_node **out_node, bintree_node **root, const void *key,
                                 bintree_compare_proc compare, bintree_path *path, uintptr_t size,
                                 uint32_t flags);

/**
 * Links the caller's node, unless its key is in the tree already.
 *
 * @param root     the root link
 * @param node     the node, not null; it stays the caller's and untouched unless it was linked
 * @param key      the node's key, passed on to `compare`
 * @param compare  compares a node with `key`
 * @param path     the path to search with
 * @return BINTREE_DONE, BINTREE_EXISTS or BINTREE_NO_ROOM
 * @see bintreeAddExt(), bintreeCreate(), bintreeCut()
 */
TESSEL_API int32_t bintreeAdd(bintree_node **root, bintree_node *node, const void *key,
                              bintree_compare_proc compare, bintree_path *path);

/**
 * Finds a node and unlinks it. The caller owns it from then on.
 *
 * @param out_node  receives the node found, also where BINTREE_NO_ROOM then leaves it in the tree;
 *                  not written where none was found or BINTREE_NO_ROOM ended the search itself, so
 *                  set it to null first to tell the two apart
 * @param root      the root link
 * @param key       passed on to `compare`
 * @param compare   compares a node with `key`
 * @param path      the path to search with
 * @return BINTREE_DONE, BINTREE_NOT_FOUND or BINTREE_NO_ROOM
 * @see bintreeCutExt(), bintreeRemove(), bintreeAdd()
 */
TESSEL_API int32_t bintreeCut(bintree_node **out_node, bintree_node **root, const void *key,
                              bintree_compare_proc compare, bintree_path *path);

/**
 * Finds a node, unlinks it and releases it with memFree(). So the node must have come from
 * memAlloc().
 *
 * @param root     the root link
 * @param key      passed on to `compare`
 * @param compare  compares a node with `key`
 * @param path     the path to search with
 * @return BINTREE_DONE, BINTREE_NOT_FOUND or BINTREE_NO_ROOM; nothing is released unless it is
 *         BINTREE_DONE
 * @see bintreeRemoveExt(), bintreeCut(), bintreeCreate(), bintreeClear()
 */
TESSEL_API int32_t bintreeRemove(bintree_node **root, const void *key, bintree_compare_proc compare,
                                 bintree_path *path);

/**
 * Makes a node for a new key and links it, as bintreeCreate() with a path of its own. The path is
 * made and released in the call. It may always grow, so that BINTREE_NO_ROOM means that memory ran
 * out. The caller stores the key in the node afterwards, before the next search.
 *
 * @param out_node  receives the new node, or the one that has the key already; not written on
 *                  failure
 * @param root      the root link
 * @param key       passed on to `compare`
 * @param compare   compares a node with `key`
 * @param size      bytes of the whole node, head included, for memAlloc()
 * @param flags     flags of the path: BINTREE_BALANCED and the growth step. BINTREE_ZERO may join
 *                  them; BINTREE_LINK_GIVEN may not, since its bit belongs to the growth step
 * @return BINTREE_DONE, BINTREE_EXISTS, BINTREE_NO_ROOM, or BINTREE_NO_MEMORY, also for a size that
 *         is smaller than the head or does not fit 32 bits; the tree is unchanged unless it is
 *         BINTREE_DONE
 * @see bintreeCreate(), bintreeAddExt(), bintreeRemoveExt()
 */
TESSEL_API int32_t bintreeCreateExt(bintree_node **out_node, bintree_node **root, const void *key,
                                    bintree_compare_proc compare, uintptr_t size, uint32_t flags);

/**
 * Links the caller's node if its key is new, as bintreeAdd() with a path of its own. The path is
 * made and released in the call.
 *
 * @param root     the root link
 * @param node     the node, not null; it stays the caller's and untouched unless it was linked
 * @param key      the node's key, passed on to `compare`
 * @param compare  compares a node with `key`
 * @param flags    flags of the path: BINTREE_BALANCED and the growth step (BINTREE_GROWTH_MASK)
 * @return BINTREE_DONE, BINTREE_EXISTS, or BINTREE_NO_ROOM when memory ran out
 * @see bintreeAdd(), bintreeCreateExt(), bintreeCutExt()
 */
TESSEL_API int32_t bintreeAddExt(bintree_node **root, bintree_node *node, const void *key,
                                 bintree_compare_proc compare, uint32_t flags);

/**
 * Finds a node and unlinks it, as bintreeCut() with a path of its own. The path is made and
 * released in the call, and the caller owns the node from then on.
 *
 * @param out_node  receives the node found, also where BINTREE_NO_ROOM then leaves it in the tree;
 *                  not written where none was found or BINTREE_NO_ROOM ended the search itself, so
 *                  set it to null first to tell the two apart
 * @param root      the root link
 * @param key       passed on to `compare`
 * @param compare   compares a node with `key`
 * @param flags     flags of the path: BINTREE_BALANCED and the growth step (BINTREE_GROWTH_MASK)
 * @return BINTREE_DONE, BINTREE_NOT_FOUND, or BINTREE_NO_ROOM when memory ran out
 * @see bintreeCut(), bintreeRemoveExt(), bintreeAddExt()
 */
TESSEL_API int32_t bintreeCutExt(bintree_node **out_node, bintree_node **root, const void *key,
                                 bintree_compare_proc compare, uint32_t flags);

/**
 * Finds a node, unlinks and releases it, as bintreeRemove() with a path of its own. The path is
 * made and released in the call. The node must have come from memAlloc().
 *
 * @param root     the root link
 * @param key      passed on to `compare`
 * @param compare  compares a node with `key`
 * @param flags    flags of the path: BINTREE_BALANCED and the growth step (BINTREE_GROWTH_MASK)
 * @return BINTREE_DONE, BINTREE_NOT_FOUND, or BINTREE_NO_ROOM when memory ran out; nothing is
 *         released unless it is BINTREE_DONE
 * @see bintreeRemove(), bintreeCutExt(), bintreeCreateExt()
 */
TESSEL_API int32_t bintreeRemoveExt(bintree_node **root, const void *key,
                                    bintree_compare_proc compare, uint32_t flags);

/**
 * Visits the nodes of a tree in one of three orders. The way back up is kept on the heap, a small
 * block for each level of the tree (Knuth, The Art of Computer Programming, volume 1, section
 * 2.3.1, algorithm T and its relatives).
 *
 * @param tree     any node, whose subtree is visited, or null
 * @param proc     called with each node. It may not change the shape of the tree, but in post-order
 *                 it may release the node, of which nothing is read any more
 * @param context  passed on to `proc`
 * @param order    BINTREE_PRE_ORDER, BINTREE_IN_ORDER or BINTREE_POST_ORDER; with another number no
 *                 node is visited
 * @return 0 after all nodes; what `proc` gave when that was not 0; BINTREE_NO_ROOM when memory ran
 *         out; in pre-order `proc` has then seen the node that could not be entered. A `proc` that
 *         gives the same number cannot be told from it
 * @see bintreeClear(), bintreeCount(), bintreeFindInt4(), bintreeFindStr()
 */
TESSEL_API int32_t bintreeTraverse(bintree_node *tree, bintree_visit_proc proc, void *context,
                                   int32_t order);

/**
 * Releases all nodes of a tree with memFree() and sets the root link to null. So the nodes must
 * have come from memAlloc(). Should memory run out on the way, the nodes that were not reached are
 * lost.
 *
 * @param root  the root link
 * @see bintreeRemove(), bintreeTraverse()
 */
TESSEL_API void bintreeClear(bintree_node **root);

/**
 * Counts the nodes of a tree.
 *
 * @param tree  any node, whose subtree is counted, or null
 * @return the number of nodes, 0 for the empty tree; of those that were reached, should memory run
 *         out
 * @see bintreeGetHeight(), bintreeTraverse()
 */
TESSEL_API int32_t bintreeCount(const bintree_node *tree);

/**
 * Finds a node of a tree by a field of 8 bits instead of by its key. It looks at one node after the
 * other.
 *
 * @param tree    any node, whose subtree is searched, or null
 * @param value   what the field is to be equal to
 * @param offset  bytes from the start of the node to the field
 * @return the first match in key order, or null, also when memory ran out
 * @see bintreeFindInt2(), bintreeFindInt4(), bintreeFindStr(), bintreeSearch()
 */
TESSEL_API bintree_node *bintreeFindInt1(const bintree_node *tree, int8_t value, uint32_t offset);

/**
 * Finds a node of a tree by a field of 16 bits instead of by its key. It looks at one node after
 * the other.
 *
 * @param tree    any node, whose subtree is searched, or null
 * @param value   what the field is to be equal to, in machine order
 * @param offset  bytes from the start of the node to the field, at any alignment
 * @return the first match in key order, or null, also when memory ran out
 * @see bintreeFindInt1(), bintreeFindInt4(), bintreeFindStr(), bintreeSearch()
 */
TESSEL_API bintree_node *bintreeFindInt2(const bintree_node *tree, int16_t value, uint32_t offset);

/**
 * Finds a node of a tree by a field of 32 bits instead of by its key. It looks at one node after
 * the other.
 *
 * @param tree    any node, whose subtree is searched, or null
 * @param value   what the field is to be equal to, in machine order
 * @param offset  bytes from the start of the node to the field, at any alignment
 * @return the first match in key order, or null, also when memory ran out
 * @see bintreeFindInt1(), bintreeFindInt2(), bintreeFindStr(), bintreeSearch()
 */
TESSEL_API bintree_node *bintreeFindInt4(const bintree_node *tree, int32_t value, uint32_t offset);

/**
 * Finds a node of a tree by a text field instead of by its key. It looks at one node after the
 * other.
 *
 * @param tree    any node, whose subtree is searched, or null
 * @param text    the text to look for, not null
 * @param offset  bytes from the start of the node to the field, at any alignment
 * @param flags   STR_POINTER when the field holds a pointer to the text and not the text itself;
 *                STR_NO_CASE to compare without regard to case (see string.h)
 * @return the first match in key order, or null, also when memory ran out
 * @see bintreeFindInt4(), bintreeSearch(), strFind()
 */
TESSEL_API bintree_node *bintreeFindStr(const bintree_node *tree, const char *text, uint32_t offset,
                                        uint32_t flags);

/**
 * Measures the height of a tree. A null link counts as a level too.
 *
 * @param tree  any node, whose subtree is measured, or null
 * @return 1 for the empty tree, 2 for a single node, and so on; BINTREE_FAILED when memory ran out
 * @see bintreeCheckBalance(), bintreeCount()
 */
TESSEL_API int32_t bintreeGetHeight(const bintree_node *tree);

/**
 * Tests the `balance` of each node against the heights of its subtrees. These are measured anew for
 * every node. For balanced trees only: a plain node may end where the word is read.
 *
 * @param tree     any node, whose subtree is tested, or null
 * @param proc     called, in key order, with each node whose word is wrong, or is not -1, 0 or 1;
 *                 its result is disregarded. Should memory run out while a subtree is measured, a
 *                 sound node may be reported
 * @param context  passed on to `proc`
 * @return the number of nodes reported; BINTREE_FAILED when memory ran out for the walk itself
 * @see bintreeGetHeight(), bintreeTraverse()
 */
TESSEL_API int32_t bintreeCheckBalance(const bintree_node *tree, bintree_visit_proc proc,
                                       void *context);

#ifdef __cplusplus
}
#endif

#endif

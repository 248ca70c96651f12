#include "tessel/bintree.h"

#include "tessel/list.h"
#include "tessel/mem.h"

#include "bytes.h"
#include "string_internal.h"

#include <stddef.h>
#include <string.h>

static_assert(offsetof(bintree_node, balance) == 2 * pointer_size &&
              sizeof(bintree_node) == 3 * pointer_size);
static_assert(sizeof(bintree_plain_node) == 2 * pointer_size);
static_assert(offsetof(bintree_step, node) == pointer_size &&
              sizeof(bintree_step) == 2 * pointer_size);
static_assert(offsetof(bintree_path, capacity) == pointer_size &&
              offsetof(bintree_path, flags) == 4 + pointer_size &&
              offsetof(bintree_path, depth) == 8 + pointer_size &&
              offsetof(bintree_path, pivot) == 12 + pointer_size &&
              sizeof(bintree_path) == 16 + pointer_size);

// Steps that a growth adds where there were none, and where the path asks for no number.
static constexpr uint32_t first_steps = 32;
static constexpr uint32_t default_growth = 2;

// The links of a node, which is a balanced or a plain one: both begin with this array, and nothing
// more is assumed of them.
using node_links = bintree_node *[2];

static node_links &links(bintree_node *node)
{
    return *reinterpret_cast<node_links *>(node);
}

// Paths

// Makes room behind the last step of a path whose array is full.
static int32_t bintree_realloc_path(bintree_path *path)
{
    if (!(path->flags & BINTREE_GROW))
        return 0;
    const int64_t count = int64_t{path->capacity} + 1;
    const uint32_t growth = (path->flags & BINTREE_GROWTH_MASK) >> BINTREE_GROWTH_SHIFT;
    const uint32_t added = !path->steps ? first_steps : growth ? growth : default_growth;
    const int64_t bytes = (count + added) * int64_t{sizeof(bintree_step)};
    if (count < 0 || bytes > UINT32_MAX)
        return 0;
    bintree_step *const steps = static_cast<bintree_step *>(memAlloc(static_cast<uint32_t>(bytes)));
    if (!steps)
        return 0;
    if (count > 0)
        memcpy(steps, path->steps, static_cast<size_t>(count) * sizeof(bintree_step));
    if (path->flags & BINTREE_OWNED)
        memFree(path->steps);
    path->flags |= BINTREE_OWNED;
    path->steps = steps;
    path->capacity = static_cast<int32_t>(count + added - 1);
    return 1;
}

// Searches
//
// Both links of a node are loaded before the comparison and chosen from behind it, which makes the
// choice a conditional move that waits for the comparison alone. Indexing the links by the sign
// puts a load behind it: 1.2 times the time in a tree of 1,000 nodes. The choice stands at the head
// of the loop because GCC splits one at its end into a branch, which takes 1.6 times as long.

// Since no branch runs ahead of the comparison, memory is asked for both children while it works. In
// trees of 100,000 nodes that takes a quarter off an insertion of numbers, and two fifths off one of
// texts; in small ones it costs nothing.
static void fetch_both(const bintree_node *smaller, const bintree_node *greater)
{
    __builtin_prefetch(smaller);
    __builtin_prefetch(greater);
}

bintree_node *bintreeSearch(const bintree_node *tree, const void *key, bintree_compare_proc compare)
{
    bintree_node *node;
    bintree_node *smaller = const_cast<bintree_node *>(tree);
    bintree_node *greater = nullptr;
    int32_t order = 1;
    do {
        node = order < 0 ? greater : smaller;
        if (!node)
            break;
        smaller = links(node)[0];
        greater = links(node)[1];
        fetch_both(smaller, greater);
        order = compare(node, key);
    } while (order != 0);
    return node;
}

int32_t bintreeIterate(bintree_node **out_node, const bintree_node *tree, const void *key,
                       bintree_compare_proc compare, bintree_path *path)
{
    const bool balanced = (path->flags & BINTREE_BALANCED) != 0;
    int32_t index = -1;
    int32_t pivot = tree ? 0 : -1;
    bintree_node *node;
    bintree_node *smaller = const_cast<bintree_node *>(tree);
    bintree_node *greater = nullptr;
    int32_t order = 1;
    do {
        node = order < 0 ? greater : smaller;
        if (!node)
            break;
        smaller = links(node)[0];
        greater = links(node)[1];
        fetch_both(smaller, greater);
        order = compare(node, key);
        if (index >= path->capacity && !bintree_realloc_path(path))
            return BINTREE_NO_ROOM;
        index++;
        path->steps[index] = {order < 0, node};
        // A plain node may end where a balanced one has its word.
        if (balanced)
            pivot = node->balance != 0 ? index : pivot;
    } while (order != 0);
    path->depth = index;
    path->pivot = pivot;
    if (!node)
        return BINTREE_NOT_FOUND;
    *out_node = node;
    return BINTREE_DONE;
}

// Balance

// The link through which a path came to the node of a step.
static bintree_node **link_to(bintree_node **root, const bintree_path *path, int32_t index)
{
    if (index <= 0)
        return root;
    const bintree_step &parent = path->steps[index - 1];
    return &links(parent.node)[parent.direction];
}

// What a higher side looks like in a balance word.
static int32_t side_sign(int32_t side)
{
    return 1 - 2 * side;
}

// The subtrees below the pivot were even, and each has grown on the path's side.
static void lean_to_path(const bintree_path *path)
{
    for (int32_t i = path->pivot + 1; i <= path->depth; i++)
        path->steps[i].node->balance = side_sign(path->steps[i].direction);
}

// Rotates a node down to the light side, or a grandchild up between the node and its heavy child:
//
//        node               heavy                  node                  middle
//       /    \             /     \                /    \               /        \.
//    heavy    c    =>     a      node          heavy    d    =>    heavy        node
//    /   \                      /    \         /   \               /   \        /   \.
//   a     b                    b      c       a   middle          a     b      c     d
//                                                 /   \.
//                                                b     c
//
// drawn for a heavy child[0]; the other way round is the mirror image. Gives the new top.
static bintree_node *rotate_single(bintree_node *node, int32_t side)
{
    bintree_node *const heavy = links(node)[side];
    links(node)[side] = links(heavy)[!side];
    links(heavy)[!side] = node;
    // An even heavy child, which only a removal leaves, keeps the subtree's height: both words
    // then show the inner subtree, which was as high as the outer one. Otherwise both are 0.
    heavy->balance -= side_sign(side);
    node->balance = -heavy->balance;
    return heavy;
}

static bintree_node *rotate_double(bintree_node *node, int32_t side)
{
    const int32_t sign = side_sign(side);
    bintree_node *const heavy = links(node)[side];
    bintree_node *const middle = links(heavy)[!side];
    links(heavy)[!side] = links(middle)[side];
    links(node)[side] = links(middle)[!side];
    links(middle)[side] = heavy;
    links(middle)[!side] = node;
    // Whoever took the lower of the middle's subtrees leans away from it.
    node->balance = middle->balance == sign ? -sign : 0;
    heavy->balance = middle->balance == -sign ? sign : 0;
    middle->balance = 0;
    return middle;
}

// Restores the words, and the shape, at the pivot of a path: after an insertion at the end of the
// path, or after a removal that has lowered the subtree on the path's side of the pivot. Gives 0 if
// the height of the pivot's subtree is what it was before that removal.
static int32_t bintree_avl_rotate(bintree_node **root, const bintree_path *path, int32_t removing)
{
    const bintree_step &step = path->steps[path->pivot];
    if (!removing)
        lean_to_path(path);
    const int32_t side = removing ? !step.direction : step.direction;
    const int32_t sign = side_sign(side);

    bintree_node *const node = step.node;
    const int32_t balance = node->balance;
    if (balance != sign) {
        node->balance = balance + sign;
        return balance;
    }
    bintree_node **const link = link_to(root, path, path->pivot);
    if (links(node)[side]->balance == -sign) {
        *link = rotate_double(node, side);
        return 1;
    }
    *link = rotate_single(node, side);
    return (*link)->balance == 0;
}

// Linking and unlinking

void bintreeLink(bintree_node **root, bintree_node *node, bintree_path *path)
{
    const bool balanced = (path->flags & BINTREE_BALANCED) != 0;
    links(node)[0] = nullptr;
    links(node)[1] = nullptr;
    if (balanced)
        node->balance = 0;
    if (!*root) {
        *root = node;
        return;
    }
    const bintree_step &parent = path->steps[path->depth];
    links(parent.node)[parent.direction] = node;
    if (balanced)
        bintree_avl_rotate(root, path, 0);
}

// Extends a path from a node with two children to the next node in order.
static bool extend_to_successor(bintree_path *path)
{
    int32_t index = path->depth;
    for (bintree_node *node = links(path->steps[index].node)[1]; node; node = links(node)[0]) {
        if (index >= path->capacity && !bintree_realloc_path(path))
            return false;
        index++;
        path->steps[index] = {0, node};
    }
    path->depth = index;
    return true;
}

// Puts the node at the end of an extended path in the place of the node of step `index`.
static void take_place(bintree_path *path, int32_t index)
{
    bintree_step &step = path->steps[index];
    bintree_node *const node = step.node;
    bintree_node *const successor = path->steps[path->depth].node;
    if (path->depth > index + 1) {
        links(path->steps[path->depth - 1].node)[0] = links(successor)[1];
        links(successor)[1] = links(node)[1];
    }
    links(successor)[0] = links(node)[0];
    if (path->flags & BINTREE_BALANCED)
        successor->balance = node->balance;
    // The step stands for the successor from now on, whose child[1] side has lost a node.
    step = {1, successor};
}

int32_t bintreeUnlink(bintree_node **root, bintree_path *path)
{
    const bool balanced = (path->flags & BINTREE_BALANCED) != 0;
    const int32_t index = path->depth;
    bintree_node *const node = path->steps[index].node;
    bintree_node *replacement;
    if (links(node)[0] && links(node)[1]) {
        if (!extend_to_successor(path))
            return BINTREE_NO_ROOM;
        take_place(path, index);
        replacement = path->steps[index].node;
    } else {
        replacement = links(node)[!links(node)[0]];
        if (balanced && replacement)
            replacement->balance = 0;
    }
    *link_to(root, path, index) = replacement;
    if (!balanced)
        return BINTREE_DONE;
    for (int32_t i = path->depth - 1; i >= 0; i--) {
        path->pivot = i;
        if (!bintree_avl_rotate(root, path, 1))
            break;
    }
    return BINTREE_DONE;
}

// Search and change in one call

// Bytes of the smallest node: its head, without the room that a compiler leaves behind it.
static constexpr uintptr_t plain_head = sizeof(bintree_plain_node);
static constexpr uintptr_t balanced_head = offsetof(bintree_node, balance) + sizeof(int32_t);

static bintree_node *make_node(const bintree_path *path, uintptr_t size, bool zero)
{
    const uintptr_t head = path->flags & BINTREE_BALANCED ? balanced_head : plain_head;
    if (size < head || size > UINT32_MAX)
        return nullptr;
    void *const node = memAlloc(static_cast<uint32_t>(size));
    if (node && zero)
        memset(node, 0, size);
    return static_cast<bintree_node *>(node);
}

int32_t bintreeCreate(bintree_node **out_node, bintree_node **root, const void *key,
                      bintree_compare_proc compare, bintree_path *path, uintptr_t size,
                      uint32_t flags)
{
    bintree_node *node;
    const int32_t result = bintreeIterate(&node, *root, key, compare, path);
    if (result == BINTREE_NO_ROOM)
        return result;
    if (result == BINTREE_DONE) {
        *out_node = node;
        return BINTREE_EXISTS;
    }
    node = flags & BINTREE_LINK_GIVEN ? reinterpret_cast<bintree_node *>(size)
                                      : make_node(path, size, (flags & BINTREE_ZERO) != 0);
    if (!node)
        return BINTREE_NO_MEMORY;
    *out_node = node;
    bintreeLink(root, node, path);
    return BINTREE_DONE;
}

int32_t bintreeAdd(bintree_node **root, bintree_node *node, const void *key,
                   bintree_compare_proc compare, bintree_path *path)
{
    bintree_node *out_node;
    return bintreeCreate(&out_node, root, key, compare, path, reinterpret_cast<uintptr_t>(node),
                         BINTREE_LINK_GIVEN);
}

int32_t bintreeCut(bintree_node **out_node, bintree_node **root, const void *key,
                   bintree_compare_proc compare, bintree_path *path)
{
    const int32_t result = bintreeIterate(out_node, *root, key, compare, path);
    return result == BINTREE_DONE ? bintreeUnlink(root, path) : result;
}

int32_t bintreeRemove(bintree_node **root, const void *key, bintree_compare_proc compare,
                      bintree_path *path)
{
    bintree_node *node;
    const int32_t result = bintreeCut(&node, root, key, compare, path);
    if (result == BINTREE_DONE)
        memFree(node);
    return result;
}

// The same with a path of their own

static bintree_path own_path(uint32_t flags)
{
    bintree_path path = {};
    path.capacity = -1;
    path.flags = flags | BINTREE_GROW;
    return path;
}

int32_t bintreeCreateExt(bintree_node **out_node, bintree_node **root, const void *key,
                         bintree_compare_proc compare, uintptr_t size, uint32_t flags)
{
    bintree_path path = own_path(flags);
    const int32_t result =
        bintreeCreate(out_node, root, key, compare, &path, size, flags & UINT8_MAX);
    memFree(path.steps);
    return result;
}

int32_t bintreeAddExt(bintree_node **root, bintree_node *node, const void *key,
                      bintree_compare_proc compare, uint32_t flags)
{
    bintree_path path = own_path(flags);
    const int32_t result = bintreeAdd(root, node, key, compare, &path);
    memFree(path.steps);
    return result;
}

int32_t bintreeCutExt(bintree_node **out_node, bintree_node **root, const void *key,
                      bintree_compare_proc compare, uint32_t flags)
{
    bintree_path path = own_path(flags);
    const int32_t result = bintreeCut(out_node, root, key, compare, &path);
    memFree(path.steps);
    return result;
}

int32_t bintreeRemoveExt(bintree_node **root, const void *key, bintree_compare_proc compare,
                         uint32_t flags)
{
    bintree_path path = own_path(flags);
    const int32_t result = bintreeRemove(root, key, compare, &path);
    memFree(path.steps);
    return result;
}

// Walks

// One level of a walk's way back up. Entries that are popped are kept for the pushes to come, so a
// walk allocates once for each level of the tree instead of once for each node.
struct walk_entry {
    list_node link;
    bintree_node *node;
};

struct walk_stack {
    list_node *entries; // from the top down
    list_node *spare;
};

static walk_entry *top_of(const walk_stack *stack)
{
    return reinterpret_cast<walk_entry *>(stack->entries);
}

static void move_first(list_node **from, list_node **to)
{
    list_node *const node = *from;
    *from = node->next;
    node->next = *to;
    *to = node;
}

static bool push(walk_stack *stack, bintree_node *node)
{
    if (stack->spare)
        move_first(&stack->spare, &stack->entries);
    else if (!listPush(&stack->entries, sizeof(walk_entry)))
        return false;
    top_of(stack)->node = node;
    return true;
}

static void pop(walk_stack *stack)
{
    move_first(&stack->entries, &stack->spare);
}

static void release(walk_stack *stack)
{
    listClear(&stack->entries);
    listClear(&stack->spare);
}

static int32_t walk(walk_stack *stack, bintree_node *node, bintree_visit_proc proc, void *context,
                    int32_t order)
{
    for (;;) {
        for (; node; node = links(node)[0]) {
            const int32_t result = order == BINTREE_PRE_ORDER ? proc(node, context) : 0;
            if (result != 0)
                return result;
            if (!push(stack, node))
                return BINTREE_NO_ROOM;
        }
        // Up to the next node whose second subtree is to be visited. In post-order a node stays on
        // the stack meanwhile, and is known as finished by the subtree that the walk comes from.
        const bintree_node *last = nullptr;
        for (;;) {
            if (!stack->entries)
                return 0;
            node = top_of(stack)->node;
            if (order == BINTREE_POST_ORDER && links(node)[1] && links(node)[1] != last)
                break;
            const bool visited = order == BINTREE_IN_ORDER || order == BINTREE_POST_ORDER;
            const int32_t result = visited ? proc(node, context) : 0;
            if (result != 0)
                return result;
            pop(stack);
            if (order != BINTREE_POST_ORDER)
                break;
            last = node;
        }
        node = links(node)[1];
    }
}

int32_t bintreeTraverse(bintree_node *tree, bintree_visit_proc proc, void *context, int32_t order)
{
    walk_stack stack = {};
    const int32_t result = walk(&stack, tree, proc, context, order);
    release(&stack);
    return result;
}

static int32_t bintree_clear_proc(bintree_node *node, void *)
{
    memFree(node);
    return 0;
}

void bintreeClear(bintree_node **root)
{
    bintreeTraverse(*root, bintree_clear_proc, nullptr, BINTREE_POST_ORDER);
    *root = nullptr;
}

// Queries, which change nothing although the walk could

static int32_t query(const bintree_node *tree, bintree_visit_proc proc, void *context,
                     int32_t order)
{
    return bintreeTraverse(const_cast<bintree_node *>(tree), proc, context, order);
}

static int32_t bintree_count_proc(bintree_node *, void *context)
{
    int32_t *const count = static_cast<int32_t *>(context);
    *count = wrap_add(*count, 1);
    return 0;
}

int32_t bintreeCount(const bintree_node *tree)
{
    int32_t count = 0;
    query(tree, bintree_count_proc, &count, BINTREE_PRE_ORDER);
    return count;
}

template <typename Int>
struct bintree_find {
    Int value;
    uint32_t offset;
    bintree_node *found;
};

template <typename Int>
static int32_t bintree_find_int(bintree_node *node, void *context)
{
    bintree_find<Int> *const find = static_cast<bintree_find<Int> *>(context);
    if (load<Int>(reinterpret_cast<const char *>(node) + find->offset) != find->value)
        return 0;
    find->found = node;
    return 1;
}

template <typename Int>
static bintree_node *find_int(const bintree_node *tree, Int value, uint32_t offset)
{
    bintree_find<Int> find = {value, offset, nullptr};
    const int32_t result = query(tree, bintree_find_int<Int>, &find, BINTREE_IN_ORDER);
    return result > 0 ? find.found : nullptr;
}

bintree_node *bintreeFindInt1(const bintree_node *tree, int8_t value, uint32_t offset)
{
    return find_int(tree, value, offset);
}

bintree_node *bintreeFindInt2(const bintree_node *tree, int16_t value, uint32_t offset)
{
    return find_int(tree, value, offset);
}

bintree_node *bintreeFindInt4(const bintree_node *tree, int32_t value, uint32_t offset)
{
    return find_int(tree, value, offset);
}

static int32_t bintree_find_text(bintree_node *node, void *context)
{
    return str_compare_class_str(node, static_cast<str_compare_class *>(context));
}

bintree_node *bintreeFindStr(const bintree_node *tree, const char *text, uint32_t offset,
                             uint32_t flags)
{
    str_compare_class wanted = {text, offset, flags, nullptr};
    const int32_t result = query(tree, bintree_find_text, &wanted, BINTREE_IN_ORDER);
    return result > 0 ? static_cast<bintree_node *>(wanted.found) : nullptr;
}

static int32_t measure(walk_stack *stack, bintree_node *node)
{
    int32_t level = 1;
    int32_t highest = 1;
    for (;;) {
        for (; node; node = links(node)[0]) {
            if (!push(stack, node))
                return BINTREE_FAILED;
            level++;
            highest = level > highest ? level : highest;
        }
        // An entry loses its node when the walk goes into the node's second subtree.
        while (stack->entries && !top_of(stack)->node) {
            pop(stack);
            level--;
        }
        if (!stack->entries)
            return highest;
        node = links(top_of(stack)->node)[1];
        top_of(stack)->node = nullptr;
    }
}

int32_t bintreeGetHeight(const bintree_node *tree)
{
    walk_stack stack = {};
    const int32_t height = measure(&stack, const_cast<bintree_node *>(tree));
    release(&stack);
    return height;
}

struct bintree_check {
    bintree_visit_proc proc;
    void *context;
    int32_t count;
};

static int32_t bintree_check_balance(bintree_node *node, void *context)
{
    bintree_check *const check = static_cast<bintree_check *>(context);
    const int32_t smaller = bintreeGetHeight(links(node)[0]);
    const int32_t difference = smaller - bintreeGetHeight(links(node)[1]);
    if (node->balance == difference && difference >= -1 && difference <= 1)
        return 0;
    check->proc(node, check->context);
    check->count = wrap_add(check->count, 1);
    return 0;
}

int32_t bintreeCheckBalance(const bintree_node *tree, bintree_visit_proc proc, void *context)
{
    bintree_check check = {proc, context, 0};
    const int32_t result = query(tree, bintree_check_balance, &check, BINTREE_IN_ORDER);
    return result < 0 ? BINTREE_FAILED : check.count;
}

// Balanced trees of several makers, as the benchmarks use them: with keys of 32 bits or with texts.
// Each is made for `keys`, of which it may keep nodes; `i` is an index into them.
#ifndef TESSEL_BENCH_TREES_H
#define TESSEL_BENCH_TREES_H

#include "tessel.h"

#include <search.h>

#include <cstring>
#include <set>
#include <type_traits>
#include <vector>

#ifdef TESSEL_BENCH_BOOST
#include <boost/intrusive/avl_set.hpp>
#endif
#ifdef TESSEL_BENCH_GLIB
#include <glib.h>
#endif

namespace bench
{
inline int32_t compare_keys(uint32_t left, uint32_t right)
{
    return (left > right) - (left < right);
}

inline int32_t compare_keys(const char *left, const char *right)
{
    return std::strcmp(left, right);
}

template <typename Key>
struct less_key {
    bool operator()(Key left, Key right) const
    {
        return compare_keys(left, right) < 0;
    }
};

// A key in a word that can hold an address, and back.
template <typename Key>
const void *word_of(Key key)
{
    if constexpr (std::is_pointer_v<Key>)
        return key;
    else
        return reinterpret_cast<const void *>(uintptr_t{key});
}

template <typename Key>
Key key_in(const void *word)
{
    if constexpr (std::is_pointer_v<Key>)
        return static_cast<Key>(word);
    else
        return static_cast<Key>(reinterpret_cast<uintptr_t>(word));
}

// What a walk adds up.
template <typename Key>
uint64_t number_of(Key key)
{
    return reinterpret_cast<uintptr_t>(word_of(key));
}

// Nodes of ours; a key of 32 bits stands in the room behind the balance word.
template <typename Key>
struct tessel_node {
    bintree_node *child[2];
    int32_t balance;
    Key key;

    static Key of(const bintree_node *node)
    {
        return reinterpret_cast<const tessel_node *>(node)->key;
    }
    static int32_t compare(const bintree_node *node, const void *key)
    {
        return compare_keys(of(node), key_in<Key>(key));
    }
};

template <typename Key>
struct tessel_tree {
    typedef tessel_node<Key> node;

    bool find(Key key) const
    {
        return bintreeSearch(root, word_of(key), node::compare) != nullptr;
    }
    uint64_t sum() const
    {
        const auto add = [](bintree_node *visited, void *sum) -> int32_t {
            *static_cast<uint64_t *>(sum) += number_of(node::of(visited));
            return 0;
        };
        uint64_t sum = 0;
        bintreeTraverse(root, add, &sum, BINTREE_IN_ORDER);
        return sum;
    }

    bintree_node *root = nullptr;
    bintree_step steps[48];
    bintree_path path = {steps, 47, BINTREE_BALANCED, -1, -1};
};

// Nodes that stand in an array.
template <typename Key>
struct tessel_array : tessel_tree<Key> {
    typedef tessel_node<Key> node;
    using tessel_tree<Key>::root;
    using tessel_tree<Key>::path;

    explicit tessel_array(const std::vector<Key> &keys) : nodes(keys.size())
    {
        for (size_t i = 0; i < keys.size(); i++)
            nodes[i].key = keys[i];
    }
    void insert(size_t i, Key key)
    {
        bintreeAdd(&root, reinterpret_cast<bintree_node *>(&nodes[i]), word_of(key), node::compare,
                   &path);
    }
    void remove(Key key)
    {
        bintree_node *removed;
        bintreeCut(&removed, &root, word_of(key), node::compare, &path);
    }

    std::vector<node> nodes;
};

// Nodes that the library makes and releases.
template <typename Key>
struct tessel_blocks : tessel_tree<Key> {
    typedef tessel_node<Key> node;
    using tessel_tree<Key>::root;
    using tessel_tree<Key>::path;

    explicit tessel_blocks(const std::vector<Key> &)
    {
    }
    ~tessel_blocks()
    {
        bintreeClear(&root);
    }
    tessel_blocks(const tessel_blocks &) = delete;
    tessel_blocks &operator=(const tessel_blocks &) = delete;

    void insert(size_t, Key key)
    {
        bintree_node *made;
        bintreeCreate(&made, &root, word_of(key), node::compare, &path, sizeof(node), 0);
        reinterpret_cast<node *>(made)->key = key;
    }
    void remove(Key key)
    {
        bintreeRemove(&root, word_of(key), node::compare, &path);
    }
};

template <typename Key>
struct standard_set {
    explicit standard_set(const std::vector<Key> &)
    {
    }
    void insert(size_t, Key key)
    {
        set.insert(key);
    }
    void remove(Key key)
    {
        set.erase(key);
    }
    bool find(Key key) const
    {
        return set.find(key) != set.end();
    }
    uint64_t sum() const
    {
        uint64_t sum = 0;
        for (const Key key : set)
            sum += number_of(key);
        return sum;
    }

    std::set<Key, less_key<Key>> set;
};

#ifdef TESSEL_BENCH_BOOST
template <typename Key>
struct boost_array {
    struct boost_node : boost::intrusive::avl_set_base_hook<
                            boost::intrusive::link_mode<boost::intrusive::normal_link>> {
        Key key;
    };
    struct key_of {
        typedef Key type;
        Key operator()(const boost_node &node) const
        {
            return node.key;
        }
    };

    explicit boost_array(const std::vector<Key> &keys) : nodes(keys.size())
    {
        for (size_t i = 0; i < keys.size(); i++)
            nodes[i].key = keys[i];
    }
    void insert(size_t i, Key)
    {
        set.insert(nodes[i]);
    }
    void remove(Key key)
    {
        set.erase(key);
    }
    bool find(Key key) const
    {
        return set.find(key) != set.end();
    }
    uint64_t sum() const
    {
        uint64_t sum = 0;
        for (const boost_node &node : set)
            sum += number_of(node.key);
        return sum;
    }

    std::vector<boost_node> nodes;
    boost::intrusive::avl_set<boost_node, boost::intrusive::key_of_value<key_of>,
                              boost::intrusive::compare<less_key<Key>>>
        set;
};
#endif

// The tree of the C library holds addresses: of texts, or of the numbers in `keys`.
template <typename Key>
struct libc_tree {
    explicit libc_tree(const std::vector<Key> &all) : keys(all)
    {
    }
    ~libc_tree()
    {
        tdestroy(root, [](void *) {});
    }
    libc_tree(const libc_tree &) = delete;
    libc_tree &operator=(const libc_tree &) = delete;

    static const void *item(const Key &key)
    {
        if constexpr (std::is_pointer_v<Key>)
            return key;
        else
            return &key;
    }
    static Key key_at(const void *item)
    {
        if constexpr (std::is_pointer_v<Key>)
            return static_cast<Key>(item);
        else
            return *static_cast<const Key *>(item);
    }
    static int compare(const void *left, const void *right)
    {
        return compare_keys(key_at(left), key_at(right));
    }
    void insert(size_t i, Key)
    {
        tsearch(item(keys[i]), &root, compare);
    }
    void remove(Key key)
    {
        tdelete(item(key), &root, compare);
    }
    bool find(Key key) const
    {
        return tfind(item(key), &root, compare) != nullptr;
    }
    uint64_t sum() const
    {
        const auto add = [](const void *node, VISIT visit, void *sum) {
            if (visit == postorder || visit == leaf)
                *static_cast<uint64_t *>(sum) +=
                    number_of(key_at(*static_cast<const void *const *>(node)));
        };
        uint64_t sum = 0;
        twalk_r(root, add, &sum);
        return sum;
    }

    const std::vector<Key> keys; // a copy, as the others have one
    void *root = nullptr;
};

#ifdef TESSEL_BENCH_GLIB
template <typename Key>
struct glib_tree {
    explicit glib_tree(const std::vector<Key> &)
    {
    }
    ~glib_tree()
    {
        g_tree_destroy(tree);
    }
    glib_tree(const glib_tree &) = delete;
    glib_tree &operator=(const glib_tree &) = delete;

    static gint compare(gconstpointer left, gconstpointer right)
    {
        return compare_keys(key_in<Key>(left), key_in<Key>(right));
    }
    void insert(size_t, Key key)
    {
        // The value only has to differ from null, which says that a key is not there.
        g_tree_insert(tree, const_cast<void *>(word_of(key)), tree);
    }
    void remove(Key key)
    {
        g_tree_remove(tree, word_of(key));
    }
    bool find(Key key) const
    {
        return g_tree_lookup(tree, word_of(key)) != nullptr;
    }
    uint64_t sum() const
    {
        const auto add = [](gpointer key, gpointer, gpointer sum) -> gboolean {
            *static_cast<uint64_t *>(sum) += number_of(key_in<Key>(key));
            return FALSE;
        };
        uint64_t sum = 0;
        g_tree_foreach(tree, add, &sum);
        return sum;
    }

    GTree *tree = g_tree_new(compare);
};
#endif

template <typename Tree, typename Key>
void fill(Tree &tree, const std::vector<Key> &keys)
{
    for (size_t i = 0; i < keys.size(); i++)
        tree.insert(i, keys[i]);
}

// Calls `visit` with each kind of tree and its name, by where the nodes are: both sides of a
// comparison have theirs in an array, or both in blocks of the heap.
template <template <typename> typename Tree>
struct tree_kind {
    template <typename Key>
    using type = Tree<Key>;
};

template <typename Visit>
void each_tree_in_array(Visit visit)
{
    visit(tree_kind<tessel_array>(), "tessel");
#ifdef TESSEL_BENCH_BOOST
    visit(tree_kind<boost_array>(), "boost::intrusive::avl_set");
#endif
}

template <typename Visit>
void each_tree_in_blocks(Visit visit)
{
    visit(tree_kind<tessel_blocks>(), "tessel");
    visit(tree_kind<standard_set>(), "std::set");
    visit(tree_kind<libc_tree>(), "tsearch");
#ifdef TESSEL_BENCH_GLIB
    visit(tree_kind<glib_tree>(), "GTree");
#endif
}
} // namespace bench

#endif

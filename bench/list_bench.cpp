// A stack of nodes, a search for a number and the count of a ring: times for one node.
#include "behind_call.h"
#include "compare.h"

#include "tessel.h"

#ifdef TESSEL_BENCH_GLIB
#include <glib.h>
#endif

#include <algorithm>
#include <cstdlib>
#include <forward_list>
#include <iterator>
#include <memory>

namespace
{
using namespace bench;

struct number {
    list_node head;
    int32_t value;
};

// The sides of a stack. Each has to itself the nodes that it makes.
struct tessel_list {
    list_node *head = nullptr;

    void push(int32_t value)
    {
        reinterpret_cast<number *>(listPush(&head, sizeof(number)))->value = value;
    }
    void pop()
    {
        listPop(&head);
    }
    bool find(int32_t value) const
    {
        return listFindInt4(head, value, offsetof(number, value)) != nullptr;
    }
};

struct called_list {
    struct number {
        native_node head;
        int32_t value;
    };
    native_node *head = nullptr;

    void push(int32_t value)
    {
        reinterpret_cast<number *>(native_push(&head, sizeof(number)))->value = value;
    }
    void pop()
    {
        native_pop(&head);
    }
};

struct inlined_list {
    list_node *head = nullptr;

    void push(int32_t value)
    {
        number *const node = static_cast<number *>(std::malloc(sizeof(number)));
        node->head.next = head;
        node->value = value;
        head = &node->head;
    }
    void pop()
    {
        list_node *const node = head;
        head = node->next;
        std::free(node);
    }
    bool find(int32_t value) const
    {
        const list_node *node = head;
        while (node && reinterpret_cast<const number *>(node)->value != value)
            node = node->next;
        return node != nullptr;
    }
};

struct standard_list {
    std::forward_list<int32_t> numbers;

    void push(int32_t value)
    {
        numbers.push_front(value);
    }
    void pop()
    {
        numbers.pop_front();
    }
    bool find(int32_t value) const
    {
        return std::find(numbers.begin(), numbers.end(), value) != numbers.end();
    }
    int32_t count() const
    {
        return static_cast<int32_t>(std::distance(numbers.begin(), numbers.end()));
    }
};

// Rings, to which nodes are added in front as to the stacks.
struct tessel_ring {
    list_dnode *head = nullptr;

    void push(int32_t)
    {
        listDNCreate(&head, nullptr, sizeof(list_dnode), LIST_RING | LIST_BEFORE);
    }
    void pop()
    {
        listDNRemove(&head, head);
    }
    int32_t count() const
    {
        return listCNCount(head);
    }
};

struct inlined_ring : tessel_ring {
    int32_t count() const
    {
        int32_t count = 0;
        const list_dnode *node = head;
        do {
            count++;
            node = node->next;
        } while (node != head);
        return count;
    }
};

#ifdef TESSEL_BENCH_GLIB
struct glib_list {
    GList *head = nullptr;

    void push(int32_t value)
    {
        head = g_list_prepend(head, GINT_TO_POINTER(value));
    }
    void pop()
    {
        head = g_list_delete_link(head, head);
    }
    bool find(int32_t value) const
    {
        return g_list_find(head, GINT_TO_POINTER(value)) != nullptr;
    }
    int32_t count() const
    {
        return static_cast<int32_t>(g_list_length(head));
    }
};
#endif

// A list of the numbers from 0 on, the highest in front.
template <typename List>
struct filled_list {
    explicit filled_list(int32_t count) : size(count)
    {
        for (int32_t i = 0; i < count; i++)
            list.push(i);
    }
    ~filled_list()
    {
        for (int32_t i = 0; i < size; i++)
            list.pop();
    }
    filled_list(const filled_list &) = delete;
    filled_list &operator=(const filled_list &) = delete;

    int32_t size;
    List list;
};

constexpr int32_t stack_operations = 100000;

template <typename List>
void add_stack(const std::string &side)
{
    for (const int32_t depth : {1, 1000, 100000}) {
        const std::string name =
            std::string("Push and pop, depth ") + grouped(static_cast<size_t>(depth));
        add({name, stack_operations}, side, [=] {
            return [=, list = List()]() mutable -> uint64_t {
                for (int32_t done = 0; done < stack_operations; done += depth) {
                    for (int32_t i = 0; i < depth; i++)
                        list.push(i);
                    // Or a compiler that sees all of it may do without the nodes.
                    benchmark::DoNotOptimize(list);
                    for (int32_t i = 0; i < depth; i++)
                        list.pop();
                }
                return 0;
            };
        });
    }
}

template <typename List, typename Task>
void add_filled(const std::string &name, const std::string &side, Task task)
{
    for (const int32_t size : {500, 100000, 1000000}) {
        const size_t nodes = static_cast<size_t>(size);
        add({name + ", " + grouped(nodes) + " nodes", nodes}, side, [=] {
            return [=, filled = std::make_unique<filled_list<List>>(size)] {
                benchmark::DoNotOptimize(filled->list);
                return static_cast<uint64_t>(task(filled->list));
            };
        });
    }
}

template <typename List>
void add_find(const std::string &side)
{
    add_filled<List>("Find an integer field in a list", side,
                     [](const List &list) { return list.find(0); });
}

template <typename List>
void add_count(const std::string &side)
{
    add_filled<List>("Count a ring", side, [](const List &list) { return list.count(); });
}
} // namespace

void bench::add_sides()
{
    add_stack<tessel_list>("tessel");
    add_stack<called_list>("by hand, behind a call");
    add_stack<inlined_list>("by hand, inlined");
    add_stack<standard_list>("std::forward_list, inlined");
    add_find<tessel_list>("tessel");
    add_find<inlined_list>("by hand, inlined");
    add_find<standard_list>("std::forward_list, inlined");
    add_count<tessel_ring>("tessel");
    add_count<inlined_ring>("by hand, inlined");
    add_count<standard_list>("std::forward_list, inlined, no ring");
#ifdef TESSEL_BENCH_GLIB
    add_stack<glib_list>("GList");
    add_find<glib_list>("GList");
    add_count<glib_list>("GList, no ring");
#endif
}

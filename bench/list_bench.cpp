// A search for a number in a list, and a stack of nodes, beside code written by hand for the same
// kind of node and beside std::forward_list. The sides take turns, so that a busy machine slows all
// of them down alike; the counters give the time of each as a multiple of the time of tessel.
#include "tessel.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <forward_list>

namespace
{

struct number {
    list_node head;
    int32_t value;
};

// One side of the comparison: a list of the numbers from 0 on, the highest in front.
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

struct hand_list {
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
};

double processor_time()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

template <typename List>
void find_last(List &list, int32_t)
{
    int32_t last = 0;
    benchmark::DoNotOptimize(last);
    if (!list.find(last))
        std::abort();
}

template <typename List>
void push_and_pop(List &list, int32_t count)
{
    for (int32_t i = 0; i < count; i++)
        list.push(i);
    benchmark::DoNotOptimize(list);
    for (int32_t i = 0; i < count; i++)
        list.pop();
}

// Runs a side until it has gone through a million nodes, and gives the time that this took. Before
// that it runs once, to bring its nodes back near the processor.
template <typename List>
double time_of(void (*task)(List &, int32_t), List &list, int32_t count)
{
    task(list, count);
    const double start = processor_time();
    for (int32_t i = 0; i < 1000000; i += count)
        task(list, count);
    return processor_time() - start;
}

struct times {
    double tessel = 0, by_hand = 0, standard = 0;
};

void report(benchmark::State &state, const times &sum)
{
    state.counters["tessel_ns"] = 1e3 * sum.tessel / static_cast<double>(state.iterations());
    state.counters["by_hand"] = sum.by_hand / sum.tessel;
    state.counters["forward_list"] = sum.standard / sum.tessel;
}

void find(benchmark::State &state)
{
    const int32_t count = static_cast<int32_t>(state.range(0));
    tessel_list of_tessel;
    standard_list of_standard;
    for (int32_t i = 0; i < count; i++) {
        of_tessel.push(i);
        of_standard.push(i);
    }
    // The same nodes: where they lie in the caches makes more of a difference than any loop.
    hand_list by_hand = {of_tessel.head};
    times sum;
    for (auto _ : state) {
        sum.tessel += time_of(find_last, of_tessel, count);
        sum.by_hand += time_of(find_last, by_hand, count);
        sum.standard += time_of(find_last, of_standard, count);
    }
    report(state, sum);
    // In the order that lets the next fill find the memory as this one did.
    for (int32_t i = 0; i < count; i++) {
        of_standard.pop();
        of_tessel.pop();
    }
}

void push_pop(benchmark::State &state)
{
    const int32_t count = static_cast<int32_t>(state.range(0));
    tessel_list of_tessel;
    hand_list by_hand;
    standard_list of_standard;
    times sum;
    for (auto _ : state) {
        sum.tessel += time_of(push_and_pop, of_tessel, count);
        sum.by_hand += time_of(push_and_pop, by_hand, count);
        sum.standard += time_of(push_and_pop, of_standard, count);
    }
    report(state, sum);
}

BENCHMARK(find)->Arg(500)->Arg(100000)->Arg(1000000);
BENCHMARK(push_pop)->Arg(1)->Arg(1000)->Arg(100000);

} // namespace

// Balanced trees of 32-bit keys in random order, beside std::set, an intrusive AVL set and the
// trees of the C library, which take turns. The last lines are the times of all for one key, and as
// multiples of those of tessel with nodes that stand in an array.
#include "tessel.h"

#include <benchmark/benchmark.h>

#include <search.h>

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

#ifdef TESSEL_BENCH_BOOST
#include <boost/intrusive/avl_set.hpp>
#endif

namespace
{
// Each kind of tree is made for `keys`, of which it may keep nodes; `i` is an index into them.

const void *as_key(uint32_t key)
{
    return reinterpret_cast<const void *>(uintptr_t{key});
}

// Nodes of ours, with the key in the room behind the balance word.
struct word_node {
    bintree_node *child[2];
    int32_t balance;
    uint32_t key;
};

uint32_t key_of(const bintree_node *node)
{
    return reinterpret_cast<const word_node *>(node)->key;
}

int32_t compare_word(const bintree_node *node, const void *key)
{
    const uint32_t left = key_of(node);
    const auto right = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(key));
    return (left > right) - (left < right);
}

int32_t add_word(bintree_node *node, void *sum)
{
    *static_cast<uint64_t *>(sum) += key_of(node);
    return 0;
}

struct tessel_tree {
    bool find(uint32_t key) const
    {
        return bintreeSearch(root, as_key(key), compare_word) != nullptr;
    }
    uint64_t sum() const
    {
        uint64_t sum = 0;
        bintreeTraverse(root, add_word, &sum, BINTREE_IN_ORDER);
        return sum;
    }

    bintree_node *root = nullptr;
    bintree_step steps[48];
    bintree_path path = {steps, 47, BINTREE_BALANCED, -1, -1};
};

// Nodes that stand in an array.
struct tessel_array : tessel_tree {
    explicit tessel_array(const std::vector<uint32_t> &keys) : nodes(keys.size())
    {
        for (size_t i = 0; i < keys.size(); i++)
            nodes[i].key = keys[i];
    }
    void insert(size_t i, uint32_t key)
    {
        bintreeAdd(&root, reinterpret_cast<bintree_node *>(&nodes[i]), as_key(key), compare_word,
                   &path);
    }
    void remove(uint32_t key)
    {
        bintree_node *node;
        bintreeCut(&node, &root, as_key(key), compare_word, &path);
    }

    std::vector<word_node> nodes;
};

// Nodes that the library makes and releases.
struct tessel_blocks : tessel_tree {
    explicit tessel_blocks(const std::vector<uint32_t> &)
    {
    }
    ~tessel_blocks()
    {
        bintreeClear(&root);
    }
    void insert(size_t, uint32_t key)
    {
        bintree_node *node;
        bintreeCreate(&node, &root, as_key(key), compare_word, &path, sizeof(word_node), 0);
        reinterpret_cast<word_node *>(node)->key = key;
    }
    void remove(uint32_t key)
    {
        bintreeRemove(&root, as_key(key), compare_word, &path);
    }
};

struct std_set {
    explicit std_set(const std::vector<uint32_t> &)
    {
    }
    void insert(size_t, uint32_t key)
    {
        set.insert(key);
    }
    void remove(uint32_t key)
    {
        set.erase(key);
    }
    bool find(uint32_t key) const
    {
        return set.find(key) != set.end();
    }
    uint64_t sum() const
    {
        return std::accumulate(set.begin(), set.end(), uint64_t{0});
    }

    std::set<uint32_t> set;
};

#ifdef TESSEL_BENCH_BOOST
struct avl_node : boost::intrusive::avl_set_base_hook<
                      boost::intrusive::link_mode<boost::intrusive::normal_link>> {
    uint32_t key;
};

struct avl_key {
    typedef uint32_t type;
    uint32_t operator()(const avl_node &node) const
    {
        return node.key;
    }
};

struct boost_avl_set {
    explicit boost_avl_set(const std::vector<uint32_t> &keys) : nodes(keys.size())
    {
        for (size_t i = 0; i < keys.size(); i++)
            nodes[i].key = keys[i];
    }
    void insert(size_t i, uint32_t)
    {
        set.insert(nodes[i]);
    }
    void remove(uint32_t key)
    {
        set.erase(key);
    }
    bool find(uint32_t key) const
    {
        return set.find(key) != set.end();
    }
    uint64_t sum() const
    {
        uint64_t sum = 0;
        for (const avl_node &node : set)
            sum += node.key;
        return sum;
    }

    std::vector<avl_node> nodes;
    boost::intrusive::avl_set<avl_node, boost::intrusive::key_of_value<avl_key>> set;
};
#endif

int compare_pointed(const void *left, const void *right)
{
    const uint32_t a = *static_cast<const uint32_t *>(left);
    const uint32_t b = *static_cast<const uint32_t *>(right);
    return (a > b) - (a < b);
}

struct libc_tsearch {
    explicit libc_tsearch(const std::vector<uint32_t> &all) : keys(all)
    {
    }
    ~libc_tsearch()
    {
        tdestroy(root, [](void *) {});
    }
    void insert(size_t i, uint32_t)
    {
        tsearch(&keys[i], &root, compare_pointed);
    }
    void remove(uint32_t key)
    {
        tdelete(&key, &root, compare_pointed);
    }
    bool find(uint32_t key) const
    {
        return tfind(&key, &root, compare_pointed) != nullptr;
    }
    uint64_t sum() const
    {
        uint64_t sum = 0;
        const auto add_key = [](const void *node, VISIT visit, void *total) {
            if (visit == postorder || visit == leaf)
                *static_cast<uint64_t *>(total) += **static_cast<const uint32_t *const *>(node);
        };
        twalk_r(root, add_key, &sum);
        return sum;
    }

    const std::vector<uint32_t> &keys;
    void *root = nullptr;
};

// Rounds of one benchmark iteration. A small tree gets many, each in an order of its own: the
// branch predictor would know a few thousand keys by heart.
constexpr size_t operations = 100000;

struct round {
    std::vector<uint32_t> keys;    // in the order of insertion
    std::vector<uint32_t> again;   // the same in another order
    std::vector<uint32_t> missing; // as many that are not among them
};

std::vector<round> make_rounds(size_t count)
{
    std::mt19937 random(20240229);
    std::vector<uint32_t> distinct;
    while (distinct.size() < 2 * count) {
        while (distinct.size() < 2 * count)
            distinct.push_back(static_cast<uint32_t>(random()));
        std::sort(distinct.begin(), distinct.end());
        distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());
    }
    std::shuffle(distinct.begin(), distinct.end(), random);
    const auto middle = distinct.begin() + static_cast<ptrdiff_t>(count);
    round next = {{distinct.begin(), middle}, {distinct.begin(), middle}, {middle, distinct.end()}};
    std::vector<round> rounds;
    do {
        for (auto *order : {&next.keys, &next.again, &next.missing})
            std::shuffle(order->begin(), order->end(), random);
        rounds.push_back(next);
    } while (rounds.size() * count < operations);
    return rounds;
}

const std::vector<round> &rounds_of(size_t count)
{
    static std::map<size_t, std::vector<round>> made;
    auto &rounds = made[count];
    if (rounds.empty())
        rounds = make_rounds(count);
    return rounds;
}

// Seconds of this thread's own time: others may use the machine too.
double clock_now()
{
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

template <typename Action>
double seconds(Action action)
{
    const double start = clock_now();
    action();
    return clock_now() - start;
}

template <typename Tree>
void fill(Tree &tree, const std::vector<uint32_t> &keys)
{
    for (size_t i = 0; i < keys.size(); i++)
        tree.insert(i, keys[i]);
}

void report(benchmark::State &state, double time, int64_t keys, bool right)
{
    state.SetIterationTime(time);
    state.SetItemsProcessed(state.items_processed() + keys);
    if (!right)
        state.SkipWithError("a key is there that should not be, or the other way round");
}

template <typename Tree, bool timing_insert>
void insert_and_remove(benchmark::State &state)
{
    const auto &rounds = rounds_of(static_cast<size_t>(state.range(0)));
    for (auto _ : state) {
        double insert = 0, remove = 0;
        bool right = true;
        for (const round &round : rounds) {
            Tree tree(round.keys);
            insert += seconds([&] { fill(tree, round.keys); });
            right = right && tree.find(round.keys[0]) && tree.find(round.keys.back());
            remove += seconds([&] {
                for (const uint32_t key : round.again)
                    tree.remove(key);
            });
            right = right && tree.sum() == 0;
        }
        report(state, timing_insert ? insert : remove,
               static_cast<int64_t>(rounds.size()) * state.range(0), right);
    }
}

template <typename Tree, bool hit>
void find(benchmark::State &state)
{
    const auto &rounds = rounds_of(static_cast<size_t>(state.range(0)));
    Tree tree(rounds[0].keys);
    fill(tree, rounds[0].keys);
    for (auto _ : state) {
        size_t found = 0, sought = 0;
        const double time = seconds([&] {
            for (const round &round : rounds)
                for (const uint32_t key : hit ? round.again : round.missing) {
                    found += tree.find(key);
                    sought++;
                }
        });
        report(state, time, static_cast<int64_t>(sought), found == (hit ? sought : 0));
    }
}

template <typename Tree>
void walk(benchmark::State &state)
{
    const auto &keys = rounds_of(static_cast<size_t>(state.range(0)))[0].keys;
    Tree tree(keys);
    fill(tree, keys);
    const uint64_t expected = std::accumulate(keys.begin(), keys.end(), uint64_t{0});
    for (auto _ : state) {
        uint64_t sum = 0;
        const double time = seconds([&] { sum = tree.sum(); });
        report(state, time, state.range(0), sum == expected);
    }
}

template <typename Tree>
void add(const std::string &tree)
{
    for (const int64_t count : {1000, 100000, 1000000}) {
        const auto add_one = [&](const char *operation, void (*body)(benchmark::State &)) {
            benchmark::RegisterBenchmark((operation + ("/" + tree)).c_str(), body)
                ->Arg(count)
                ->UseManualTime()
                ->Repetitions(count < 1000000 ? 9 : 7)
                ->Unit(benchmark::kMillisecond);
        };
        add_one("insert", insert_and_remove<Tree, true>);
        add_one("remove", insert_and_remove<Tree, false>);
        add_one("find_hit", find<Tree, true>);
        add_one("find_miss", find<Tree, false>);
        add_one("walk", walk<Tree>);
    }
}

// Nanoseconds for a key, of all repetitions, by operation and size and then by tree.
struct ratio_reporter : benchmark::ConsoleReporter {
    std::map<std::pair<std::string, int64_t>, std::map<std::string, std::vector<double>>> times;

    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred)
                continue;
            const std::string &name = run.run_name.function_name;
            const size_t slash = name.find('/');
            times[{name.substr(0, slash), std::stoll(run.run_name.args)}][name.substr(slash + 1)]
                .push_back(1e9 / run.counters.at("items_per_second"));
        }
    }
    void Finalize() override
    {
        for (auto &[row, trees] : times) {
            std::printf("%-10s%8lld", row.first.c_str(), static_cast<long long>(row.second));
            double ours = 0;
            for (const char *tree :
                 {"tessel_array", "tessel_blocks", "std_set", "boost_avl_set", "tsearch"}) {
                std::vector<double> &all = trees[tree];
                if (all.empty())
                    continue;
                std::sort(all.begin(), all.end());
                const double median = all[all.size() / 2];
                ours = ours > 0 ? ours : median;
                std::printf("  %s %.1f ns %.2f", tree, median, median / ours);
            }
            std::printf("\n");
        }
    }
};
} // namespace

int main(int argc, char **argv)
{
    // The sides take turns, so that whatever else the machine does falls on all of them.
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    char short_runs[] = "--benchmark_min_time=0.02";
    std::vector<char *> arguments = {argv[0], interleaving, short_runs};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    add<tessel_array>("tessel_array");
    add<tessel_blocks>("tessel_blocks");
    add<std_set>("std_set");
#ifdef TESSEL_BENCH_BOOST
    add<boost_avl_set>("boost_avl_set");
#endif
    add<libc_tsearch>("tsearch");
    ratio_reporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
}

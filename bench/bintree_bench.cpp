// Balanced trees with keys in random order, times for one key. Then how the cost of ours grows.
#include "compare.h"
#include "trees.h"

#include <algorithm>
#include <map>
#include <memory>
#include <numeric>
#include <random>
#include <set>

namespace
{
using namespace bench;

// What a task goes through. A small tree gets many rounds, each in an order of its own: the branch
// predictor would know a few thousand keys by heart.
constexpr size_t operations = 100000;

template <typename Key>
struct round {
    std::vector<Key> keys;    // in the order of insertion
    std::vector<Key> again;   // the same in another order
    std::vector<Key> missing; // as many that are not among them
};

template <typename Key>
std::vector<Key> distinct_keys(size_t count, std::mt19937 &random);

template <>
std::vector<uint32_t> distinct_keys(size_t count, std::mt19937 &random)
{
    std::vector<uint32_t> keys;
    while (keys.size() < count) {
        while (keys.size() < count)
            keys.push_back(static_cast<uint32_t>(random()));
        std::sort(keys.begin(), keys.end());
        keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    }
    return keys;
}

template <>
std::vector<const char *> distinct_keys(size_t count, std::mt19937 &random)
{
    static std::set<std::string> texts;
    while (texts.size() < count) {
        std::string text(8 + random() % 17, '\0');
        for (char &letter : text)
            letter = static_cast<char>('a' + random() % 26);
        texts.insert(text);
    }
    std::vector<const char *> keys;
    for (const std::string &text : texts)
        keys.push_back(text.c_str());
    return keys;
}

template <typename Key>
std::vector<round<Key>> make_rounds(size_t count)
{
    std::mt19937 random(20240229);
    std::vector<Key> all = distinct_keys<Key>(2 * count, random);
    std::shuffle(all.begin(), all.end(), random);
    const auto middle = all.begin() + static_cast<ptrdiff_t>(count);
    round<Key> next = {{all.begin(), middle}, {all.begin(), middle}, {middle, all.end()}};
    std::vector<round<Key>> rounds;
    do {
        for (auto *order : {&next.keys, &next.again, &next.missing})
            std::shuffle(order->begin(), order->end(), random);
        rounds.push_back(next);
    } while (rounds.size() * count < operations);
    return rounds;
}

template <typename Key>
const std::vector<round<Key>> &rounds_of(size_t count)
{
    static std::map<size_t, std::vector<round<Key>>> made;
    auto &rounds = made[count];
    if (rounds.empty())
        rounds = make_rounds<Key>(count);
    return rounds;
}

size_t rounds_for(size_t count)
{
    return std::max<size_t>(1, operations / count);
}

template <typename Tree, typename Key>
uint64_t insert_all(const std::vector<round<Key>> &rounds, stopwatch &watch)
{
    uint64_t answer = 0;
    for (const round<Key> &round : rounds) {
        Tree tree(round.keys);
        watch.time([&] { fill(tree, round.keys); });
        answer += tree.sum();
    }
    return answer;
}

template <typename Tree, typename Key>
uint64_t remove_all(const std::vector<round<Key>> &rounds, stopwatch &watch)
{
    uint64_t answer = 0;
    for (const round<Key> &round : rounds) {
        Tree tree(round.keys);
        fill(tree, round.keys);
        watch.time([&] {
            for (const Key key : round.again)
                tree.remove(key);
        });
        answer += tree.sum();
    }
    return answer;
}

// A tree to search or walk stands from one repetition to the next: to make it takes longer.
template <typename Tree, typename Key>
Tree &standing_tree(size_t count)
{
    static std::map<size_t, std::unique_ptr<Tree>> trees;
    auto &tree = trees[count];
    if (!tree) {
        const std::vector<Key> &keys = rounds_of<Key>(count)[0].keys;
        tree = std::make_unique<Tree>(keys);
        fill(*tree, keys);
    }
    return *tree;
}

template <typename Tree, typename Key>
uint64_t find_all(const Tree &tree, const std::vector<round<Key>> &rounds,
                  const std::vector<Key> round<Key>::*sought)
{
    uint64_t found = 0;
    for (const round<Key> &round : rounds)
        for (const Key key : round.*sought)
            found += tree.find(key);
    return found;
}

template <typename Tree, typename Key>
void add_tree(const std::string &where, const std::string &side, size_t count)
{
    const auto row = [&](const char *operation) {
        return work{std::string(operation) + ", " + where, count * rounds_for(count)};
    };
    const auto rounds = [=]() -> auto &
    {
        return rounds_of<Key>(count);
    };
    add(row("Insert"), side,
        [=] { return [=](stopwatch &watch) { return insert_all<Tree>(rounds(), watch); }; });
    add(row("Remove"), side,
        [=] { return [=](stopwatch &watch) { return remove_all<Tree>(rounds(), watch); }; });
    const auto add_find = [&](const char *operation, const std::vector<Key> round<Key>::*sought) {
        add(row(operation), side, [=] {
            return [=, &tree = standing_tree<Tree, Key>(count)] {
                return find_all(tree, rounds(), sought);
            };
        });
    };
    add_find("Find, hit", &round<Key>::again);
    add_find("Find, miss", &round<Key>::missing);
    const work walk = {"Walk in order, " + where, count};
    add(walk, side,
        [=] { return [&tree = standing_tree<Tree, Key>(count)] { return tree.sum(); }; });
}

template <typename Key>
void add_trees(size_t count, const std::string &what)
{
    const auto add_in = [&](const std::string &where) {
        return [=](auto kind, const char *side) {
            typedef typename decltype(kind)::template type<Key> tree;
            add_tree<tree, Key>(what + where, side, count);
        };
    };
    each_tree_in_blocks(add_in(" in blocks"));
    each_tree_in_array(add_in(" in an array"));
}

// Growth: ours beside itself in a small tree, with a tenth of the keys, or so many, of a round. Those
// that are inserted go again, and a task is right if it finds what is there and nothing else.
constexpr size_t smallest = 1000;
constexpr size_t most_keys = 100000;

typedef tessel_blocks<uint32_t> grown_tree;

bool insert_more(grown_tree &tree, const std::vector<round<uint32_t>> &rounds, size_t keys,
                 stopwatch &watch)
{
    bool right = true;
    for (const auto &round : rounds) {
        watch.time([&] {
            for (size_t i = 0; i < keys; i++)
                tree.insert(i, round.missing[i]);
        });
        for (size_t i = 0; i < keys; i++) {
            right = tree.find(round.missing[i]) && right;
            tree.remove(round.missing[i]);
        }
    }
    return right && !tree.find(rounds[0].missing[0]);
}

bool find_some(const grown_tree &tree, const std::vector<round<uint32_t>> &rounds, size_t keys)
{
    size_t found = 0;
    for (const auto &round : rounds)
        for (size_t i = 0; i < keys; i++)
            found += tree.find(round.again[i]);
    return found == keys * rounds.size();
}

void add_growth(size_t count, const std::string &side, size_t size)
{
    const std::string where = grouped(count) + " nodes, growth";
    const size_t keys = std::min(most_keys, size / 10);
    const size_t items = keys * rounds_for(size);
    const auto tree = [=]() -> auto &
    {
        return standing_tree<grown_tree, uint32_t>(size);
    };
    const auto rounds = [=]() -> auto &
    {
        return rounds_of<uint32_t>(size);
    };
    add({"Insert, to " + where, items}, side, [=] {
        return [=, &standing = tree(), &sought = rounds()](stopwatch &watch) {
            return insert_more(standing, sought, keys, watch);
        };
    });
    add({"Find, hit, in " + where, items}, side, [=] {
        return [=, &standing = tree(), &sought = rounds()] {
            return find_some(standing, sought, keys);
        };
    });
}
} // namespace

void bench::add_sides()
{
    for (const size_t count : {1000u, 100000u, 1000000u})
        add_trees<uint32_t>(count, grouped(count) + " nodes");
    add_trees<const char *>(100000, grouped(100000) + " nodes with texts");
    for (const size_t count : {10000u, 100000u, 1000000u, 10000000u}) {
        add_growth(count, "tessel", count);
        add_growth(count, std::string("itself with ") + grouped(smallest), smallest);
    }
}

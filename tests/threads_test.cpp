#include "tessel.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

namespace
{

struct number_node {
    bintree_node head;
    int32_t number;
};

int32_t compare_number(const bintree_node *node, const void *key)
{
    return reinterpret_cast<const number_node *>(node)->number - *static_cast<const int32_t *>(key);
}

// Scans numbers from a stream of its own into a tree and a list of its own. Gives their sum, or -1.
int32_t sum_numbers(std::string text)
{
    io_memory memory = {static_cast<int32_t>(text.size()), 0, text.data()};
    io_stream stream = {memRead, memWrite, memSeek, reinterpret_cast<intptr_t>(&memory),
                        nullptr, 0};
    const io_source source = {&stream, ioLockBuffer, ioUnlockBuffer};
    io_text record = {};
    bintree_node *root = nullptr;
    list_node *list = nullptr;
    bintree_path path = {nullptr, -1, BINTREE_GROW | BINTREE_BALANCED, 0, 0};
    int32_t sum = 0;
    char item[16];
    while (iotextRead(&source, " ", item, sizeof item, 0, &record) >= 0 && record.count > 0) {
        const int32_t number = static_cast<int32_t>(x_conv_x(x_value(item, 10)));
        bintree_node *node;
        if (bintreeCreate(&node, &root, &number, compare_number, &path, sizeof(number_node), 0) ==
            0)
            reinterpret_cast<number_node *>(node)->number = number;
        sum = listPush(&list, sizeof(list_node)) ? sum + number : -1;
    }
    if (bintreeCount(root) != listCount(list))
        sum = -1;
    bintreeClear(&root);
    memFree(path.steps);
    listClear(&list);
    ioFreeBuffer(&stream);
    return sum;
}

// Different records share nothing, and one tree may be searched by all. A sanitizer looks on.
TEST(Threads, WorkSideBySide)
{
    constexpr int32_t numbers = 2000;
    std::string text;
    std::vector<number_node> nodes(numbers);
    bintree_node *shared = nullptr;
    for (int32_t i = 0; i < numbers; i++) {
        text += std::to_string(i * 7 % numbers) + " ";
        nodes[static_cast<size_t>(i)].number = i;
        ASSERT_EQ(bintreeAddExt(&shared, &nodes[static_cast<size_t>(i)].head, &i, compare_number,
                                BINTREE_BALANCED),
                  BINTREE_DONE);
    }
    int32_t sums[4] = {};
    int32_t found[4] = {};
    std::vector<std::thread> threads;
    for (size_t t = 0; t < 4; t++)
        threads.emplace_back([&, t] {
            sums[t] = sum_numbers(text);
            for (int32_t i = 0; i < numbers; i++)
                found[t] += bintreeSearch(shared, &i, compare_number) != nullptr;
        });
    for (std::thread &thread : threads)
        thread.join();
    for (size_t t = 0; t < 4; t++) {
        EXPECT_EQ(sums[t], numbers * (numbers - 1) / 2);
        EXPECT_EQ(found[t], numbers);
    }
}

} // namespace

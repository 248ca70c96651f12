#include "tessel.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace
{

constexpr int32_t numbers = 2000;

struct number_node {
    bintree_node head;
    int32_t number;
};

int32_t compare_number(const bintree_node *node, const void *key)
{
    return reinterpret_cast<const number_node *>(node)->number - *static_cast<const int32_t *>(key);
}

// Scans numbers from a stream of its own into a tree of its own. Gives how many that has.
int32_t collect_numbers(std::string text)
{
    io_memory memory = {static_cast<int32_t>(text.size()), 0, text.data()};
    io_stream stream = {memRead, memWrite, memSeek, reinterpret_cast<intptr_t>(&memory),
                        nullptr, 0};
    const io_source source = {&stream, ioLockBuffer, ioUnlockBuffer};
    io_text record = {};
    bintree_node *root = nullptr, *node;
    char item[16];
    while (iotextRead(&source, " ", item, sizeof item, 0, &record) >= 0 && record.count > 0) {
        const int32_t number = static_cast<int32_t>(x_conv_x(x_value(item, 10)));
        if (bintreeCreateExt(&node, &root, &number, compare_number, sizeof(number_node),
                             BINTREE_BALANCED) == BINTREE_DONE)
            reinterpret_cast<number_node *>(node)->number = number;
    }
    const int32_t count = bintreeCount(root);
    bintreeClear(&root);
    ioFreeBuffer(&stream);
    return count;
}

// Different records share nothing, and one tree may be searched by all. A sanitizer looks on.
TEST(Threads, WorkSideBySide)
{
    std::string text;
    std::vector<number_node> nodes(numbers);
    bintree_node *shared = nullptr;
    for (int32_t i = 0; i < numbers; i++) {
        text += std::to_string(i * 7 % numbers) + " ";
        number_node &node = nodes[static_cast<size_t>(i)];
        node.number = i;
        ASSERT_EQ(bintreeAddExt(&shared, &node.head, &i, compare_number, BINTREE_BALANCED), 0);
    }
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; t++)
        threads.emplace_back([&] {
            EXPECT_EQ(collect_numbers(text), numbers);
            for (int32_t i = 0; i < numbers; i++)
                EXPECT_TRUE(bintreeSearch(shared, &i, compare_number));
        });
    for (std::thread &thread : threads)
        thread.join();
}

} // namespace

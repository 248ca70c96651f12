// Counts the items of commented text files and prints the most frequent ones. The items are kept in
// a balanced tree whose nodes hold their text.
#include "text_file.h"

#include <stddef.h>
#include <stdio.h>
#include <string.h>

namespace
{
enum { exit_ok = 0, exit_failed = 1 };

constexpr size_t most_shown = 20;

// A node of the tree: the head first, then what belongs to the item. The text goes on behind the
// record, in the same block.
struct item_node {
    bintree_node head;
    uint32_t times;
    char text[1];
};

int32_t compare_item(const bintree_node *node, const void *key)
{
    return strcmp(reinterpret_cast<const item_node *>(node)->text, static_cast<const char *>(key));
}

// The tree, and one path that serves all searches.
struct item_tree {
    bintree_node *root;
    bintree_path path;
};

bool count_item(item_tree &tree, const char *text, int32_t length)
{
    const uintptr_t size = offsetof(item_node, text) + static_cast<uintptr_t>(length) + 1;
    bintree_node *found;
    const int32_t result =
        bintreeCreate(&found, &tree.root, text, compare_item, &tree.path, size, 0);
    if (result < 0)
        return false;
    item_node *const node = reinterpret_cast<item_node *>(found);
    if (result == BINTREE_DONE) {
        // A new node stands in the tree already; the next search needs its key.
        node->times = 0;
        memcpy(node->text, text, static_cast<size_t>(length) + 1);
    }
    node->times++;
    return true;
}

bool count_file(item_tree &tree, text_file &file)
{
    char item[4096];
    for (;;) {
        const int32_t result =
            iotextRead(&file.source, nullptr, item, sizeof item, IOTEXT_CUT, &file.text);
        if (result < 0) {
            const bool comment = result == IOTEXT_COMMENT_FAULT;
            fprintf(stderr, "wordcount: %s:%d: %s\n", file.path,
                    static_cast<int>(comment ? file.text.error_line : file.text.line),
                    text_failure(result));
            return false;
        }
        if (file.text.count > 0 && !count_item(tree, item, static_cast<int32_t>(strlen(item)))) {
            fprintf(stderr, "wordcount: out of memory\n");
            return false;
        }
        if (result == IOTEXT_END)
            return true;
    }
}

// The most frequent items, the first of them first.
struct ranking {
    const item_node *items[most_shown];
    size_t count;
    uint64_t different;
    uint64_t all;
};

int32_t rank_item(bintree_node *node, void *context)
{
    const item_node *const item = reinterpret_cast<const item_node *>(node);
    ranking &ranks = *static_cast<ranking *>(context);
    ranks.different++;
    ranks.all += item->times;
    size_t place = ranks.count < most_shown ? ranks.count++ : most_shown;
    for (; place > 0 && ranks.items[place - 1]->times < item->times; place--) {
        if (place < most_shown)
            ranks.items[place] = ranks.items[place - 1];
    }
    if (place < most_shown)
        ranks.items[place] = item;
    return 0;
}

bool print_ranking(const item_tree &tree)
{
    ranking ranks = {};
    if (bintreeTraverse(tree.root, rank_item, &ranks, BINTREE_IN_ORDER) != 0) {
        fprintf(stderr, "wordcount: out of memory\n");
        return false;
    }
    constexpr uint64_t widest_bar = 40;
    for (size_t i = 0; i < ranks.count; i++) {
        const uint64_t bar = (ranks.items[i]->times * widest_bar + ranks.items[0]->times - 1) /
                             ranks.items[0]->times;
        printf("%7lu  %-24.24s ", static_cast<unsigned long>(ranks.items[i]->times),
               ranks.items[i]->text);
        for (uint64_t j = 0; j < bar; j++)
            putchar('=');
        putchar('\n');
    }
    printf("%llu items, %llu different\n", static_cast<unsigned long long>(ranks.all),
           static_cast<unsigned long long>(ranks.different));
    return true;
}
} // namespace

int main(int argc, char **argv)
{
    const char *standard[] = {TESSEL_EXAMPLE_DATA "/sample.conf"};
    const char *const *paths = argc > 1 ? argv + 1 : standard;
    const int files = argc > 1 ? argc - 1 : 1;

    item_tree tree = {};
    tree.path.capacity = -1;
    tree.path.flags = BINTREE_GROW | BINTREE_BALANCED;
    bool good = true;
    for (int i = 0; i < files && good; i++) {
        text_file file;
        good = open_text_file(file, paths[i]);
        if (!good) {
            fprintf(stderr, "wordcount: %s: cannot be opened\n", paths[i]);
            break;
        }
        good = count_file(tree, file);
        close_file(file.stream);
    }
    good = good && print_ranking(tree);
    bintreeClear(&tree.root);
    memFree(tree.path.steps);
    return good ? exit_ok : exit_failed;
}

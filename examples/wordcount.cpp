// Counts the items of commented text files and prints the most frequent ones. A directory stands
// for all text files in it and below. The items are kept in a balanced tree whose nodes hold their
// text.
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

enum count_result { count_good, count_broken, count_no_memory };

// Counts the items of an open file, and says so if it cannot be scanned to its end.
count_result count_items(item_tree &tree, text_file &file)
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
            return count_broken;
        }
        if (file.text.count > 0 && !count_item(tree, item, static_cast<int32_t>(strlen(item))))
            return count_no_memory;
        if (result == IOTEXT_END)
            return count_good;
    }
}

count_result count_file(item_tree &tree, const char *path)
{
    text_file file;
    if (!open_text_file(file, path)) {
        fprintf(stderr, "wordcount: %s: cannot be opened\n", path);
        return count_broken;
    }
    const count_result result = count_items(tree, file);
    close_file(file.stream);
    return result;
}

// Whether the start of a file, as much of it as the buffer holds, looks like text.
bool is_text(text_file &file)
{
    int32_t there = 0;
    const void *const view =
        ioLockBuffer(&file.stream, reinterpret_cast<intptr_t>(&there), IO_LOCK_THERE);
    if (!view)
        return false;
    const bool text = !memchr(view, '\0', static_cast<size_t>(there));
    ioUnlockBuffer(&file.stream, view);
    return text;
}

// A walk over the files below a directory. Its record comes first.
struct file_walk {
    file_trace trace;
    item_tree *tree;
    unsigned long scanned;
    unsigned long broken;
    unsigned long others;
};

int32_t count_found(const char *path, file_trace *record)
{
    file_walk &walk = *reinterpret_cast<file_walk *>(record);
    text_file file;
    std::error_code ignored;
    // Reading from a pipe or a device might never end.
    if (!std::filesystem::is_regular_file(read_path(path), ignored) ||
        !open_text_file(file, path)) {
        walk.others++;
        return FILE_TRACE_GO_ON;
    }
    // In files of a system, what bounds block comments is part of patterns, as in /dir/*.
    file.text.block_open_length = 0;
    file.text.block_close_length = 0;
    count_result result = count_good;
    if (is_text(file)) {
        result = count_items(*walk.tree, file);
        walk.scanned++;
        walk.broken += result == count_broken;
    } else {
        walk.others++;
    }
    close_file(file.stream);
    return result == count_no_memory ? 0 : FILE_TRACE_GO_ON;
}

count_result count_directory(item_tree &tree, const char *path)
{
    file_walk walk = {};
    walk.tree = &tree;
    if (fileTrace(path, count_found, &walk.trace, FILE_TRACE_ENTER) != 1)
        return count_no_memory; // the directory itself could be opened
    printf("%s: %lu text files, %lu of them not to their end; %lu others passed over\n", path,
           walk.scanned, walk.broken, walk.others);
    return count_good;
}

count_result count_path(item_tree &tree, const char *path)
{
    compat_dir *const directory = compat_opendir(path);
    compat_closedir(directory);
    return directory ? count_directory(tree, path) : count_file(tree, path);
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
    count_result result = count_good;
    for (int i = 0; i < files && result == count_good; i++)
        result = count_path(tree, paths[i]);
    if (result == count_no_memory)
        fprintf(stderr, "wordcount: out of memory\n");
    const bool good = result == count_good && print_ranking(tree);
    bintreeClear(&tree.root);
    memFree(tree.path.steps);
    return good ? exit_ok : exit_failed;
}

// Every operation with each of its allocations, or each of its calls of a back end, failing in turn.
#include "tessel.h"

#include "heap_watch.h"
#include "scripted_stream.h"
#include "temp_dir.h"

#ifndef _WIN32
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace
{

namespace fs = std::filesystem;

int32_t made(const void *block)
{
    return block != nullptr;
}

int32_t copy_file(const std::string &target, const std::string &source,
                  io_progress_proc progress = nullptr, void *context = nullptr)
{
    return fileCopy(target.c_str(), source.c_str(), -1, -1, 0, nullptr, 8, FILE_EXISTING, progress,
                    context);
}

const bintree_visit_proc pass = [](bintree_node *, void *) { return 0; };
const file_trace_proc go_on = [](const char *, file_trace *) { return 1; };

// Ways through a chain of children[1]: behind its end; to the node that has both children, which
// stands in front of the last one; and to that node's place for a smaller key.
const bintree_compare_proc to_end = [](const bintree_node *, const void *) { return -1; };
const bintree_compare_proc to_pair = [](const bintree_node *node, const void *) {
    return node->child[0] ? 0 : -1;
};
const bintree_compare_proc to_gap = [](const bintree_node *node, const void *) {
    return node->child[1]->child[1] ? -1 : 1;
};

// What operations work on. A search to the end of the chain takes one step more than the first
// growth of a path gives; a search for the pair does not, but its removal does.
struct world {
    static constexpr int32_t unset = 99;
    const temp_dir &dir;
    bintree_node none = {}, *tree = nullptr, *chain = nullptr, *node = nullptr, *found = &none;
    list_node *list = nullptr;
    list_dnode *ring = nullptr;
    bintree_path path = {nullptr, -1, BINTREE_GROW, unset, unset};
    scripted_stream in{{'\'', 'b', '\'', 5, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i'}}, out;
    io_source source = {&in, ioLockBuffer, ioUnlockBuffer};
    char *text = strCopy(nullptr, "abc", 0), room[8] = "";
    void *block = nullptr, *body = nullptr, *table = nullptr;
    compat_dir *opened = nullptr;
    int32_t extra;

    explicit world(const temp_dir &directory) : dir(directory)
    {
        for (int i = 0; i < 4; i++)
            bintreeCreateExt(&node, &tree, nullptr, to_end, sizeof *node, BINTREE_BALANCED);
        for (int i = 0; i < 33; i++)
            bintreeCreateExt(&node, &chain, nullptr, to_end, sizeof *node, BINTREE_ZERO);
        bintreeCreateExt(&node, &chain, nullptr, to_gap, sizeof *node, BINTREE_ZERO);
        node = static_cast<bintree_node *>(memAlloc(sizeof *node));
        ioAllocBuffer(&out, 2);
    }
    ~world()
    {
        for (void *const own : {static_cast<void *>(text), static_cast<void *>(node), block,
                                static_cast<void *>(path.steps)})
            memFree(own);
        memFreeExtra(body, 8);
        memFree2DExt(table, 3);
        compat_closedir(opened);
        memReset(&in.buffer);
        memReset(&out.buffer);
        bintreeClear(&tree);
        bintreeClear(&chain);
        listClear(&list);
        listCNClear(&ring);
        EXPECT_EQ(heap.held, 0);
    }
    int32_t replace(void *grown)
    {
        text = grown ? static_cast<char *>(grown) : text;
        return made(grown);
    }
    // Nodes that are linked are the trees', others the caller's.
    int32_t add(int32_t result)
    {
        node = result == BINTREE_DONE ? nullptr : node;
        return result;
    }
    int32_t cut(int32_t result)
    {
        block = result == BINTREE_DONE ? found : nullptr;
        return result;
    }
    // The result, '=' if it comes with a node, and behind '@' what was written to the path.
    std::string attempt(int32_t (*operation)(world &))
    {
        extra = 10;
        std::string result = std::to_string(operation(*this));
        result += found == &none ? "" : "=";
        const std::string end = std::to_string(path.depth) + ',' + std::to_string(path.pivot);
        return path.depth == unset && path.pivot == unset ? result : result + '@' + end;
    }
    std::string look()
    {
        EXPECT_EQ(bintreeCheckBalance(tree, pass, nullptr), 0);
        EXPECT_TRUE(!ring || (ring->next->prev == ring && ring->prev->next == ring));
        std::string all = std::string(text) + room + std::string(out.data.begin(), out.data.end());
        for (const int32_t number :
             {bintreeCount(tree), bintreeCount(chain), bintreeGetHeight(chain), listCount(list),
              listCNCount(ring), in.buffer ? in.buffer->size : 0, out.buffer->size,
              heap.held - made(path.steps)})
            (all += ' ') += std::to_string(number);
        return all;
    }
};

using W = world &;

// The result without a failure, and those when the first, the second ... allocation fails; then,
// where they are others, those when all fail from there on.
const struct {
    const char *results;
    int32_t (*run)(W);
} allocations[] = {
    {"1 | 0", [](W w) { return made(w.block = memAlloc(9)); }},
    {"1 | 0", [](W w) { return made(w.block = memCAlloc(9)); }},
    {"1 | 0", [](W w) { return made(w.body = memAllocExtra(9, 8)); }},
    {"1 | 0", [](W w) { return w.replace(memResize(w.text, 99)); }},
    {"1 | 0", [](W w) { return made(w.block = memAlloc2D(3, 4, nullptr, nullptr, 0)); }},
    {"1 | 0", [](W w) { return made(w.block = memAllocRect(3, 4)); }},
    {"1 | 0 0 0 0", [](W w) { return made(w.table = memAlloc2DExt(3, 4, 0, 0, 0)); }},
    {"1 | 0", [](W w) { return made(w.block = strCopy(nullptr, "ab", 3)); }},
    {"1 | 0", [](W w) { return made(w.block = strUnion(nullptr, "ab", "c", 3)); }},
    {"15 | -15",
     [](W w) { return w.replace(strAppend(w.text, "d", 4, &w.extra)) ? w.extra : -w.extra; }},
    {"1 | 0", [](W w) { return made(listPush(&w.list, sizeof *w.list)); }},
    {"1 | 0", [](W w) { return made(listCreate(&w.list, w.list, sizeof *w.list)); }},
    {"1 | 0", [](W w) { return made(listDNCreate(&w.ring, w.ring, sizeof *w.ring, LIST_RING)); }},

    {"3@32,0 | -4 -4",
     [](W w) { return bintreeIterate(&w.found, w.chain, nullptr, to_end, &w.path); }},
    {"0=@32,0 | -4 -4 -3@32,0",
     [](W w) { return bintreeCreate(&w.found, &w.chain, 0, to_end, &w.path, sizeof *w.node, 0); }},
    {"0= | -4 -4 -3",
     [](W w) { return bintreeCreateExt(&w.found, &w.chain, 0, to_end, sizeof *w.node, 0); }},
    {"0@32,0 | -4 -4", [](W w) { return w.add(bintreeAdd(&w.chain, w.node, 0, to_end, &w.path)); }},
    {"0 | -4 -4", [](W w) { return w.add(bintreeAddExt(&w.chain, w.node, 0, to_end, 0)); }},
    {"0=@32,0 | -4 -4=@31,0",
     [](W w) { return w.cut(bintreeCut(&w.found, &w.chain, 0, to_pair, &w.path)); }},
    {"0= | -4 -4=", [](W w) { return w.cut(bintreeCutExt(&w.found, &w.chain, 0, to_pair, 0)); }},
    {"0@32,0 | -4 -4@31,0", [](W w) { return bintreeRemove(&w.chain, nullptr, to_pair, &w.path); }},
    {"0 | -4 -4", [](W w) { return bintreeRemoveExt(&w.chain, nullptr, to_pair, 0); }},
    {"0 | -4 -4", [](W w) { return bintreeTraverse(w.tree, pass, nullptr, BINTREE_IN_ORDER); }},
    {"4 | -1 -1 -1", [](W w) { return bintreeGetHeight(w.tree); }},
    {"4 | 1 2", [](W w) { return bintreeCount(w.tree); }},
    {"1 | 0 0", [](W w) { return made(bintreeFindInt4(w.tree, 0, 2 * sizeof(void *))); }},
    {"1 | 0 0", [](W w) { return made(bintreeFindStr(w.tree, "", 2 * sizeof(void *), 0)); }},
    {"0 | -1 -1 1 1 1 1 | -1 -1 2 2 2 1",
     [](W w) { return bintreeCheckBalance(w.tree, pass, nullptr); }},

    {"1 | 0", [](W w) { return ioAllocBuffer(&w.in, 2); }},
    {"1 | 0", [](W w) { return made(ioLockBuffer(&w.in, 4, IO_LOCK_EXACTLY)); }},
    {"1 | 0", [](W w) { return made(ioLockBuffer(&w.out, 9, IO_LOCK_WRITE | IO_LOCK_EXACTLY)); }},
    {"1 | 0",
     [](W w) { return ioSeek(&w.in, 3, 0) / 3 * made(w.block = ioReadString(&w.in, 0, 0, 1)); }},
    {"0 | -3", [](W w) { return ioTransfer(&w.out, &w.in, 0, nullptr, 9, nullptr, nullptr); }},
    {"1 | -1", [](W w) { return iotextRead(&w.source, "b", w.room, 8, 0, nullptr); }},
    {"1 | -1",
     [](W w) { return iotextReadString(&w.source, w.room, 8, '\'', '\'', 0, 0, nullptr); }},
    {"0 | -3", [](W w) { return copy_file(w.dir.at("copy"), w.dir.at("file")); }},
    {"1 | 0 0", [](W w) { return made(w.opened = compat_opendir(w.dir.at("a").c_str())); }},
    // A directory that cannot be opened is taken for a file.
    {"1 | 0 0 0 1 1 0 1 1 0",
     [](W w) { return fileTrace(w.dir.at("a").c_str(), go_on, nullptr, FILE_TRACE_ENTER); }},
};

// A failure has changed nothing, and the operation succeeds when it is tried again.
TEST(Faults, OfEveryAllocation)
{
    temp_dir dir;
    fs::create_directories(dir.path / "a/b/c");
    for (const char *const file : {"file", "a/b/c/f"})
        write_file(dir.at(file), "text");
    const intptr_t descriptor = free_descriptor(dir);
    for (const auto &row : allocations) {
        SCOPED_TRACE(testing::Message() << "row " << &row - allocations);
        std::string good, well, results[2];
        for (const bool once : {true, false})
            for (int spared = -1;; spared++) {
                heap = {};
                world w(dir);
                const std::string before = w.look();
                heap = {spared >= 0, spared, heap.held, 0, once};
                std::string result = w.attempt(row.run);
                heap.fails = false;
                if (spared < 0) {
                    good = result;
                    well = w.look();
                    continue;
                }
                if (heap.spared >= 0)
                    break;
                (results[once] += ' ') += result;
                EXPECT_EQ(w.look(), before) << "allocation " << spared;
                EXPECT_EQ(w.attempt(row.run), good);
                EXPECT_EQ(w.look(), well);
            }
        const std::string others = results[0] == results[1] ? "" : " |" + results[0];
        EXPECT_EQ(good + " |" + results[1] + others, row.results);
    }
    // More than a buffer can hold, where a word can say so.
    if constexpr (constexpr intptr_t much = INTPTR_MAX / 4; much > INT32_MAX) {
        scripted_stream in;
        EXPECT_FALSE(ioLockBuffer(&in, much, IO_LOCK_EXACTLY));
    }
    EXPECT_EQ(free_descriptor(dir), descriptor);
}

// Two streams that have moved by one byte and by two; where they have buffers, three bytes are
// unread and two are pending.
struct bench {
    scripted_stream in, out;
    io_source source = {&in, ioLockBuffer, ioUnlockBuffer};
    io_text text = {0, 1, 2, 2, "#", "/*", "*/", nullptr, 0, 0, 0, 0, 0};
    char room[16];
    void *rows[2] = {room, room + 4}, *block = nullptr;
    std::string calls, output, well;

    // The result of an operation. Behind '<' and '>' is where the streams have got to, if they have.
    std::string attempt(int32_t (*operation)(bench &))
    {
        strcpy(room, "aabbccddeeffggh");
        std::string result = std::to_string(operation(*this));
        calls = in.log;
        in.play("");
        for (scripted_stream *const s : {&in, &out})
            if (const int32_t at = ioSeek(s, 0, 1); at != (s == &in ? 1 : 2))
                (result += s->name) += std::to_string(at);
        return result;
    }
    // The same on fresh streams, with a call behind those of `before` that fails.
    std::string run(int32_t (*operation)(bench &), const std::string &data, bool buffered,
                    const std::string &before = "", int32_t fault = INT32_MAX)
    {
        char pending[] = "12";
        heap = {};
        for (scripted_stream *const s : {&in, &out}) {
            s->data.assign(data.begin(), data.end());
            s->back = 0;
            s->name = s == &in ? '<' : '>';
            EXPECT_TRUE(!buffered || ioAllocBuffer(s, 4));
        }
        out.leader = &in;
        out.journal = &in.log;
        EXPECT_TRUE(ioRead(&in, pending + 2, 1, 0) && ioWrite(&out, pending, 2, 0));
        in.play(before);
        in.script.push_back(fault);
        const std::string result = attempt(operation);
        for (const scripted_stream *const s : {&in, &out})
            if (s->buffer) {
                const auto &[size, count, position, mode] = *s->buffer;
                const int32_t end = mode == IO_MODE_READ ? count : size;
                EXPECT_TRUE(0 <= position && position <= end && end <= size && 0 <= count);
                EXPECT_TRUE(mode == IO_MODE_READ || count == 0);
            }
        const bool lost = buffered && !out.buffer;
        // What has moved nothing succeeds when it is tried again.
        const bool again = fault != INT32_MAX && result.find_first_of("<>") == std::string::npos;
        EXPECT_EQ(again ? attempt(operation) : well, well);
        // Reading goes on where the stream stands, and nothing that is pending is lost.
        output.assign(room, sizeof room);
        auto at = static_cast<size_t>(ioSeek(&in, 0, 1));
        for (unsigned char c; ioRead(&in, &c, 1, 0) == 1; at++)
            EXPECT_EQ(c, in.data.at(at));
        EXPECT_TRUE(at >= in.data.size() && ioSyncBuffer(&in) && ioSyncBuffer(&out));
        output.append(in.data.begin(), in.data.end()).append(out.data.begin(), out.data.end());
        EXPECT_TRUE(lost || output.find("12", sizeof room) != std::string::npos);
        memReset(&block);
        memReset(&in.buffer);
        memReset(&out.buffer);
        EXPECT_EQ(heap.held, 0);
        return result;
    }
};

using B = bench &;

int32_t probe(io_stream *stream, const void *, void *, int32_t *order)
{
    char c;
    const int32_t moved = ioRead(stream, &c, 1, 0);
    *order = c - 'i';
    return moved;
}

const uint32_t other_order = 2 | (memByteOrder() ^ MEM_ORDER_OTHER);

int32_t lock(io_stream &stream, uint32_t flags, int32_t size)
{
    const intptr_t number = flags & IO_LOCK_EXACTLY ? size : reinterpret_cast<intptr_t>(&size);
    return made(ioLockBuffer(&stream, number, flags));
}

int32_t transfer(B b, void *area, int32_t size)
{
    return ioTransfer(&b.out, &b.in, 7, area, size, nullptr, nullptr);
}

int32_t quoted(B b)
{
    return iotextReadString(&b.source, b.room, 9, '\'', '\'', 0, 0, &b.text);
}

// The result without a failure, and those when each call of a back end fails, is short by one, or
// gives or takes nothing.
const struct {
    const char *results;
    int32_t (*run)(B);
    const char *data = ".abcdefghij";
    bool buffered = true;
} operations[] = {
    {"3<3 | -1<4", [](B b) { return ioSeek(&b.in, 2, 1); }},
    {"11>11 | -1 -1>3 -1 | -1", [](B b) { return ioSeek(&b.out, 0, 2); }},
    {"1<6 | 0<4", [](B b) { return ioSkip(&b.in, 5); }},
    {"1<6 | 0<4 0<5 0<4",
     [](B b) {
         const io_seek_proc seek = std::exchange(b.in.seek, nullptr);
         const int32_t result = ioSkip(&b.in, 5);
         b.in.seek = seek;
         return result;
     }},
    {"1 | 0", [](B b) { return ioSyncBuffer(&b.in); }},
    {"1 | 0 0>3 0", [](B b) { return ioSyncBuffer(&b.out); }},
    {"1 | 0 0>3 0", [](B b) { return ioFlushBuffer(&b.out); }},
    {"1 | 0>0 0>1 0>0", [](B b) { return ioFreeBuffer(&b.out); }},
    {"1 | 0 0 0", [](B b) { return lock(b.in, IO_LOCK_EXACTLY, 6); }},
    {"1 | 0 0 0", [](B b) { return lock(b.in, IO_LOCK_AT_LEAST, 4); }},
    {"1 | 0", [](B b) { return lock(b.in, IO_LOCK_WRITE, 0); }},
    {"1 | 0 0>3 0 | 0 1 1", [](B b) { return lock(b.out, IO_LOCK_READ, 0); }},
    {"1 | 0 0>3 0", [](B b) { return lock(b.out, IO_LOCK_WRITE | IO_LOCK_EXACTLY, 3); }},
    {"4<9 | -1<4 3<8 1<4", [](B b) { return ioRead(&b.in, b.room, 4, other_order); }},
    {"3>8 | -1 -1>3 -1 | -1 2>7 0", [](B b) { return ioWrite(&b.out, b.room, 3, other_order); }},
    {"1>6 | 0 0>3 0 | 0 0>5 0", [](B b) { return ioWriteInt(&b.out, 7, 4); }},
    {"1<7 | 0<4 0<6 0<4", [](B b) { return made(ioReadString(&b.in, b.room, 9, 1)); },
     ".\5abcdefg"},
    {"1<7 | 0<4 0<6 0<4", [](B b) { return made(b.block = ioReadString(&b.in, nullptr, 0, 1)); },
     ".\5abcdefg"},
    {"1>6 | 0>3 0>5 0>3 | 0>3 0>5 0>3", [](B b) { return ioWriteString(&b.out, "abc", 0, 1); }},
    {"0<8>9 | -1<4 -1<4>3 -1<4 | -1<4 -1<4>4 -1<4 | -1<4>5 -1025<7>8 -1025<4>5",
     [](B b) { return transfer(b, nullptr, 4); }},
    {"0<8>9 | -1 -1025<5>6 -1025 | -1<6 -1<6>6 -1<6 | -1<6>7 -1025<7>8 -1025<6>7 | -1<8>7 -1<8>8 "
     "-1<8>7",
     [](B b) { return transfer(b, nullptr, 5); }, ".abcdefghij", false},
    {"0<8>9 | -1 -1025<5>6 -1025 | -1<6 -1<6>6 -1<6 | -1<6>7 -1025<7>8 -1025<6>7 | -1<8>7 -1<8>8 "
     "-1<8>7",
     [](B b) { return transfer(b, b.room, 5); }, ".abcdefghij", false},
    {"1<9 | 0<4 0<4 0<4 | 0<5 0<8 0<5",
     [](B b) { return ioRead2D(&b.in, b.rows, 2, 4, nullptr, nullptr, 0, 1); }},
    {"1>10 | 0 0>3 0 | 0 0>5 0",
     [](B b) { return ioWrite2D(&b.out, b.rows, 2, 4, nullptr, nullptr, 0, 1); }},
    {"1<10 | 0<4 | 0<5 1<10 1<10 | 0<9 | 0<8 1<10 1<10 | 0<9",
     [](B b) { return ioBinSearch(&b.in, 10, 1, nullptr, probe, nullptr, nullptr, 0, nullptr); }},
    {"2<12 | -1<4 2<12 -1025<4 | -1<8 2<12 0<8 | -1<12 2<12 2<12",
     [](B b) { return iotextRead(&b.source, nullptr, b.room, 9, 0, &b.text); }, ". /*c*/ab#d\ne"},
    {"1<10 | -1<3 1<10 -1<3 | -1<6 1<10 -1<6",
     [](B b) { return iotextSleep(&b.source, ";", &b.text); }, ". a/*;*/b;"},
    {"1<8 | -1<4 1<8 -1025<4", [](B b) { return iotextWait(&b.source, ";", &b.text); }, ". /*;*/;"},
    {"1<6 | -1<4 1<6 0<4", [](B b) { return iotextObserve(&b.source, "abcde", &b.text); }},
    {"1<10 | -1<4 1<10 1<10 | -1<7 1<10 -1<7", quoted, ".'a\\tb\\\nc'd"},
    {"1<10 | -1 1<10 1<10", quoted, ".'a\\tb\\\nc'd", false},
    {"3<9 | 0<4 3<9 3<9 | 0<8 3<9 3<9", [](B b) { return iotextFormat(&b.in, nullptr); },
     ".abcdef\r\n"},
    {"3<4 | 0 8 8 | 0<2 8<2 8<2 | 0<3 2<3 2<3", [](B b) { return iotextFormat(&b.in, nullptr); },
     ".a\r\n", false},
    {"8<4>5 | 0<4>4 0<4>7 0<4>4 | 0<4>5 0<4>5 | 0<4>5 0<4>5",
     [](B b) { return iotextConvert(&b.out, &b.in, 3); }, ".abc"},
    // From the one that is being written to the one that is being read.
    {"1<4>4 | 0 0>3 0 | 0 1<4>4 1<4>4 | 0>3 | 0<4>4 0<4>4 | 0<4>4 0<4>4",
     [](B b) { return iotextConvert(&b.in, &b.out, 3); }, ".ab\n"},
    {"1<2>4 | 0 8 8 | 0<2 0<2 0<2 | 0<2>3 0<2>3 0<2>3 | 0<2>4 0<2>4",
     [](B b) { return iotextConvert(&b.out, &b.in, 3); }, ".\n", false},
    {"1>6 | 0>4 0>7 0>4", [](B b) { return iotextWrite(&b.out, "a\nb", 3); }},
    {"1>5 | 0 0>3 0 | 0 0>4 0", [](B b) { return iotextWriteString(&b.out, "abc"); }},
};

TEST(Faults, OfEveryCallOfABackEnd)
{
    for (const auto &[expected, operation, data, buffered] : operations) {
        SCOPED_TRACE(expected);
        bench b;
        b.well = b.run(operation, data, buffered);
        const std::string calls = b.calls, output = b.output;
        std::string results = b.well;
        for (size_t at = 0; (at = calls.find("-> ", at)) != std::string::npos; at += 3) {
            const int32_t outcome = std::stoi(calls.substr(at + 3));
            const bool moves = calls[calls.find_last_of("<>", at - 2) + 1] == 's';
            results += " |";
            for (const int32_t fault : {-1, outcome - 1, 0}) {
                // Moves and the end of the data only fail.
                if (fault != IO_FAILED && (moves || outcome <= 0))
                    continue;
                const std::string result =
                    b.run(operation, data, buffered, calls.substr(0, at), fault);
                EXPECT_TRUE(result.find_first_of("<>") != std::string::npos || b.output == output);
                (results += ' ') += result;
            }
        }
        EXPECT_EQ(results, expected) << calls;
    }
}

#ifndef _WIN32
// Copies into a file that may not grow, or is gone, and what lies behind a closed door.
TEST(Faults, OfTheSystem)
{
    temp_dir dir;
    const intptr_t descriptor = free_descriptor(dir);
    const std::string source = dir.at("source"), target = dir.at("target"), text(20, 's');
    write_file(source, text);
    struct rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const struct rlimit low = {13, limit.rlim_max};
    const auto before = signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &low);
    for (int i = 0; i < 2; i++)
        EXPECT_EQ(copy_file(target, source), IO_FAILED);
    setrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, before);
    EXPECT_EQ(read_file(target), text.substr(0, 13));
    EXPECT_TRUE(copy_file(target, source) == IO_COPIED && read_file(target) == text);

    // What a full device does not take stays in the buffer, and the file open.
    io_stream full = {};
    full.write = fileWrite;
    ASSERT_EQ(fileOpen(&full, "/dev/full", FILE_WRITE | FILE_EXISTING), 1);
    EXPECT_TRUE(ioAllocBuffer(&full, 8) && ioWriteInt(&full, 7, 4));
    EXPECT_EQ(ioFlushBuffer(&full) + fileClose(&full), 0);
    EXPECT_EQ(full.buffer->position, 4);
    EXPECT_EQ(ioFreeBuffer(&full), 0);
    EXPECT_EQ(fileClose(&full), 1);

    fs::remove(target);
    const auto vanish = [](void *path, int32_t) { return 0 * unlink(static_cast<char *>(path)); };
    EXPECT_EQ(copy_file(target, source, vanish, const_cast<char *>(target.c_str())), IO_COPIED);
    EXPECT_FALSE(fs::exists(target));

    const std::string closed = dir.at("closed"), file = dir.at("closed/file");
    fs::create_directory(closed);
    fs::permissions(closed, fs::perms::none);
    const uid_t user = geteuid(), nobody = 65534;
    ASSERT_TRUE(user != 0 || (chmod(dir.path.c_str(), 0755) == 0 && seteuid(nobody) == 0));
    EXPECT_EQ(fileTrace(closed.c_str(), go_on, nullptr, 3), 1);
    EXPECT_EQ(copy_file("/dev/null", file), FILE_NO_SOURCE);
    EXPECT_EQ(copy_file(file, "/dev/null"), FILE_NO_TARGET);
    ASSERT_TRUE(user != 0 || seteuid(user) == 0);
    fs::permissions(closed, fs::perms::owner_all);
    EXPECT_EQ(free_descriptor(dir), descriptor);
}
#endif

} // namespace

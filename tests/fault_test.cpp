// Every operation with each of its allocations, or each of its calls of a back end, failing in turn.
#include "tessel.h"

#include "heap_watch.h"
#include "scripted_stream.h"
#include "temp_dir.h"

#include <set>

#ifndef _WIN32
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace
{

namespace fs = std::filesystem;

const bintree_compare_proc behind = [](const bintree_node *, const void *) { return int32_t{-1}; };
const bintree_compare_proc last = [](const bintree_node *node, const void *) {
    return node->child[1] ? -1 : 0;
};
const bintree_visit_proc pass = [](bintree_node *, void *) { return int32_t{0}; };
const file_trace_proc go_on = [](const char *, file_trace *) { return int32_t{1}; };

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

// One of the allocations of a long row of operations fails, or all from it on until the operation
// has ended. Then that operation has a result that is known, has changed nothing and succeeds when
// it is tried again. Gives whether there was such an allocation.
bool run_out_of_memory(const temp_dir &dir, int allocation, bool once)
{
    heap = {};
    bool met = false;
    int spared = allocation;
    list_node *list = nullptr;
    list_dnode *ring = nullptr;
    bintree_node *tree = nullptr, *chain = nullptr, *node;
    constexpr uint32_t kind = BINTREE_BALANCED;
    bintree_step step;
    bintree_path path = {&step, 0, kind | BINTREE_GROW | 0x100, 0, 0};
    scripted_stream in({'.', 5, 'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h', 'i'}), out;
    char *word = strCopy(nullptr, "abc", 0), *string;
    void *table;
    int32_t room = 10;

    const auto look = [&] {
        EXPECT_EQ(bintreeCheckBalance(tree, pass, nullptr), 0);
        EXPECT_TRUE(!ring || (ring->next->prev == ring && ring->prev->next == ring));
        std::string all = word + std::to_string(bintreeCount(chain));
        for (const int32_t number : {bintreeCount(tree), listCount(list), listCNCount(ring),
                                     in.buffer ? in.buffer->size : 0, made(out.buffer),
                                     heap.held - made(path.flags & 4 ? &path : 0)})
            (all += ' ') += std::to_string(number);
        return all;
    };
    const auto attempt = [&](int32_t good, const std::set<int32_t> &failures, auto operation) {
        const std::string before = look();
        heap = {!met, spared, heap.held, 0, once};
        int32_t result = operation();
        heap.fails = false;
        EXPECT_TRUE(met || heap.spared < spared) << "nothing is allocated";
        spared = heap.spared;
        if (!met && spared < 0) {
            met = true;
            EXPECT_TRUE(failures.count(result)) << result << " at allocation " << allocation;
            EXPECT_EQ(look(), before) << "at allocation " << allocation;
            result = operation();
        }
        EXPECT_EQ(result, good) << "behind allocation " << allocation;
    };

    attempt(1, {0}, [&] { return made(listCreate(&list, list, sizeof *list)); });
    for (int i = 0; i < 2; i++)
        attempt(1, {0}, [&] { return made(listDNCreate(&ring, ring, sizeof *ring, LIST_RING)); });
    for (int i = 0; i < 12; i++)
        attempt(0, {BINTREE_NO_ROOM, BINTREE_NO_MEMORY}, [&] {
            return i % 3 ? bintreeCreate(&node, &tree, nullptr, behind, &path, sizeof *node, 0)
                         : bintreeCreateExt(&node, &tree, nullptr, behind, sizeof *node, kind);
        });
    // Deep enough for a path that grows twice.
    for (int i = 0; i < 35; i++)
        bintreeCreateExt(&node, &chain, nullptr, behind, sizeof *node, 0);
    attempt(0, {BINTREE_NO_ROOM}, [&] { return bintreeRemoveExt(&chain, nullptr, last, 0); });
    attempt(0, {BINTREE_NO_ROOM}, [&] { return bintreeTraverse(tree, pass, nullptr, 2); });
    attempt(5, {BINTREE_FAILED}, [&] { return bintreeGetHeight(tree); });
    attempt(12, {1, 2, 3, 4}, [&] { return bintreeCount(tree); });
    attempt(1, {0}, [&] { return made(bintreeFindInt4(tree, 0, 2 * sizeof(void *))); });
    attempt(0, {-1, 0, 1, 2, 3}, [&] { return bintreeCheckBalance(tree->child[0], pass, 0); });

    attempt(1, {0}, [&] { return made(table = memAlloc2DExt(3, 4, nullptr, nullptr, 0)); });
    attempt(1, {0}, [&] { return made(string = strAppend(word, "d", 4, &room)); });
    word = std::exchange(string, nullptr);
    attempt(1, {0}, [&] { return ioAllocBuffer(&in, 2); });
    attempt(1, {0},
            [&] { return ioSeek(&in, 1, 0) * made(string = ioReadString(&in, nullptr, 0, 1)); });
    attempt(1, {0}, [&] { return made(ioLockBuffer(&in, 4, IO_LOCK_EXACTLY)); });
    // More than a buffer can hold, where a word can say so.
    if constexpr (constexpr intptr_t much = INTPTR_MAX / 4; much > INT32_MAX) {
        EXPECT_FALSE(ioLockBuffer(&in, much, IO_LOCK_EXACTLY));
    }
    attempt(1, {0}, [&] { return made(ioLockBuffer(&out, 9, IO_LOCK_WRITE | IO_LOCK_EXACTLY)); });
    attempt(0, {IO_NO_MEMORY},
            [&] { return ioTransfer(&out, &in, 0, nullptr, 900, nullptr, nullptr); });
    attempt(0, {IO_NO_MEMORY}, [&] { return copy_file(dir.at("copy"), dir.at("file")); });
    attempt(1, {0, 1}, [&] { return fileTrace(dir.at("a").c_str(), go_on, nullptr, 3); });

    memFree2DExt(table, 3);
    memFree(word);
    memFree(string);
    memFree(path.steps);
    memReset(&in.buffer);
    memReset(&out.buffer);
    bintreeClear(&tree);
    bintreeClear(&chain);
    listClear(&list);
    listCNClear(&ring);
    EXPECT_EQ(heap.held, 0) << "behind allocation " << allocation;
    return met;
}

TEST(Faults, OfEveryAllocation)
{
    temp_dir dir;
    fs::create_directories(dir.path / "a/b/c");
    for (const char *const file : {"file", "a/b/c/f"})
        write_file(dir.at(file), "text");
    const intptr_t descriptor = free_descriptor(dir);
    for (const bool once : {true, false})
        for (int n = 0; run_out_of_memory(dir, n, once); n++)
            ASSERT_FALSE(HasFailure());
    EXPECT_EQ(free_descriptor(dir), descriptor);
}

// Two streams, one with three unread bytes behind the first, and one with two pending bytes.
struct bench {
    scripted_stream in, out;
    io_source source = {&in, ioLockBuffer, ioUnlockBuffer};
    io_text text = {0, 1, 2, 2, "#", "/*", "*/", nullptr, 0, 0, 0, 0, 0};
    char room[16] = "aabbccddeeffggh";
    void *rows[2] = {room, room + 4};
    std::string calls;

    // The result of an operation, and where it leaves the streams that it moves.
    std::string run(int32_t (*operation)(bench &), const std::string &data,
                    const std::string &before = "", int32_t fault = INT32_MAX)
    {
        char pending[] = "12";
        for (scripted_stream *const s : {&in, &out}) {
            memReset(&s->buffer);
            s->data.assign(data.begin(), data.end());
            s->back = 0;
            s->name = s == &in ? '<' : '>';
        }
        out.leader = &in;
        out.journal = &in.log;
        EXPECT_TRUE(ioAllocBuffer(&in, 4) && ioRead(&in, pending + 2, 1, 0));
        EXPECT_TRUE(ioAllocBuffer(&out, 4) && ioWrite(&out, pending, 2, 0));
        in.play(before);
        in.script.push_back(fault);
        std::string result = std::to_string(operation(*this));
        calls = in.log;
        in.play("");
        for (scripted_stream *const s : {&in, &out}) {
            const auto &[size, count, position, mode] = *s->buffer;
            const int32_t end = mode == IO_MODE_READ ? count : size;
            EXPECT_TRUE(0 <= position && position <= end && end <= size && 0 <= count);
            EXPECT_TRUE(mode == IO_MODE_READ || count == 0);
            if (const int32_t at = ioSeek(s, 0, 1); at != (s == &in ? 1 : 2))
                (result += s->name) += std::to_string(at);
        }
        // Reading goes on where the stream stands, and nothing that is pending is lost.
        auto at = static_cast<size_t>(ioSeek(&in, 0, 1));
        for (unsigned char c; ioRead(&in, &c, 1, 0) == 1; at++)
            EXPECT_EQ(c, in.data.at(at));
        EXPECT_TRUE(at >= in.data.size() && ioSyncBuffer(&out));
        EXPECT_NE(std::string(out.data.begin(), out.data.end()).find("12"), std::string::npos);
        return result;
    }
};

using W = bench &;

int32_t probe(io_stream *stream, const void *, void *, int32_t *order)
{
    char c;
    const int32_t moved = ioRead(stream, &c, 1, 0);
    *order = c - 'i';
    return moved;
}

const uint32_t other_order = 2 | (memByteOrder() ^ MEM_ORDER_OTHER);

// The result without a failure, and those when each call of a back end fails, is short by one, or
// gives or takes nothing. Behind '<' and '>' is where the streams have got to.
const struct {
    const char *results;
    int32_t (*run)(W);
    const char *data = ".abcdefghij";
} operations[] = {
    {"4<9 | -1<4 3<8 1<4", [](W w) { return ioRead(&w.in, w.room, 4, other_order); }},
    {"3>8 | -1 -1>3 -1 | -1 2>7 0", [](W w) { return ioWrite(&w.out, w.room, 3, other_order); }},
    {"1>6 | 0 0>3 0 | 0 0>5 0", [](W w) { return ioWriteInt(&w.out, 7, 4); }},
    {"1<7 | 0<4 0<6 0<4", [](W w) { return made(ioReadString(&w.in, w.room, 9, 1)); },
     ".\5abcdefg"},
    {"1>6 | 0>3 0>5 0>3 | 0>3 0>5 0>3", [](W w) { return ioWriteString(&w.out, "abc", 0, 1); }},
    {"0<8>9 | -1<4 -1<4>3 -1<4 | -1<4 -1<4>4 -1<4 | -1<4>5 -1025<7>8 -1025<4>5",
     [](W w) { return ioTransfer(&w.out, &w.in, 7, nullptr, 4, nullptr, nullptr); }},
    {"1<9 | 0<4 0<4 0<4 | 0<5 0<8 0<5",
     [](W w) { return ioRead2D(&w.in, w.rows, 2, 4, nullptr, nullptr, 0, 1); }},
    {"1>10 | 0 0>3 0 | 0 0>5 0",
     [](W w) { return ioWrite2D(&w.out, w.rows, 2, 4, nullptr, nullptr, 0, 1); }},
    {"1<10 | 0<4 | 0<5 1<10 1<10 | 0<9 | 0<8 1<10 1<10 | 0<9",
     [](W w) { return ioBinSearch(&w.in, 10, 1, nullptr, probe, nullptr, nullptr, 0, nullptr); }},
    {"2<12 | -1<4 2<12 -1025<4 | -1<8 2<12 0<8 | -1<12 2<12 2<12",
     [](W w) { return iotextRead(&w.source, nullptr, w.room, 9, 0, &w.text); }, ". /*c*/ab#d\ne"},
    {"1<10 | 1<6 1<10 1<6 | -1025<6 1<10 -1025<6",
     [](W w) { return iotextSleep(&w.source, ";", &w.text); }, ". a/*;*/b;"},
    {"1<8 | -1<4 1<8 -1025<4", [](W w) { return iotextWait(&w.source, ";", &w.text); }, ". /*;*/;"},
    {"1<6 | -1<4 1<6 0<4", [](W w) { return iotextObserve(&w.source, "abcde", &w.text); }},
    {"1<10 | -1<4 1<10 1<10 | -1<7 1<10 -1<7",
     [](W w) { return iotextReadString(&w.source, w.room, 9, '\'', '\'', 0, 0, &w.text); },
     ".'a\\tb\\\nc'd"},
    {"3<9 | 0<4 3<9 3<9 | 0<8 3<9 3<9", [](W w) { return iotextFormat(&w.in, nullptr); },
     ".abcdef\r\n"},
    {"8<4>5 | 0<4>4 0<4>7 0<4>4 | 0<4>5 0<4>5 | 0<4>5 0<4>5",
     [](W w) { return iotextConvert(&w.out, &w.in, 3); }, ".abc"},
    {"1>6 | 0>4 0>7 0>4", [](W w) { return iotextWrite(&w.out, "a\nb", 3); }},
};

TEST(Faults, OfEveryCallOfABackEnd)
{
    for (const auto &[expected, operation, data] : operations) {
        bench b;
        const std::string well = b.run(operation, data), calls = b.calls;
        std::string results = well;
        for (size_t at = 0; (at = calls.find("-> ", at)) != std::string::npos; at += 3) {
            const int32_t outcome = std::stoi(calls.substr(at + 3));
            const bool moves = calls[calls.find_last_of("<>", at - 2) + 1] == 's';
            results += " |";
            for (const int32_t fault : {-1, outcome - 1, 0}) {
                // Moves and the end of the data only fail.
                if (fault == IO_FAILED || (!moves && outcome > 0))
                    (results += ' ') += b.run(operation, data, calls.substr(0, at), fault);
                EXPECT_EQ(b.run(operation, data), well);
            }
        }
        EXPECT_EQ(results, expected);
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

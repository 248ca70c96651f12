// Elements through a buffer of 64 KiB on a file, beside stdio without locks and file streams: times
// for one element. Then a copy from stream to stream.
#include "compare.h"
#include "work_files.h"

#include "tessel.h"

#include <array>
#include <cstring>
#include <string_view>

namespace
{
using namespace bench;

constexpr size_t file_size = 16 << 20;

// The file that is read, of bytes that look random, and the one that is written.
struct files : work_directory {
    std::string input = path / "input";
    std::string output = path / "output";

    files()
    {
        std::string text(file_size, '\0');
        uint32_t seed = 1;
        for (char &byte : text) {
            seed = seed * 1664525 + 1013904223;
            byte = static_cast<char>(seed >> 24);
        }
        write_file(input, text);
    }
};

const files &work()
{
    static const files made;
    return made;
}

uint64_t output_hash()
{
    return std::hash<std::string>()(read_file(work().output));
}

void swap_bytes(uint32_t *numbers, size_t count)
{
    for (size_t i = 0; i < count; i++)
        numbers[i] = __builtin_bswap32(numbers[i]);
}

// The sides. All give the number of whole elements, and may leave numbers turned that they wrote.
struct tessel_file : stream_file {
    explicit tessel_file(bool writing)
        : stream_file(writing ? work().output : work().input,
                      writing ? write_anew : uint32_t{FILE_READ})
    {
    }
    size_t read(void *to, size_t size)
    {
        return ioRead(&stream, to, 1, static_cast<uint32_t>(size)) == 1;
    }
    size_t write(void *from, size_t size)
    {
        return ioWrite(&stream, from, 1, static_cast<uint32_t>(size)) == 1;
    }
    size_t read_big_endian(uint32_t *numbers, size_t count)
    {
        return static_cast<size_t>(
            ioRead(&stream, numbers, static_cast<int32_t>(count), sizeof *numbers | MEM_ORDER_BIG));
    }
    size_t write_big_endian(uint32_t *numbers, size_t count)
    {
        return static_cast<size_t>(ioWrite(&stream, numbers, static_cast<int32_t>(count),
                                           sizeof *numbers | MEM_ORDER_BIG | MEM_NO_RESTORE));
    }
};

// What the others make of their reads and writes.
template <typename File>
struct with_swaps : File {
    using File::File;

    size_t read_big_endian(uint32_t *numbers, size_t count)
    {
        const size_t whole = File::read_all(numbers, sizeof *numbers, count);
        swap_bytes(numbers, whole);
        return whole;
    }
    size_t write_big_endian(uint32_t *numbers, size_t count)
    {
        swap_bytes(numbers, count);
        return File::write_all(numbers, sizeof *numbers, count);
    }
    size_t read(void *to, size_t size)
    {
        return File::read_all(to, size, 1);
    }
    size_t write(const void *from, size_t size)
    {
        return File::write_all(from, size, 1);
    }
};

struct unlocked_file : stdio_file {
    explicit unlocked_file(bool writing)
        : stdio_file(writing ? work().output : work().input, writing ? "wb" : "rb")
    {
    }
    size_t read_all(void *to, size_t size, size_t count)
    {
        return fread_unlocked(to, size, count, file);
    }
    size_t write_all(const void *from, size_t size, size_t count)
    {
        return fwrite_unlocked(from, size, count, file);
    }
};

struct standard_file {
    std::vector<char> buffer = std::vector<char>(buffer_size);
    std::fstream file;

    explicit standard_file(bool writing)
    {
        file.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        file.open(writing ? work().output : work().input,
                  std::ios::binary | (writing ? std::ios::out | std::ios::trunc : std::ios::in));
    }
    size_t read_all(void *to, size_t size, size_t count)
    {
        file.read(static_cast<char *>(to), static_cast<std::streamsize>(size * count));
        return static_cast<size_t>(file.gcount()) / size;
    }
    size_t write_all(const void *from, size_t size, size_t count)
    {
        file.write(static_cast<const char *>(from), static_cast<std::streamsize>(size * count));
        return file ? count : 0;
    }
};

// A number goes in front of an element, as far as it fits.
template <size_t size>
struct element {
    std::array<unsigned char, size> bytes = {};
    static constexpr size_t numbered = size < sizeof(uint32_t) ? size : sizeof(uint32_t);

    uint32_t number() const
    {
        uint32_t number = 0;
        std::memcpy(&number, bytes.data(), numbered);
        return number;
    }
    void set_number(uint32_t number)
    {
        std::memcpy(bytes.data(), &number, numbered);
    }
};

template <typename File, size_t size>
uint64_t read_elements()
{
    File file(false);
    element<size> next;
    uint64_t sum = 0;
    while (file.read(next.bytes.data(), size) == 1)
        sum += next.number();
    return sum;
}

template <typename File, size_t size>
void write_elements()
{
    File file(true);
    element<size> next;
    for (uint32_t i = 0; i < file_size / size; i++) {
        next.set_number(i);
        file.write(next.bytes.data(), size);
    }
}

constexpr size_t group = 1000;

template <typename File>
uint64_t read_numbers()
{
    File file(false);
    uint32_t numbers[group];
    uint64_t sum = 0;
    size_t count;
    do {
        count = file.read_big_endian(numbers, group);
        for (size_t i = 0; i < count; i++)
            sum += numbers[i];
    } while (count == group);
    return sum;
}

template <typename File>
void write_numbers()
{
    File file(true);
    uint32_t numbers[group];
    for (uint32_t done = 0; done < file_size / sizeof *numbers; done += group) {
        for (uint32_t i = 0; i < group; i++)
            numbers[i] = done + i;
        file.write_big_endian(numbers, group);
    }
}

// The names of a side, as a reader and as a writer.
struct side_names {
    std::string reader, writer;
};

void add_pair(const std::string &what, const side_names &side, size_t items, uint64_t read(),
              void write())
{
    add({"Read " + what, items}, side.reader, [=] {
        work();
        return read;
    });
    add({"Write " + what, items}, side.writer, [=] {
        return [=](stopwatch &watch) {
            work();
            watch.time(write);
            return output_hash();
        };
    });
}

template <typename File, size_t size>
void add_size(const std::string &what, const side_names &side)
{
    add_pair(what + ", file with a buffer of 64 KiB", side, file_size / size,
             read_elements<File, size>, write_elements<File, size>);
}

template <typename File>
void add_file(const side_names &side)
{
    add_size<File, 1>("1 byte", side);
    add_size<File, 4>("4 bytes", side);
    add_size<File, 100>("100 bytes", side);
    add_pair("a big-endian number of 4 bytes, 1,000 at a time", side, file_size / sizeof(uint32_t),
             read_numbers<File>, write_numbers<File>);
}

// Between two memory blocks; through the work area every byte is copied twice.
constexpr int32_t total = 64 << 20;
constexpr int32_t chunk = 64 << 10;

void transfer(std::string &target, std::string &source)
{
    io_memory from = {total, 0, source.data()};
    io_memory to = {total, 0, target.data()};
    io_stream input = {};
    input.read = memRead;
    input.handle = reinterpret_cast<intptr_t>(&from);
    io_stream output = {};
    output.write = memWrite;
    output.handle = reinterpret_cast<intptr_t>(&to);
    ioTransfer(&output, &input, 0, nullptr, chunk, nullptr, nullptr);
}

template <typename Copy>
void add_transfer(const std::string &side, Copy copy)
{
    add({"Copy 64 MiB between memory streams, in chunks of 64 KiB"}, side, [=] {
        return [=, source = std::string(total, 's'),
                target = std::string(total, 't')](stopwatch &watch) mutable {
            watch.time([&] { copy(target, source); });
            return target == source;
        };
    });
}
} // namespace

void bench::add_sides()
{
    add_file<tessel_file>({"tessel", "tessel"});
    add_file<with_swaps<unlocked_file>>({"fread_unlocked", "fwrite_unlocked"});
    add_file<with_swaps<standard_file>>({"std::ifstream", "std::ofstream"});
    add_transfer("tessel", transfer);
    add_transfer("one memcpy", [](std::string &target, std::string &source) {
        std::memcpy(target.data(), source.data(), source.size());
    });
}

// What the fuzz targets share: taking their input apart, and exact blocks.
#ifndef TESSEL_FUZZ_FUZZ_INPUT_H
#define TESSEL_FUZZ_FUZZ_INPUT_H

#include "tessel.h"
#include <algorithm>
#include <memory>
#include <stdlib.h>
#include <string.h>
#include <string>
#include <utility>
#include <vector>

inline void expect(bool holds)
{
    if (!holds)
        abort();
}

// A heap block of just these bytes, so that the sanitizer sees a step too far.
using block = std::unique_ptr<char[]>;

inline block exactly(const std::string &bytes)
{
    block copy(new char[bytes.size()]);
    bytes.copy(copy.get(), bytes.size());
    return copy;
}

// Takes values from the front of the data; behind its end all of them are zero and empty.
struct fuzz_input {
    const uint8_t *at, *end;

    uint32_t byte()
    {
        return at < end ? *at++ : 0;
    }
    uint32_t number()
    {
        const uint32_t low = byte(), middle = byte(), high = byte();
        return byte() << 24 | high << 16 | middle << 8 | low;
    }
    std::string bytes(size_t most)
    {
        const size_t wanted = byte() % (most + 1), length = std::min<size_t>(wanted, end - at);
        at += length;
        return std::string(at - length, at);
    }
    // At most so many characters of an alphabet.
    std::string word(size_t most, const std::string &alphabet)
    {
        std::string characters = bytes(most);
        for (char &c : characters)
            c = alphabet[static_cast<uint8_t>(c) % alphabet.size()];
        return characters;
    }
    // All that is left: as it is, or as characters of an alphabet, some of them in runs.
    std::string text(const std::string &alphabet)
    {
        if (byte() % 8 == 0)
            return std::string(std::exchange(at, end), end);
        std::string all;
        while (at < end) {
            const size_t value = byte(), length = value < 224 ? 1 : value - 224;
            all.append(length, alphabet[value % alphabet.size()]);
        }
        return all;
    }
};

void run(fuzz_input input);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    run({data, data + size});
    return 0;
}

#endif

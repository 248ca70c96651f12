// Runs a fuzz target without a fuzzer: over the inputs of its corpus, which the first argument names,
// and then over random ones. The second argument may be their seed, and the third their number.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

static std::vector<uint8_t> input;
static const char *kind = "corpus";

static void show(int)
{
    printf("an input of the %s fails:", kind);
    for (const uint8_t byte : input)
        printf(" %02x", byte);
    printf("\n");
    fflush(stdout);
}

int main(int argc, char **argv)
{
    signal(SIGABRT, show);
    int inputs = 0;
    for (const auto &entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        input.assign(std::istreambuf_iterator<char>(file), {});
        LLVMFuzzerTestOneInput(input.data(), input.size());
        inputs++;
    }
    const std::string seed = argc > 2 ? argv[2] : "1";
    kind = "random kind";
    printf("%d inputs of the corpus, and random ones with seed %s\n", inputs, seed.c_str());
    std::mt19937 random(static_cast<uint32_t>(std::stoul(seed)));
    for (int turn = argc > 3 ? std::stoi(argv[3]) : 20000; turn > 0; turn--) {
        input.resize(random() % (turn % 8 ? 96 : 1024));
        for (uint8_t &byte : input)
            byte = static_cast<uint8_t>(random());
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
    return inputs == 0;
}

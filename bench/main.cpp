// The program around the sides of each benchmark. They take turns, so that whatever else the machine
// does falls on all of them. Options on the command line have the last word.
#include "compare.h"

#include <vector>

int main(int argc, char **argv)
{
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    char repetitions[] = "--benchmark_repetitions=5";
    char short_runs[] = "--benchmark_min_time=0.05";
    std::vector<char *> arguments = {argv[0], interleaving, repetitions, short_runs};
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 1;
    bench::add_sides();
    return benchmark::RunSpecifiedBenchmarks() == 0;
}

// orvan-bench: the benchmarks of this folder. ./bench runs it and compares what it answers.
#include <benchmark/benchmark.h>

#include <malloc.h>

#include <limits>

int main(int argumentCount, char** arguments) {
    // Keeps freed memory: whether a result needs fresh pages from the system would otherwise depend on which
    // benchmarks ran before.
    mallopt(M_MMAP_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    mallopt(M_TOP_PAD, 64 * 1024 * 1024);
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

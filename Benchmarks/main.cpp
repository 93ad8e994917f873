// orvan-bench: the benchmarks of this folder. ./bench runs it and compares what it answers.
#include <benchmark/benchmark.h>

BENCHMARK_MAIN();

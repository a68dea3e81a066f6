#include <malloc.h>

#include <benchmark/benchmark.h>

// Freed memory stays with the program. By default, the C library gives large blocks back to the
// system at sizes that depend on what was freed before: some programs then pay for fresh pages in
// each repetition and others do not, which says nothing about either.
int main(int argc, char** argv) {
    constexpr int largest = 256 << 20;
    mallopt(M_MMAP_THRESHOLD, largest);
    mallopt(M_TRIM_THRESHOLD, largest);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

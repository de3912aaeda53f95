// Times every document with every writer.
#include "benchmarks/Registry.hpp"

int main(int argumentCount, char** arguments)
{
    for (const benchmarks::Case& each : benchmarks::cases()) {
        benchmark::RegisterBenchmark((each.document + '/' + each.writer).c_str(), each.time)
            ->Unit(benchmark::kMicrosecond);
    }
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) {
        return 1;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}

// Times every document with every writer, after a check that what was written is the document.
#include "benchmarks/registry.hpp"

#include <fstream>
#include <iostream>
#include <string>

namespace benchmarks {

namespace {

/// This project's writer, over its main target.
constexpr const char* MAIN_WRITER = "tarn";

/// @return the processor's name, as the kernel gives it.
std::string processor()
{
    std::ifstream description("/proc/cpuinfo");
    for (std::string line; std::getline(description, line);) {
        const std::size_t value = line.find(": ");
        if (line.starts_with("model name") && value != std::string::npos) {
            return line.substr(value + 2);
        }
    }
    return "unknown processor";
}

/// @return true if the output is the document; if not, says what is wrong.
bool isRight(const Case& each)
{
    const std::string outline = outlineReader()(each.write());
    if (outline == each.outline()) {
        return true;
    }
    std::cerr << "benchmark-writers: " << each.document << '/' << each.writer
              << " is left out: the output is "
              << (outline.starts_with('<') ? "not the document" : outline) << '\n';
    return false;
}

/// True for this project's writer over any of its targets, whose output must always be right.
bool isOurs(const Case& each)
{
    return each.writer.starts_with(MAIN_WRITER);
}

void add(const Case& each)
{
    const std::string name = each.document + '/' + each.writer;
    benchmark::RegisterBenchmark(name.c_str(), each.time)->Unit(benchmark::kMicrosecond);
    if (each.writer == MAIN_WRITER) {
        benchmark::RegisterBenchmark(name.c_str(), each.time)
            ->Unit(benchmark::kMicrosecond)
            ->Threads(2)
            ->UseRealTime();
    }
}

} // namespace

} // namespace benchmarks

int main(int argumentCount, char** arguments)
{
    using namespace benchmarks;
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) {
        return 1;
    }
    benchmark::AddCustomContext("processor", processor());
    benchmark::AddCustomContext("compiler", COMPILER);
    if (outlineReader() == nullptr) {
        std::cerr << "benchmark-writers: the output is not checked, libxml2 is not installed\n";
    }
    // Every document is checked before the first is timed. The heap is then in the same state for
    // every writer, that of a program which has run for some time.
    bool isOursRight = true;
    for (const Case& each : cases()) {
        if (outlineReader() == nullptr || isRight(each)) {
            add(each);
        } else {
            isOursRight = isOursRight && !isOurs(each);
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return isOursRight ? 0 : 1;
}

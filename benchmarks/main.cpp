// Times every document with every writer, after a check that what was written is the document.
#include "benchmarks/registry.hpp"

#include <fstream>
#include <iostream>

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

/// Says what is wrong with the output, if it is not the document.
bool isRight(const Case& each)
{
    const std::optional<std::string> outline = outlineReader()(each.write());
    if (outline == each.outline()) {
        return true;
    }
    std::cerr << each.document << '/' << each.writer << " is left out: the output "
              << (outline ? "is not the document" : "is not well-formed") << '\n';
    return false;
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
        std::cerr << "The output is not checked: libxml2 is not installed\n";
    }
    // The check runs for all before the first is timed. So every writer finds the heap in the state
    // that it has in a program that runs for long, whichever comes first.
    for (const Case& each : cases()) {
        if (outlineReader() == nullptr || isRight(each)) {
            add(each);
        }
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}

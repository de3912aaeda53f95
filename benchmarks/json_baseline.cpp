// Usage: benchmark-json-baseline INPUT OUTPUT
// Formats the JSON file INPUT with RapidJSON alone: its Reader feeds its PrettyWriter. No program
// that turns JSON into formatted text with RapidJSON can do less work.
#include <rapidjson/error/en.h>
#include <rapidjson/filereadstream.h>
#include <rapidjson/filewritestream.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/reader.h>

#include <cstdio>
#include <iostream>
#include <memory>

namespace {

using File = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

File open(const char* name, const char* mode)
{
    return {std::fopen(name, mode), std::fclose};
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3) {
        std::cerr << "Usage: benchmark-json-baseline INPUT OUTPUT\n";
        return 2;
    }
    const File input = open(arguments[1], "rb");
    const File output = open(arguments[2], "wb");
    if (input == nullptr || output == nullptr) {
        std::perror("benchmark-json-baseline");
        return 1;
    }
    char inputBuffer[65536];
    char outputBuffer[65536];
    rapidjson::FileReadStream source(input.get(), inputBuffer, sizeof inputBuffer);
    rapidjson::FileWriteStream target(output.get(), outputBuffer, sizeof outputBuffer);
    rapidjson::PrettyWriter<rapidjson::FileWriteStream> writer(target);
    rapidjson::Reader reader;
    const rapidjson::ParseResult result = reader.Parse(source, writer);
    if (!result) {
        std::cerr << "benchmark-json-baseline: " << rapidjson::GetParseError_En(result.Code())
                  << " At byte " << result.Offset() << '\n';
        return 1;
    }
}

// Usage: benchmark-make-json BYTES OUTPUT
// Writes a JSON file of about BYTES bytes: an array of records with every kind of value, among them
// text in many scripts. It is the same in every run.
#include "benchmarks/documents/TextSource.hpp"
#include "benchmarks/text_forms.hpp"

#include <rapidjson/ostreamwrapper.h>
#include <rapidjson/writer.h>

#include <charconv>
#include <cstring>
#include <fstream>
#include <iostream>

namespace {

using namespace benchmarks;
using JsonWriter = rapidjson::Writer<rapidjson::OStreamWrapper>;

class RecordMaker
{
public:
    explicit RecordMaker(JsonWriter& writer) : writer(writer)
    {
        for (const Vocabulary& script : SCRIPTS) {
            scripts.emplace_back(script);
        }
    }

    void write(std::size_t number)
    {
        writer.StartObject();
        writer.Key("id");
        writer.Uint64(number);
        writer.Key("title");
        add(english.words(5));
        writer.Key("price");
        writer.Double(static_cast<double>(english.number(100, 99999)) / 100);
        writer.Key("available");
        writer.Bool(number % 3 != 0);
        writer.Key("discount");
        writer.Null();
        writer.Key("tags");
        writer.StartArray();
        for (std::size_t tag = english.number(0, 4); tag > 0; --tag) {
            add(english.words(1));
        }
        writer.EndArray();
        writer.Key("place");
        writer.StartObject();
        writer.Key("latitude");
        writer.Double(static_cast<double>(english.number(0, 180'000'000)) / 1e6 - 90);
        writer.Key("longitude");
        writer.Double(static_cast<double>(english.number(0, 360'000'000)) / 1e6 - 180);
        writer.EndObject();
        writer.Key("summary");
        add(english.paragraph(200));
        writer.Key("translation");
        add(scripts[number % scripts.size()].words(8));
        writer.Key("source");
        add(sourceText.words(6));
        writer.EndObject();
    }

private:
    void add(const std::u16string& text)
    {
        const std::string utf8 = toUtf8(text);
        writer.String(utf8.data(), static_cast<rapidjson::SizeType>(utf8.size()));
    }

    JsonWriter& writer;
    TextSource english{ENGLISH};
    TextSource sourceText{SOURCE_TEXT};
    std::vector<TextSource> scripts;
};

} // namespace

int main(int argumentCount, char** arguments)
{
    std::int64_t bytes = 0;
    if (argumentCount != 3 ||
        std::from_chars(arguments[1], arguments[1] + std::strlen(arguments[1]), bytes).ec !=
            std::errc()) {
        std::cerr << "Usage: benchmark-make-json BYTES OUTPUT\n";
        return 2;
    }
    std::ofstream output(arguments[2], std::ios::binary);
    rapidjson::OStreamWrapper stream(output);
    JsonWriter writer(stream);
    RecordMaker records(writer);
    writer.StartArray();
    for (std::size_t number = 1; output && output.tellp() < bytes; ++number) {
        records.write(number);
    }
    writer.EndArray();
    output.close();
    if (!output) {
        std::cerr << "benchmark-make-json: " << arguments[2] << ": cannot be written\n";
        return 1;
    }
}

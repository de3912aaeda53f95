#include "benchmarks/Results.hpp"

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/istreamwrapper.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace benchmarks {

namespace {

using Json = rapidjson::Value;

rapidjson::Document parse(const std::string& file)
{
    std::ifstream input(file);
    if (!input) {
        throw std::runtime_error(file + ": cannot be opened");
    }
    rapidjson::IStreamWrapper stream(input);
    rapidjson::Document json;
    json.ParseStream(stream);
    if (json.HasParseError()) {
        throw std::runtime_error(file + ": " + rapidjson::GetParseError_En(json.GetParseError()) +
                                 " At byte " + std::to_string(json.GetErrorOffset()));
    }
    return json;
}

/// The member @p name of @p object, which the benchmark library always writes.
template <class Value>
Value member(const Json& object, const char* name)
{
    const auto found = object.FindMember(name);
    if (found == object.MemberEnd() || !found->value.Is<Value>()) {
        throw std::runtime_error(std::string("a benchmark lacks the member ") + name);
    }
    return found->value.Get<Value>();
}

double nanosecondsPer(const std::string& unit)
{
    return unit == "s" ? 1e9 : unit == "ms" ? 1e6 : unit == "us" ? 1e3 : 1;
}

} // namespace

Results::Results(const std::string& file)
{
    const rapidjson::Document json = parse(file);
    if (!json.IsObject() || !json.HasMember("context") || !json.HasMember("benchmarks") ||
        !json["context"].IsObject() || !json["benchmarks"].IsArray()) {
        throw std::runtime_error(file + ": is not the JSON of a benchmark");
    }
    for (const auto& entry : json["context"].GetObject()) {
        if (entry.value.IsString()) {
            contextValues[entry.name.GetString()] = entry.value.GetString();
        }
    }
    std::map<std::int64_t, std::string> inOrder;
    for (const Json& benchmark : json["benchmarks"].GetArray()) {
        const std::string name = member<const char*>(benchmark, "run_name");
        const std::size_t slash = name.find('/');
        if (!benchmark.HasMember("aggregate_name") || slash == std::string::npos) {
            continue;
        }
        const std::string document = name.substr(0, slash);
        Measurement& measurement = measurements[{document, name.substr(slash + 1)}];
        const std::string aggregate = member<const char*>(benchmark, "aggregate_name");
        // Processor time adds up over threads; only real time shows how long they took.
        const char* const time = member<int>(benchmark, "threads") > 1 ? "real_time" : "cpu_time";
        if (aggregate == "median") {
            measurement.medianNanoseconds =
                member<double>(benchmark, time) *
                nanosecondsPer(member<const char*>(benchmark, "time_unit"));
            measurement.megabytesPerSecond = member<double>(benchmark, "bytes_per_second") / 1e6;
        } else if (aggregate == "cv") {
            measurement.variation = member<double>(benchmark, time);
        }
        inOrder[member<std::int64_t>(benchmark, "family_index")] = document;
    }
    for (const auto& [index, document] : inOrder) {
        if (std::ranges::find(documentNames, document) == documentNames.end()) {
            documentNames.push_back(document);
        }
    }
    if (documentNames.empty()) {
        throw std::runtime_error(file + ": has no medians; run the benchmark with repetitions");
    }
}

const Results::Measurement* Results::find(const std::string& document,
                                          const std::string& writer) const
{
    const auto found = measurements.find({document, writer});
    return found == measurements.end() ? nullptr : &found->second;
}

std::optional<double> Results::ratio(const std::string& document, const std::string& writer,
                                     const std::string& other) const
{
    const Measurement* const one = find(document, writer);
    const Measurement* const two = find(document, other);
    if (one == nullptr || two == nullptr) {
        return std::nullopt;
    }
    return one->medianNanoseconds / two->medianNanoseconds;
}

bool Results::has(std::string_view peer) const
{
    return std::ranges::any_of(
        measurements, [peer](const auto& measured) { return measured.first.second == peer; });
}

std::string Results::context(const std::string& key) const
{
    const auto found = contextValues.find(key);
    return found == contextValues.end() ? "" : found->second;
}

} // namespace benchmarks

#include "halyard/cppmicroservices/bundle_manifest.hpp"

#include "common/ThrowingAllocator.hpp"

#include <algorithm>
#include <charconv>
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>
#include <stdexcept>
#include <string_view>

namespace halyard::cppmicroservices {

namespace {

constexpr std::string_view NAME_KEY = "bundle.symbolic_name";
constexpr std::string_view VERSION_KEY = "bundle.version";

/// Well below the depth at which a reader that calls itself for each level fails.
constexpr std::size_t MOST_LEVELS = 100;

/// Keys are the same in capital and small letters.
bool is_key(std::string_view key, std::string_view wanted)
{
    const auto small = [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    };
    return std::ranges::equal(key, wanted, {}, small);
}

[[noreturn]] void refuse_version(std::string_view version)
{
    throw std::runtime_error('"' + std::string(version) + "\" is not a version");
}

/// Completes `1`, `1.2`, `1.2.3` or `1.2.3.q`.
std::string full_version(std::string_view version)
{
    constexpr std::size_t NUMBERS = 3;
    unsigned numbers[NUMBERS] = {};
    std::string_view rest = version;
    std::string qualifier;
    for (std::size_t part = 0; part <= NUMBERS; ++part) {
        const std::string_view text = rest.substr(0, rest.find('.'));
        const bool isLast = text.size() == rest.size();
        if (part == NUMBERS) {
            const bool isWord = !text.empty() && std::ranges::all_of(text, [](char letter) {
                return (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'z') ||
                       (letter >= 'A' && letter <= 'Z') || letter == '_' || letter == '-';
            });
            if (!isWord || !isLast) {
                refuse_version(version);
            }
            qualifier = '.' + std::string(text);
            break;
        }
        const char* const end = text.data() + text.size();
        const auto [parsed, error] = std::from_chars(text.data(), end, numbers[part]);
        if (error != std::errc() || parsed != end) {
            refuse_version(version);
        }
        if (isLast) {
            break;
        }
        rest.remove_prefix(text.size() + 1);
    }
    return std::to_string(numbers[0]) + '.' + std::to_string(numbers[1]) + '.' +
           std::to_string(numbers[2]) + qualifier;
}

/// Takes the events of the reader and keeps the values of the two keys. Of a key that is repeated,
/// the first one counts.
class manifest_handler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, manifest_handler>
{
public:
    struct value
    {
        bool is_given = false;
        bool is_string = false;
        std::string text;
    };

    bool Default() { return take({}, false); }
    bool String(const char* text, rapidjson::SizeType length, bool)
    {
        return take({text, length}, true);
    }
    bool Key(const char* text, rapidjson::SizeType length, bool)
    {
        const std::string_view key(text, length);
        awaited = levels > 1                 ? nullptr
                  : is_key(key, NAME_KEY)    ? &name
                  : is_key(key, VERSION_KEY) ? &version
                                             : nullptr;
        return true;
    }
    bool StartObject()
    {
        is_object = is_object || levels == 0;
        return enter();
    }
    bool StartArray() { return enter(); }
    bool EndObject(rapidjson::SizeType) { return leave(); }
    bool EndArray(rapidjson::SizeType) { return leave(); }

    bool is_object = false;
    std::size_t levels = 0;
    value name;
    value version;

private:
    bool take(std::string_view text, bool is_string)
    {
        if (awaited != nullptr && !awaited->is_given) {
            awaited->is_given = true;
            awaited->is_string = is_string;
            awaited->text = text;
        }
        return true;
    }
    bool enter()
    {
        take({}, false);
        return ++levels <= MOST_LEVELS;
    }
    bool leave()
    {
        --levels;
        return true;
    }

    /// Where the value that comes next is to be kept; null if nowhere.
    value* awaited = nullptr;
};

} // namespace

std::string read_bundle_version(const std::string& json)
{
    manifest_handler manifest;
    rapidjson::MemoryStream stream(json.data(), json.size());
    rapidjson::GenericReader<rapidjson::UTF8<>, rapidjson::UTF8<>, tarn::common::ThrowingAllocator>
        reader;
    const rapidjson::ParseResult result =
        reader.Parse<rapidjson::kParseIterativeFlag>(stream, manifest);
    if (manifest.levels > MOST_LEVELS) {
        throw std::runtime_error("nested deeper than " + std::to_string(MOST_LEVELS) + " levels");
    }
    if (result.IsError()) {
        throw std::runtime_error(std::string(rapidjson::GetParseError_En(result.Code())) +
                                 " (byte " + std::to_string(result.Offset() + 1) + ')');
    }
    // The reader takes a NUL for the end.
    if (stream.Tell() != json.size()) {
        throw std::runtime_error("a NUL (byte " + std::to_string(stream.Tell() + 1) + ')');
    }
    if (!manifest.is_object) {
        throw std::runtime_error("not a JSON object");
    }
    // A percent sign marks a text that is to be translated.
    if (const std::string& name = manifest.name.text; name.empty() || name == "%") {
        throw std::runtime_error("no " + std::string(NAME_KEY));
    }
    if (!manifest.version.is_given) {
        return full_version("0");
    }
    if (!manifest.version.is_string) {
        throw std::runtime_error(std::string(VERSION_KEY) + " is not a string");
    }
    return full_version(manifest.version.text);
}

} // namespace halyard::cppmicroservices

// Each allocation fails in turn: the call throws std::bad_alloc, nothing leaks, what was handed on
// stays, and the writer can be used on.

#include "support/Call.hpp"
#include "support/FailingAllocation.hpp"
#include "support/files.hpp"

#include <tarn/xml/XmlWriter.hpp>
#include <tools/json2xml/convert.hpp>
#include <tools/xml2json/convert.hpp>

#include <algorithm>
#include <fcntl.h>
#include <optional>
#include <spanstream>
#include <vector>

namespace tarn::tests {

namespace {

/// A stream that takes bytes without allocating.
struct StreamTarget
{
    std::vector<char> bytes = std::vector<char>(100'000);
    std::ospanstream stream{bytes};

    std::ostream& get() { return stream; }
    std::string_view view() { return {stream.span().data(), stream.span().size()}; }
};

template <class String>
struct StringTarget
{
    String text;

    String& get() { return text; }
    std::basic_string_view<typename String::value_type> view() const { return text; }
};

/// Deep, with many namespaces, long names, replacements and texts of more than one batch.
Calls longDocument()
{
    const std::u16string uri = u"http://example.org/a/name/of/a/namespace/";
    Calls calls = {startDocument(u"1.1"), registerDefault(uri)};
    for (char16_t level = u'a'; level < u'p'; ++level) {
        calls.push_back(startElement(u"a-long-name-" + std::u16string(20, level),
                                     level % 2 == 0 ? uri : uri + level, u"long-prefix"));
        calls.push_back(namespaceDeclaration(uri + u'/' + level, u"another-prefix"));
        calls.push_back(attribute(u"name", uri + u"of/attributes", u"", u"a\x01 & b"));
    }
    calls.push_back(value(std::u16string(9000, u'v') + u"<\x02" + std::u16string(9000, u'\u4E2D')));
    calls.push_back(element(u"last", uri + u"last", u"", u"text"));
    calls.push_back(endDocument());
    return calls;
}

template <class Target>
void writeWithFailures()
{
    const Calls calls = longDocument();
    // How much the target holds after each call, and what in the end, if nothing fails.
    std::vector<std::size_t> sizes;
    Target whole;
    utils::XmlWriter writer(whole.get());
    for (const Call& call : calls) {
        call.applyTo(&writer);
        sizes.push_back(whole.view().size());
    }

    failEachAllocation([&](FailingAllocation& failure) {
        Target target;
        std::optional<utils::XmlWriter> failing;
        if (failure.during([&] { failing.emplace(target.get()); })) {
            EXPECT_TRUE(target.view().empty());
            return;
        }
        for (std::size_t i = 0; i < calls.size(); ++i) {
            const bool isFirst = !failure.hasHappened();
            if (failure.during([&] { calls[i].applyTo(&*failing); }) && isFirst) {
                EXPECT_TRUE(whole.view().starts_with(target.view()));
                EXPECT_TRUE(i == 0 || target.view().size() >= sizes[i - 1]);
                EXPECT_LE(target.view().size(), sizes[i]);
            }
        }
        if (!failure.hasHappened()) {
            EXPECT_EQ(target.view(), whole.view());
        }
        // With memory again, the writer goes on.
        failing->writeEndDocument();
        failing->writeElement(u"on", u"");
        failing->writeEndDocument();
        constexpr std::string_view ENDING = "></on>";
        EXPECT_TRUE(
            std::ranges::equal(target.view().substr(target.view().size() - ENDING.size()), ENDING));
    });
}

TEST(AllocationFailures, LeaveTheWriterUsableOnEveryTarget)
{
    writeWithFailures<StringTarget<std::u16string>>();
    writeWithFailures<StringTarget<std::string>>();
    writeWithFailures<StreamTarget>();
}

TEST(AllocationFailures, EndAConversionFromJson)
{
    const Directory directory;
    const std::string file = directory / "input.json";
    writeFile(file, R"({"a long key, which is no name": [1.5e300, "\ud800 \u00e9", true, null],
        "nested": [[[[{"key": ")" +
                        std::string(9000, 'x') + "\"}]]]], \"number\": " + std::string(100, '9') +
                        "}");
    failEachAllocation([&](FailingAllocation& failure) {
        StreamTarget target;
        const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
        ASSERT_GE(descriptor, 0);
        failure.during([&] {
            json2xml::JsonInput input({tools::FileDescriptor(descriptor), "input", [](auto) {}},
                                      {});
            json2xml::convert(input, target.get());
        });
        EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1) << "the input is still open";
    });
}

TEST(AllocationFailures, EndAConversionToJson)
{
    const Directory directory;
    const std::string file = directory / "input.xml";
    writeFile(file, R"(<?xml version="1.0"?><!--c--><map a:b="c" xmlns:a="a" xmlns=")"
                    R"(http://www.w3.org/2005/xpath-functions"><array key="a long key &amp; more">)"
                    R"(<number> +1.5e300</number><boolean>1</boolean><null/></array><?p i?>)"
                    R"(<string key="\ud800 \u00e9 and more" escaped-key="true">)" +
                        std::string(70'000, 'x') + "<![CDATA[<]]>&lt;</string></map>");
    const auto convert = [&](StreamTarget& target, int descriptor) {
        xml2json::convert({tools::FileDescriptor(descriptor), "input", [](auto) {}}, target.get(),
                          {}, {});
    };
    StreamTarget whole;
    convert(whole, ::open(file.c_str(), O_RDONLY | O_CLOEXEC)); // libxml2 keeps what it begins with
    failEachAllocation([&](FailingAllocation& failure) {
        StreamTarget target;
        const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
        ASSERT_GE(descriptor, 0);
        if (!failure.during([&] { convert(target, descriptor); })) {
            EXPECT_EQ(target.view(), whole.view());
        }
        EXPECT_EQ(::fcntl(descriptor, F_GETFD), -1) << "the input is still open";
    });
}

} // namespace

} // namespace tarn::tests

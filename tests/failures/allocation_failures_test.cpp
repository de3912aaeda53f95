// Each allocation of a conversion fails in turn: it throws std::bad_alloc, and nothing leaks.

#include "support/FailingAllocation.hpp"
#include "support/files.hpp"

#include <tools/json2xml/convert.hpp>
#include <tools/xml2json/convert.hpp>

#include <fcntl.h>
#include <string>

namespace tarn::tests {

namespace {

TEST(AllocationFailures, EndAConversionFromJson)
{
    const Directory directory;
    const std::string file = directory / "input.json";
    writeFile(file, R"({"a long key, which is no name": [1.5e300, "\ud800 \u00e9", true, null],
        "nested": [[[[{"key": ")" +
                        std::string(9000, 'x') + "\"}]]]], \"number\": " + std::string(100, '9') +
                        "}");
    failEachAllocation([&](FailingAllocation& failure) {
        ToStream target;
        const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
        ASSERT_GE(descriptor, 0);
        failure.during([&] {
            json2xml::JsonInput input({tools::FileDescriptor(descriptor), "input", [](auto) {}}, {},
                                      false);
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
    const auto convert = [&](ToStream& target, int descriptor) {
        xml2json::convert({tools::FileDescriptor(descriptor), "input", [](auto) {}}, target.get(),
                          {}, {});
    };
    ToStream whole;
    convert(whole, ::open(file.c_str(), O_RDONLY | O_CLOEXEC)); // libxml2 keeps what it begins with
    failEachAllocation([&](FailingAllocation& failure) {
        ToStream target;
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

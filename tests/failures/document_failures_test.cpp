// Memory or the target of a document fails at every point: the document is as it was or broken off,
// never looks complete, and can be begun again.

#include "support/FailingAllocation.hpp"

#include <tarn/document/Document.hpp>

#include <algorithm>
#include <array>
#include <functional>
#include <gtest/gtest.h>
#include <ios>
#include <limits>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::tests {

namespace {

using namespace document;

constexpr std::size_t MOST_LEVELS = 30;

using Elements = std::array<std::optional<Element>, MOST_LEVELS + 2>;

/// One call, so that it can be made again when it has failed.
struct Step
{
    std::function<void(Document&, Elements&)> call;
    bool isRefused = false;
};

constexpr Namespace ATOM{"http://www.w3.org/2005/Atom"};
constexpr Namespace TERMS{"http://purl.org/dc/terms/", "a-prefix-that-needs-memory"};
constexpr std::string_view END_OF_ROOT = "</root>";

/// A document with everything in it: texts of @p size units, names in proportion, @p levels of
/// elements.
std::vector<Step> stepsOfDocument(std::size_t size, std::size_t levels)
{
    static const Fragment FRAGMENT = Fragment::trusted("<raw/>");
    const std::string text = std::string("\t").append(size, 'x').append("\r<\u00E9");
    const std::u16string utf16(size, u'x');
    const std::string name(size / 8 + 1, 'n');
    std::vector<Step> steps = {
        {[](Document& d, Elements&) { d.doctype("root", "-//A//B", "a'b"); }},
        {[](Document& d, Elements&) { d.comment("before"); }},
        {[](Document& d, Elements&) { d.instruction("p", "d"); }},
        {[](Document& d, Elements& e) {
            e[0] = d.root({ATOM, "root"});
        }},
        {[](Document&, Elements& e) { e[0]->declare(TERMS); }},
        {[=](Document&, Elements& e) { e[0]->attribute("a", text); }},
        {[](Document&, Elements& e) { e[0]->attribute("a", 1); }, true},
        {[](Document&, Elements& e) {
            e[0]->attribute({TERMS, "a"}, 0.5);
        }},
        {[](Document&, Elements& e) {
            e[0]->attribute({Namespace("urn:b", "b"), "a"}, true);
        }},
        {[](Document&, Elements& e) {
            e[0]->attribute({Namespace("urn:c", "b"), "a"}, "in ns1");
        }},
        {[](Document&, Elements& e) { e[0]->comment("c").instruction("p", "d"); }},
        {[=](Document&, Elements& e) { e[0]->add(name, text); }},
        {[=](Document&, Elements& e) { e[1] = e[0]->child(name); }},
        {[=](Document&, Elements& e) { e[1]->base64(text.data(), text.size()); }},
        {[=](Document&, Elements& e) { e[1]->base64("b", 1); }},
        {[=](Document&, Elements& e) { e[1]->cdata(text); }},
        {[=](Document&, Elements& e) { e[1]->text(utf16); }},
        {[](Document&, Elements& e) { e[1]->raw(FRAGMENT); }},
        {[](Document&, Elements& e) { e[1]->text("\x01"); }, true},
    };
    for (std::size_t level = 1; level <= levels; ++level) {
        steps.push_back({[=](Document&, Elements& e) { e[level + 1] = e[level]->child(name); }});
        steps.push_back({[=](Document&, Elements& e) { e[level + 1]->text(name); }});
        // The destructor ends it.
        steps.push_back({[=](Document&, Elements& e) { e[level + 1].reset(); }});
        steps.push_back({[=](Document&, Elements& e) {
            e[level + 1] = e[level]->child({ATOM, "deep"});
        }});
    }
    steps.push_back({[](Document&, Elements& e) { e[0]->end(); }});
    steps.push_back({[](Document& d, Elements&) { d.comment("after"); }});
    steps.push_back({[](Document& d, Elements&) { d.flush(); }});
    steps.push_back({[](Document& d, Elements&) { d.finish(); }});
    return steps;
}

/// Right calls and wrong ones on the document and on each element that there is.
std::vector<std::function<void()>> allCalls(Document& document, Elements& elements)
{
    static constexpr Namespace SPACES[] = {TERMS, Namespace("urn:new", "new"), Namespace("urn:z")};
    static const Name NAMES[] = {"a", "1", {SPACES[1], "a"}, {SPACES[2], "a"}};
    static constexpr const char* TEXTS[] = {"t", "\x01", "--"};
    std::vector<std::function<void()>> calls = {[&] { document.finish(); }};
    const auto addForNames = [&](const auto& call) {
        for (const Name& name : NAMES) {
            for (const char* const text : TEXTS) {
                calls.emplace_back([=] { call(name, text); });
            }
        }
    };
    addForNames([&d = document](auto& name, auto*) { d.root(name); });
    addForNames([&d = document](auto& name, auto* text) { d.doctype(name, "", text); });
    addForNames([&d = document](auto& name, auto* text) { d.instruction(name, text); });
    addForNames([&d = document](auto&, auto* text) { d.comment(text); });
    for (std::optional<Element>& element : elements) {
        if (element) {
            addForNames([&e = *element](auto& name, auto*) { e.child(name); });
            addForNames([&e = *element](auto& name, auto* text) { e.attribute(name, text); });
            addForNames([&e = *element](auto& name, auto* text) { e.add(name, text); });
            addForNames([&e = *element](auto& name, auto* text) { e.instruction(name, text); });
            for (const char* const text : TEXTS) {
                calls.emplace_back([&e = *element, text] { e.text(text); });
                calls.emplace_back([&e = *element, text] { e.cdata(text); });
                calls.emplace_back([&e = *element, text] { e.comment(text); });
            }
            for (const Namespace& space : SPACES) {
                calls.emplace_back([&e = *element, &space] { e.declare(space); });
            }
            calls.emplace_back([&e = *element] { e.base64(nullptr, 1); });
            calls.emplace_back([&e = *element] { e.raw(Fragment::of("")); });
            calls.emplace_back([&e = *element] { e.end(); });
        }
    }
    return calls;
}

bool isRefused(const std::function<void()>& call)
{
    try {
        call();
        return false;
    } catch (const Error&) {
        return true;
    }
}

/// Whether flush() is refused; then every call but reset() must be.
bool isBrokenOff(Document& document, Elements& elements)
{
    if (!isRefused([&] { document.flush(); })) {
        return false;
    }
    EXPECT_ANY_THROW(document.finish()); // what a destructor has met, once
    const auto calls = allCalls(document, elements);
    EXPECT_TRUE(std::ranges::all_of(calls, isRefused));
    return true;
}

void make(const Step& step, Document& document, Elements& elements)
{
    try {
        step.call(document, elements);
        EXPECT_FALSE(step.isRefused);
    } catch (const Error&) {
        if (!step.isRefused) {
            throw;
        }
    }
}

void write(const std::vector<Step>& steps, Document& document)
{
    Elements elements;
    for (const Step& step : steps) {
        make(step, document, elements);
    }
}

TEST(DocumentFailures, ByRefusalChangeNothingInAnyState)
{
    const std::vector<Step> steps = stepsOfDocument(8, 2);
    std::string whole;
    Document good(whole);
    write(steps, good);
    for (std::size_t place = 0; place < steps.size(); ++place) {
        std::size_t calls = 1;
        std::size_t refused = 0;
        for (std::size_t number = 0; number < calls; ++number) {
            std::string text;
            Document document(text);
            Elements elements;
            for (std::size_t step = 0; step < place; ++step) {
                make(steps[step], document, elements);
            }
            document.flush();
            const std::string before = text;
            const auto all = allCalls(document, elements);
            calls = all.size();
            if (isRefused(all[number])) {
                ++refused;
                document.flush();
                ASSERT_EQ(text, before) << "call " << number << " after " << place << " steps";
                for (std::size_t step = place; step < steps.size(); ++step) {
                    make(steps[step], document, elements);
                }
                ASSERT_EQ(text, whole) << "call " << number << " after " << place << " steps";
            }
        }
        EXPECT_GT(refused, 0);
    }
}

/// Expects that what @p received of @p whole does not look complete.
void expectIncomplete(std::string_view received, std::string_view whole)
{
    EXPECT_TRUE(whole.starts_with(received));
    EXPECT_LT(received.size(), whole.find(END_OF_ROOT) + END_OF_ROOT.size());
}

struct ToString
{
    std::string text;

    std::string& get() { return text; }
    std::string_view view() const { return text; }
    void forget() {}
};

struct ToFunction
{
    std::string text;

    std::function<void(std::string_view)> get()
    {
        return [this](std::string_view bytes) { text += bytes; };
    }
    std::string_view view() const { return text; }
    void forget() { text.clear(); }
};

template <class Target>
class DocumentFailures : public testing::Test
{
};
using Targets = testing::Types<ToString, ToFunction, ToStream>;
TYPED_TEST_SUITE(DocumentFailures, Targets);

struct Outcomes
{
    std::size_t brokenOff = 0;
    std::size_t asItWas = 0;
    std::size_t inDestructors = 0;
};

/// Makes each allocation fail in turn while the document is written.
template <class Target>
Outcomes outcomesOfFailures(const std::vector<Step>& steps)
{
    Target target;
    Document whole(target.get());
    write(steps, whole);
    Outcomes outcomes;
    failEachAllocation([&](FailingAllocation& failure) {
        Target failing;
        std::optional<Document> document;
        if (failure.during([&] { document.emplace(failing.get()); })) {
            EXPECT_TRUE(failing.view().empty());
            return;
        }
        Elements elements;
        for (const Step& step : steps) {
            const bool hasFailed = failure.during([&] {
                make(step, *document, elements);
                if (failure.hasHappened()) {
                    // An exception needs memory too, of which there is a reserve: the call may
                    // have been refused in spite of the failure. A destructor keeps what it met.
                    if (step.isRefused) {
                        throw std::bad_alloc();
                    }
                    ++outcomes.inDestructors;
                    document->finish();
                }
            });
            if (testing::Test::HasFailure()) {
                return;
            }
            if (!hasFailed) {
                continue;
            }
            expectIncomplete(failing.view(), target.view());
            if (isBrokenOff(*document, elements)) {
                ++outcomes.brokenOff;
                expectIncomplete(failing.view(), target.view());
                document->reset();
                failing.forget();
                write(steps, *document);
                break;
            }
            ++outcomes.asItWas;
            make(step, *document, elements);
        }
        EXPECT_EQ(failing.view(), target.view());
    });
    return outcomes;
}

TYPED_TEST(DocumentFailures, OfMemoryLeaveItAsItWasOrBreakItOff)
{
    const Outcomes outcomes = outcomesOfFailures<TypeParam>(stepsOfDocument(9000, MOST_LEVELS));
    EXPECT_GT(outcomes.brokenOff, 0);
    EXPECT_GT(outcomes.asItWas, 0);
}

TEST(DocumentFailures, OfMemoryInADestructorAreThrownByFinish)
{
    // The destructor ends elements whose tags are longer than all that came before.
    const std::string name(5000, 'n');
    std::vector<Step> steps = {{[](Document& d, Elements& e) { e[0] = d.root("root"); }}};
    for (std::size_t level = 0; level < MOST_LEVELS; ++level) {
        steps.push_back({[=](Document&, Elements& e) { e[level + 1] = e[level]->child(name); }});
    }
    steps.push_back({[](Document&, Elements& e) { e[1].reset(); }});
    steps.push_back({[](Document& d, Elements&) { d.finish(); }});
    EXPECT_GT(outcomesOfFailures<ToString>(steps).inDestructors, 0);
}

TYPED_TEST(DocumentFailures, CannotComeOfMemoryForTheSameDocumentAgain)
{
    std::vector<Step> steps = stepsOfDocument(9000, MOST_LEVELS);
    std::erase_if(steps, &Step::isRefused);
    TypeParam target;
    Document document(target.get());
    write(steps, document);
    const std::string first(target.view());
    EXPECT_EQ(allocationsDuring([&] {
                  document.reset();
                  target.forget();
                  write(steps, document);
              }),
              0);
    EXPECT_EQ(target.view(), first);
}

TEST(DocumentMemory, DoesNotGrowWithTheNumberOfChildren)
{
    Document document([](std::string_view) {});
    const auto allocations = [&](int children) {
        const std::string data(10 * children, '<');
        document.reset();
        Element root = document.root("root");
        return allocationsDuring([&] {
            root.text(data).base64(data.data(), data.size());
            for (int i = 0; i < children; ++i) {
                Element child = root.child({TERMS, "child"});
                child.attribute({Namespace("urn:b", "b"), "number"}, i).text(0.1 * i);
                root.comment("c");
            }
        });
    };
    EXPECT_GT(allocations(1000), 0);
    EXPECT_EQ(allocations(100'000), 0);
    // Nor for more documents that are given up.
    EXPECT_EQ(allocationsDuring([&] {
                  for (int i = 0; i < 100'000; ++i) {
                      document.reset();
                      Element root = document.root({TERMS, "root"});
                      const Element child = root.child("child");
                      document.reset();
                  }
              }),
              0);
}

/// Takes so many bytes and flushes so often; then it fails until it is repaired.
class FailingBuffer : public std::streambuf
{
public:
    enum class Failure
    {
        Refusing,
        Throwing
    };

    FailingBuffer(Failure failure, std::size_t bytes, std::size_t flushes)
        : failure(failure), bytesLeft(bytes), flushesLeft(flushes)
    {
    }

    void repair() { bytesLeft = flushesLeft = std::numeric_limits<std::size_t>::max(); }

    std::string taken;

protected:
    std::streamsize xsputn(const char* bytes, std::streamsize count) override
    {
        const std::string_view all(bytes, static_cast<std::size_t>(count));
        const std::string_view fitting = all.substr(0, bytesLeft);
        taken += fitting;
        bytesLeft -= fitting.size();
        return fitting == all ? count : fail(static_cast<std::streamsize>(fitting.size()));
    }
    int sync() override { return flushesLeft == 0 ? fail(-1) : (--flushesLeft, 0); }

private:
    template <class Result>
    Result fail(Result result) const
    {
        return failure == Failure::Throwing ? throw std::runtime_error("failing") : result;
    }

    Failure failure;
    std::size_t bytesLeft;
    std::size_t flushesLeft;
};

/// Writes @p steps, calling @p afterEach, until a call throws, and once more when @p repair has
/// been called. One must throw.
void writeWithRepair(const std::vector<Step>& steps, Document& document,
                     const std::function<void()>& afterEach, const std::function<void()>& repair)
{
    Elements elements;
    bool hasThrown = false;
    try {
        for (const Step& step : steps) {
            make(step, document, elements);
            if (&step != &steps.back()) {
                afterEach();
            }
        }
    } catch (const std::exception&) {
        hasThrown = true;
        EXPECT_TRUE(isBrokenOff(document, elements));
        repair();
        document.reset();
        write(steps, document);
    }
    EXPECT_TRUE(hasThrown);
}

TEST(DocumentFailures, OfAStreamBreakItOff)
{
    using Failure = FailingBuffer::Failure;
    const std::vector<Step> steps = stepsOfDocument(8, 2);
    ToString whole;
    Document good(whole.get());
    write(steps, good);
    const auto expectBrokenOff = [&](std::size_t bytes, std::size_t flushes) {
        for (const Failure failure : {Failure::Refusing, Failure::Throwing}) {
            for (const std::ios::iostate thrown : {std::ios::goodbit, std::ios::badbit}) {
                SCOPED_TRACE(testing::Message() << bytes << " bytes, " << flushes << " flushes");
                FailingBuffer buffer(failure, bytes, flushes);
                std::ostream stream(&buffer);
                stream.exceptions(thrown);
                Document document(stream);
                const auto flush = [&] { document.flush(); };
                writeWithRepair(steps, document, flush, [&] {
                    if (bytes < whole.text.find(END_OF_ROOT)) {
                        expectIncomplete(buffer.taken, whole.text);
                    }
                    stream.clear();
                    buffer.repair();
                    buffer.taken.clear();
                });
                EXPECT_EQ(buffer.taken, whole.text);
            }
        }
    };
    for (std::size_t bytes = 0; bytes < whole.text.size(); ++bytes) {
        expectBrokenOff(bytes, whole.text.size());
    }
    // Each step but the last is flushed, one flushes, and finish() does.
    for (std::size_t flushes = 0; flushes <= steps.size(); ++flushes) {
        expectBrokenOff(whole.text.size(), flushes);
    }
}

TEST(DocumentFailures, OfAFunctionBreakOffWhicheverCallFillsTheBatch)
{
    std::vector<Step> steps = stepsOfDocument(8, 2);
    std::string text;
    Document good(text);
    write(steps, good);
    steps.insert(steps.begin(), Step());
    for (std::size_t room = 0; room <= text.size(); ++room) {
        SCOPED_TRACE(room);
        // With the declaration and their own markup, two comments leave so much room in the batch.
        steps.front().call = [=](Document& d, Elements&) {
            d.comment(std::string(8192, 'x'));
            d.comment(std::string(8192 - 54 - room, 'x'));
        };
        std::string whole;
        Document toString(whole);
        write(steps, toString);
        std::string taken;
        bool isToFail = true;
        Document document([&](std::string_view bytes) {
            if (isToFail) {
                throw std::runtime_error("failing");
            }
            taken += bytes;
        });
        writeWithRepair(
            steps, document, [] {}, [&] { isToFail = false; });
        EXPECT_EQ(taken, whole);
    }
}

} // namespace

} // namespace tarn::tests

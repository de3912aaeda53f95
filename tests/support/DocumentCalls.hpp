// Any calls on a document and its elements, good ones and bad ones: what is not allowed is refused
// and changes nothing, and two parsers read back what went in.
#pragma once

#include "support/colliding_names.hpp"
#include "support/decoding_fault.hpp"
#include "support/difference.hpp"
#include "support/DocumentModel.hpp"
#include "support/expat_outline.hpp"
#include "support/Input.hpp"
#include "support/reference_utf8.hpp"
#include "support/xml_outline.hpp"

#include <tarn/document/Document.hpp>

#include <array>
#include <chrono>
#include <exception>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace tarn::tests {

/// Makes the calls that an input chooses on a document, and only the allowed ones on a second one.
/// The bytes of both must be the same.
class DocumentCalls
{
public:
    explicit DocumentCalls(Input input)
        : input(input), options(anyOptions()),
          subject(static_cast<World::Target>(this->input.below(3)), options),
          twin(World::Target::String, options), model(options.layout)
    {
        ids.fill(NONE);
    }

    /// @returns what is wrong and the calls that show it; nothing if there is no fault.
    std::string run()
    {
        while (!isOver()) {
            step();
        }
        if (fault.empty() && model.stage != Stage::Finished) {
            if (model.stage == Stage::BeforeRoot) {
                root(0, {"r"}, false);
            }
            finish();
        }
        return fault.empty() ? "" : fault + "\n  after\n" + trace + subject.received();
    }

private:
    using Stage = DocumentModel::Stage;
    using Text = document::Text;
    using Name = document::Name;
    using Namespace = document::Namespace;
    using Error = document::Error;
    using Element = document::Element;

    static constexpr std::size_t SLOTS = 6;
    static constexpr auto XML_URI = "http://www.w3.org/XML/1998/namespace";

    /// A document, its target, and variables for its elements.
    struct World
    {
        enum class Target : std::size_t
        {
            String,
            Stream,
            Function
        };

        World(Target target, document::Options options) : target(target), options(options)
        {
            begin();
        }

        void begin()
        {
            if (target == Target::String) {
                document.emplace(bytes, options);
            } else if (target == Target::Stream) {
                document.emplace(stream, options);
            } else {
                document.emplace([this](std::string_view more) { bytes += more; }, options);
            }
        }

        void reset()
        {
            forgotten = target == Target::String ? 0 : forgotten + received().size();
            document->reset();
        }

        /// Begins another document without those things that reset() could have kept.
        void beginAnew()
        {
            slots = {};
            document.reset();
            begin();
        }

        /// What the target has received of this document.
        std::string received() const { return (bytes + stream.str()).substr(forgotten); }

        Target target;
        document::Options options;
        std::string bytes;
        std::ostringstream stream;
        std::size_t forgotten = 0;
        std::optional<document::Document> document;
        std::array<std::optional<Element>, SLOTS> slots;
    };

    struct Value
    {
        std::variant<std::string, std::u16string, std::u8string, const char*, long long, double,
                     bool, std::chrono::sys_seconds>
            given;
        /// What it means, in UTF-8.
        std::string text;
        bool isNull = false;
        /// Whether something in it was replaced.
        bool isUnrepresentable = false;

        void give(const auto& call) const
        {
            std::visit([&](const auto& value) { call(Text(value)); }, given);
        }
        bool has(std::string_view part) const { return text.find(part) != std::string::npos; }
    };

    struct NameChoice
    {
        Name name;
        bool isWrong = false;
    };

    // Choices.

    document::Options anyOptions()
    {
        return {input.below(2) == 0 ? document::Layout::indented : document::Layout::none,
                input.below(4) == 0 ? document::Unrepresentable::replace
                                    : document::Unrepresentable::refuse,
                input.below(2) == 0};
    }

    struct NamespaceChoice
    {
        Namespace space;
        bool isWrong = false;
    };

    NamespaceChoice anyNamespace()
    {
        using Strings = std::pair<const char*, const char*>;
        static constexpr Strings RIGHT[] = {
            {"urn:a", ""},  {"urn:b", ""},  {"urn:c", ""},    {"urn:a", "p"},
            {"urn:a", "q"}, {"urn:c", "p"}, {"urn:d", "ns1"}, {"urn:?e&f='g'#", "\u00E9"}};
        static constexpr Strings WRONG[] = {
            {"", "p"},          {"a b", "p"},
            {"urn:<", "p"},     {"urn:e", "xml"},
            {"urn:e", "xmlns"}, {"urn:e", "1"},
            {"urn:e", "a:b"},   {XML_URI, ""},
            {XML_URI, "p"},     {"http://www.w3.org/2000/xmlns/", "p"}};
        if (input.below(16) == 0) {
            return {document::XML};
        }
        if (input.below(2) == 0) {
            const std::string_view uri = meetingText(static_cast<unsigned>(input.below(4)));
            const std::string_view prefix = meetingText(static_cast<unsigned>(input.below(4)));
            return {Namespace(uri, input.below(4) == 0 ? std::string_view() : prefix)};
        }
        const bool isWrong = input.below(16) == 0;
        const auto& [uri, prefix] = isWrong ? input.pick(WRONG) : input.pick(RIGHT);
        return {Namespace(uri, prefix), isWrong};
    }

    /// Of an instruction or a document type, most of the time.
    NameChoice anyPlainName() { return input.below(4) != 0 ? NameChoice{"p"} : anyName(); }

    NameChoice anyName()
    {
        static constexpr Namespace SPACES[] = {Namespace("urn:a"), Namespace("urn:a", "p"),
                                               Namespace("urn:h", "h")};
        static constexpr Name CHECKED[] = {"a",
                                           "b",
                                           "xmlns",
                                           {SPACES[0], "a"},
                                           {SPACES[1], "a"},
                                           {SPACES[2], "b"},
                                           {document::XML, "lang"}};
        static constexpr const char* RIGHT[] = {"a",   "b",    "c", "_-.1", "\u00E9\u4E2D",
                                                "xMl", "xmlns"};
        static constexpr const char* WRONG[] = {"", "1", "a:b", "a b", "a\xC3", "a<", "\u00B7"};
        if (input.below(4) == 0) {
            return {input.pick(CHECKED)};
        }
        const bool isWrong = input.below(32) == 0;
        const char* const local = isWrong ? input.pick(WRONG) : input.pick(RIGHT);
        if (input.below(2) == 0) {
            return {local, isWrong};
        }
        const NamespaceChoice choice = anyNamespace();
        return {{choice.space, local}, isWrong || choice.isWrong};
    }

    /// What remains of @p units when all that XML 1.0 does not have has been replaced.
    static Value textOf(std::u16string units, bool isIllFormed)
    {
        const auto isForbidden = [](char16_t unit) {
            return detail::classOf(unit) == text::FORBIDDEN;
        };
        Value value;
        value.isUnrepresentable = isIllFormed || std::ranges::any_of(units, isForbidden);
        std::ranges::replace_if(units, isForbidden, u'\uFFFD');
        value.text = referenceUtf8(units);
        return value;
    }

    static Value valueOf(const std::u16string& units)
    {
        // A surrogate without a partner does not come back from UTF-8.
        Value value = textOf(units, detail::referenceUtf16(referenceUtf8(units)).units != units);
        value.given = units;
        return value;
    }

    static Value valueOf(const std::string& bytes)
    {
        std::u16string units;
        bool isIllFormed = false;
        for (std::string_view rest = bytes; !rest.empty();) {
            const detail::DecodedText decoded = detail::referenceUtf16(rest);
            units += decoded.units;
            rest.remove_prefix(decoded.read);
            if (!rest.empty()) {
                isIllFormed = true;
                units += u'\uFFFD';
                rest.remove_prefix(illFormedLength(rest));
            }
        }
        Value value = textOf(units, isIllFormed);
        value.given = bytes;
        return value;
    }

    /// The longest beginning of a character at the beginning of @p bytes, or one byte.
    static std::size_t illFormedLength(std::string_view bytes)
    {
        for (std::size_t length = std::min<std::size_t>(3, bytes.size()); length > 1; --length) {
            for (const char* const missing : {"\x80", "\x80\x80"}) {
                const std::string whole = std::string(bytes.substr(0, length)) + missing;
                if (detail::referenceUtf16(whole).read == whole.size()) {
                    return length;
                }
            }
        }
        return 1;
    }

    Value anyValue()
    {
        using namespace std::chrono;
        static const Value TYPED[] = {
            {static_cast<const char*>(nullptr), "", true},
            {"a-z", "a-z"},
            {-7LL, "-7"},
            {std::numeric_limits<long long>::min(), "-9223372036854775808"},
            {0.1, "0.1"},
            {-std::numeric_limits<double>::infinity(), "-INF"},
            {true, "true"},
            {sys_seconds(days(20'000)), "2024-10-04T00:00:00Z"},
        };
        static constexpr std::string_view RIGHT[] = {
            "a",  "xyz", " ",      "\n",     "\t",         "<", "&",  "\"", "'",    ">",  "]]>",
            "]]", "-",   "\u00E9", "\u4E2D", "\U0001F600", "?", "\r", "--", "\r\n", "?>", "0"};
        static constexpr std::string_view WRONG[] = {
            {"\0", 1}, "\x01",         "\x1F",     "\uFFFE",   "\xC3",        "\xED\xA0\x80",
            "\x80",    "\xF0\x9F\x98", "\xC0\xAF", "\xE4\xB8", "\xF4\x90\x80"};
        constexpr std::size_t LONGEST_OF_ANY_UNITS = 100;
        const std::size_t form = input.below(16);
        if (form == 0) {
            return input.pick(TYPED);
        }
        if (form == 1) {
            return valueOf(input.text().substr(0, LONGEST_OF_ANY_UNITS));
        }
        std::string bytes;
        if (form == 2) {
            const std::u16string units = input.text().substr(0, LONGEST_OF_ANY_UNITS);
            bytes.assign(units.begin(), units.end());
        }
        if (form == 3 && input.below(8) == 0) {
            // More than is passed on at once.
            bytes.assign(64 * input.below(256), 'x');
        }
        for (std::size_t left = input.below(8); left > 0; --left) {
            bytes += input.below(64) == 0 ? input.pick(WRONG) : input.pick(RIGHT);
        }
        Value value = valueOf(bytes);
        if (input.below(4) == 0 && !value.isUnrepresentable) {
            value.given = detail::referenceUtf16(bytes).units;
        } else if (input.below(4) == 0) {
            value.given = std::u8string(bytes.begin(), bytes.end());
        }
        return value;
    }

    bool isOpen(std::size_t slot) { return model.find(ids.at(slot)) != nullptr; }

    /// A slot with an element, or NONE. Seldom one that has ended if another has not.
    std::size_t anySlot()
    {
        const std::size_t first = input.below(SLOTS);
        const bool mayHaveEnded = input.below(16) == 0;
        std::size_t best = NONE;
        for (std::size_t i = first; i < first + SLOTS; ++i) {
            const std::size_t slot = i % SLOTS;
            if (ids.at(slot) != NONE && (best == NONE || (isOpen(slot) && !isOpen(best)))) {
                best = slot;
                if (mayHaveEnded) {
                    break;
                }
            }
        }
        return best;
    }

    /// A slot to put an element in. Seldom one whose element this would end.
    std::size_t anySlotToFill()
    {
        const std::size_t first = input.below(SLOTS);
        for (std::size_t i = first; i < first + SLOTS && input.below(8) != 0; ++i) {
            if (!isOpen(i % SLOTS)) {
                return i % SLOTS;
            }
        }
        return first;
    }

    // Calls.

    bool isOver() const { return input.isEmpty() || !fault.empty(); }

    void fail(const std::string& what)
    {
        if (fault.empty()) {
            fault = what;
        }
    }

    /// Makes the call on the subject, and on its twin if it is allowed.
    /// @returns whether it was made.
    bool make(const std::string& what, bool isAllowed, const auto& call)
    {
        trace += "    " + what + (isAllowed ? "\n" : ", not allowed\n");
        try {
            call(subject);
            if (!isAllowed) {
                fail("a call is not refused");
                return false;
            }
            call(twin);
        } catch (const Error& error) {
            const std::string_view message = error.what();
            if (isAllowed || message.find(": ") == std::string_view::npos) {
                fail("a call is refused: " + std::string(message));
            }
            return false;
        }
        return true;
    }

    /// Makes a call on the element in @p slot.
    bool makeOn(std::size_t slot, const std::string& what, bool isAllowed, const auto& call)
    {
        return make("slot " + std::to_string(slot) + ": " + what,
                    isAllowed && model.find(ids.at(slot)) != nullptr,
                    [&](World& world) { call(*world.slots.at(slot)); });
    }

    bool isAllowed(const Value& value) const
    {
        return !value.isNull && (!value.isUnrepresentable ||
                                 options.unrepresentable == document::Unrepresentable::replace);
    }

    bool isComment(const Value& value) const
    {
        return isAllowed(value) && !value.has("--") && !value.text.ends_with('-') &&
               !value.has("\r");
    }

    bool isInstruction(const NameChoice& target, const Value& data) const
    {
        const std::string_view local = target.name.localName();
        const bool isXml = local == "xMl" || local == "xml";
        return !target.isWrong && !target.name.hasNamespace() && !isXml && isAllowed(data) &&
               !data.has("?>") && !data.has("\r") && data.text.find_first_of(" \t\n") != 0;
    }

    void root(std::size_t slot, Name name, bool isWrong)
    {
        if (make("root", !isWrong && model.stage == Stage::BeforeRoot,
                 [&](World& world) { world.slots.at(slot) = world.document->root(name); })) {
            put(slot, model.start(name));
        }
    }

    void child(std::size_t slot)
    {
        const std::size_t to = anySlotToFill();
        const NameChoice choice = anyName();
        const std::size_t parent = ids.at(slot);
        const bool isAllowed = !choice.isWrong && model.find(parent) != nullptr;
        if (make("slot " + std::to_string(slot) + ": child to " + std::to_string(to), isAllowed,
                 [&](World& world) {
                     world.slots.at(to) = world.slots.at(slot)->child(choice.name);
                 })) {
            model.content(parent);
            put(to, model.start(choice.name));
            for (std::size_t left = input.below(4); left > 0 && fault.empty(); --left) {
                input.below(3) == 0 ? declare(to) : attribute(to);
            }
        }
    }

    void declare(std::size_t slot)
    {
        const NamespaceChoice choice = anyNamespace();
        const Namespace& space = choice.space;
        DocumentModel::OpenElement* const element = model.find(ids.at(slot));
        const bool isOther =
            element != nullptr && space.prefix().empty() && space.uri() != element->defaultUri;
        const bool isAllowed = element != nullptr && !choice.isWrong && !element->hasContent &&
                               (!isOther || (element->hasPrefix && !element->declaresDefault));
        if (makeOn(slot, "declare", isAllowed, [&](Element& on) { on.declare(space); }) &&
            isOther) {
            element->defaultUri = space.uri();
            element->declaresDefault = true;
        }
    }

    void attribute(std::size_t slot)
    {
        const NameChoice choice = anyName();
        const Name& name = choice.name;
        const Value value = anyValue();
        DocumentModel::OpenElement* const element = model.find(ids.at(slot));
        const bool canBe =
            name.hasNamespace() ? !name.prefix().empty() : name.localName() != "xmlns";
        const bool isNew = element != nullptr && !element->hasContent &&
                           !element->attributes.contains(DocumentModel::expanded(name));
        if (makeOn(slot, "attribute", canBe && isNew && !choice.isWrong && isAllowed(value),
                   [&](Element& on) {
                       value.give([&](const Text& text) { on.attribute(name, text); });
                   }) &&
            element != nullptr) {
            model.attribute(*element, name, value.text);
        }
    }

    void text(std::size_t slot)
    {
        const Value value = anyValue();
        if (makeOn(slot, "text", isAllowed(value),
                   [&](Element& on) { value.give([&](const Text& text) { on.text(text); }); })) {
            model.mixed(ids.at(slot), value.text);
        }
    }

    void cdata(std::size_t slot)
    {
        const Value value = anyValue();
        if (makeOn(slot, "cdata", isAllowed(value),
                   [&](Element& on) { value.give([&](const Text& text) { on.cdata(text); }); })) {
            model.mixed(ids.at(slot), value.text);
        }
    }

    void base64(std::size_t slot)
    {
        const std::string data = anyValue().text.substr(0, input.below(8) == 0 ? 9000 : 4);
        const bool isNull = input.below(16) == 0;
        if (makeOn(slot, "base64", !isNull, [&](Element& on) {
                on.base64(isNull ? nullptr : data.data(), isNull ? 1 : data.size());
            })) {
            model.base64(ids.at(slot), data);
        }
    }

    /// Makes a call on the element in @p slot, or on the document if that is NONE.
    void makeOnEither(std::size_t slot, const std::string& what, bool isAllowed,
                      const std::string& outline, const auto& call)
    {
        if (slot == NONE) {
            if (make(what, isAllowed && isOutsideRoot(),
                     [&](World& world) { call(*world.document); })) {
                model.said += outline;
            }
        } else if (makeOn(slot, what, isAllowed, call)) {
            model.content(ids.at(slot));
            model.line(model.open.size());
            model.said += outline;
        }
    }

    void comment(std::size_t slot)
    {
        const Value value = anyValue();
        makeOnEither(slot, "comment", isComment(value), "<!--" + value.text + "-->",
                     [&](auto& on) { value.give([&](const Text& text) { on.comment(text); }); });
    }

    void instruction(std::size_t slot)
    {
        const NameChoice target = anyPlainName();
        const Value data = anyValue();
        makeOnEither(slot, "instruction", isInstruction(target, data),
                     "<?" + std::string(target.name.localName()) + ' ' + data.text + "?>",
                     [&](auto& on) {
                         data.give([&](const Text& text) { on.instruction(target.name, text); });
                     });
    }

    void raw(std::size_t slot)
    {
        using document::Fragment;
        static constexpr std::pair<const char*, const char*> TRUSTED[] = {
            {"&lt;", "<"},
            {"<!--c-->", "<!--c-->"},
            {"<![CDATA[x]]>", "x"},
            {"<b xmlns=\"\"/>", "<{}b></>"},
            {"", ""}};
        if (input.below(2) == 0) {
            const auto& [markup, outline] = input.pick(TRUSTED);
            if (makeOn(slot, "raw", true,
                       [markup = markup](Element& on) { on.raw(Fragment::trusted(markup)); })) {
                model.mixed(ids.at(slot), outline);
            }
        } else {
            const Value value = anyValue();
            const bool isAllowed = !value.isNull && !value.isUnrepresentable;
            if (makeOn(slot, "raw", isAllowed, [&](Element& on) {
                    value.give([&](const Text& text) { on.raw(Fragment::of(text)); });
                })) {
                model.mixed(ids.at(slot), value.text);
            }
        }
    }

    void add(std::size_t slot)
    {
        const NameChoice choice = anyName();
        const Value value = anyValue();
        if (makeOn(slot, "add", !choice.isWrong && isAllowed(value), [&](Element& on) {
                value.give([&](const Text& text) { on.add(choice.name, text); });
            })) {
            model.content(ids.at(slot));
            const std::size_t id = model.start(choice.name);
            model.mixed(id, value.text);
            model.end(id);
        }
    }

    void end(std::size_t slot)
    {
        if (makeOn(slot, "end", true, [](Element& on) { on.end(); })) {
            model.end(ids.at(slot));
        }
    }

    void doctype()
    {
        struct Identifiers
        {
            std::string_view publicId, systemId;
            bool isWrong = false;
        };
        static constexpr Identifiers IDENTIFIERS[] = {
            {"", ""},         {"", "a&<'\u00E9"}, {"-//A//B C", "a\"b"},
            {"p", "", true},  {"<", "s", true},   {"", "\"'", true},
            {"", "\r", true}, {"", "\x01", true}, {"", "\xFF", true},
        };
        const NameChoice choice = anyPlainName();
        const Identifiers identifiers = input.pick(IDENTIFIERS);
        const bool isAllowed = !choice.isWrong && !choice.name.hasNamespace() &&
                               !identifiers.isWrong && !model.hasDoctype &&
                               model.stage == Stage::BeforeRoot;
        if (make("doctype", isAllowed, [&](World& world) {
                world.document->doctype(choice.name, identifiers.publicId, identifiers.systemId);
            })) {
            model.hasDoctype = true;
            model.said += "<!DOCTYPE " + std::string(choice.name.localName()) + ' ' +
                          std::string(identifiers.publicId) + ' ' +
                          std::string(identifiers.systemId) + '>';
        }
    }

    bool isOutsideRoot() const
    {
        return model.stage == Stage::BeforeRoot || model.stage == Stage::AfterRoot;
    }

    void flush()
    {
        if (make("flush", model.stage != Stage::Finished,
                 [](World& world) { world.document->flush(); })) {
            compareBytes();
            if (outlineByExpat(subject.received()).starts_with('<')) {
                fail("the document looks complete");
            }
        }
    }

    void finish()
    {
        const bool isAllowed = model.stage == Stage::InRoot || model.stage == Stage::AfterRoot;
        if (make("finish", isAllowed, [](World& world) { world.document->finish(); })) {
            model.finish();
            const std::string bytes = subject.received();
            compareBytes();
            if (bytes.starts_with(R"(<?xml version="1.0" encoding="UTF-8"?>)") !=
                options.declaration) {
                fail("the declaration is missing, or too much");
            }
            fail(difference(outlineOfXml(bytes), model.said));
            fail(difference(outlineByExpat(bytes), model.said));
        }
    }

    void reset()
    {
        make("reset", true,
             [this](World& world) { &world == &subject ? world.reset() : world.beginAnew(); });
        model.reset();
    }

    void compareBytes() { fail(difference(subject.received(), twin.received())); }

    // Elements in slots.

    /// After an element with @p id has been assigned to @p slot.
    void put(std::size_t slot, std::size_t id)
    {
        const DocumentModel::OpenElement* const before = model.find(ids.at(slot));
        const DocumentModel::OpenElement* const after = model.find(id);
        if (before != nullptr && (after == nullptr || after < before)) {
            model.end(ids.at(slot));
        }
        ids.at(slot) = id;
        passing.at(slot) = std::uncaught_exceptions();
    }

    void move(std::size_t from, std::size_t to)
    {
        if (!isOpen(from) && isOpen(to)) {
            return; // the twin may have nothing to move
        }
        make("slot " + std::to_string(from) + " to " + std::to_string(to), true, [&](World& world) {
            if (world.slots.at(from)) {
                world.slots.at(to) = std::move(*world.slots.at(from));
            } else {
                world.slots.at(to).reset();
            }
        });
        if (from != to) {
            put(to, std::exchange(ids.at(from), MOVED_FROM));
            passing.at(to) = passing.at(from);
        }
    }

    void destroy(std::size_t slot)
    {
        make("destroy slot " + std::to_string(slot), true,
             [&](World& world) { world.slots.at(slot).reset(); });
        if (std::uncaught_exceptions() <= passing.at(slot)) {
            model.end(ids.at(slot));
        }
        ids.at(slot) = NONE;
    }

    /// A block with a variable for an element, which is left by an exception or without.
    void block()
    {
        struct Passing
        {
        };
        struct Variable
        {
            DocumentCalls& calls;
            std::size_t slot;
            std::size_t callsInDestructor;

            // NOLINTNEXTLINE(bugprone-exception-escape): what calls throw is caught
            ~Variable()
            {
                calls.steps(callsInDestructor);
                if (calls.ids.at(slot) != NONE) {
                    calls.destroy(slot);
                }
            }
        };
        constexpr std::size_t MOST_BLOCKS = 4;
        if (blocks == MOST_BLOCKS) {
            return;
        }
        ++blocks;
        try {
            const Variable variable{*this, anySlotToFill(), input.below(3)};
            steps(input.below(8));
            if (input.below(2) == 0) {
                trace += "    an exception\n";
                throw Passing();
            }
        } catch (const Passing&) {
            trace += "    caught\n";
        }
        --blocks;
    }

    void steps(std::size_t count)
    {
        for (; count > 0 && !isOver(); --count) {
            step();
        }
    }

    void step()
    {
        const std::size_t slot = anySlot();
        const bool isUsual = input.below(8) != 0;
        if (isUsual && model.stage == Stage::Finished) {
            reset();
        } else if (isUsual && isOutsideRoot()) {
            outsideRoot();
        } else if (slot == NONE || (isUsual && !isOpen(slot))) {
            finish();
        } else {
            inRoot(slot);
        }
    }

    void outsideRoot()
    {
        switch (input.below(8)) {
        case 0:
            return doctype();
        case 1:
            return comment(NONE);
        case 2:
            return instruction(NONE);
        case 3:
            return input.below(4) == 0 ? reset() : flush();
        default:
            if (model.stage == Stage::AfterRoot && input.below(2) != 0) {
                return finish();
            }
            const NameChoice choice = anyName();
            root(anySlotToFill(), choice.name, choice.isWrong);
        }
    }

    void inRoot(std::size_t slot)
    {
        using Calls = DocumentCalls;
        using Make = void (Calls::*)(std::size_t);
        static constexpr Make MAKE[] = {
            &Calls::child,   &Calls::child,       &Calls::child,   &Calls::child, &Calls::attribute,
            &Calls::declare, &Calls::instruction, &Calls::comment, &Calls::text,  &Calls::text,
            &Calls::cdata,   &Calls::base64,      &Calls::add,     &Calls::raw};
        const std::size_t choice = input.below(16);
        return choice == 0   ? block()
               : choice == 1 ? rareCall(slot)
                             : (this->*input.pick(MAKE))(slot);
    }

    void rareCall(std::size_t slot)
    {
        const std::size_t choice = input.below(8);
        const bool endsTheDocument = choice < 2 && input.below(4) == 0;
        return choice == 0   ? (endsTheDocument ? finish() : flush())
               : choice == 1 ? (endsTheDocument ? reset() : flush())
               : choice == 2 ? outsideRoot()
               : choice == 3 ? destroy(slot)
               : choice == 4 ? move(slot, anySlotToFill())
               : choice == 5 ? flush()
                             : end(slot);
    }

    /// In place of the number of an element, which are from 1.
    static constexpr std::size_t NONE = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t MOVED_FROM = 0;

    Input input;
    document::Options options;
    World subject;
    World twin;
    DocumentModel model;
    /// For each slot, the number of its element, and how many exceptions were passing when it
    /// began.
    std::array<std::size_t, SLOTS> ids;
    std::array<int, SLOTS> passing{};
    std::size_t blocks = 0;
    std::string fault;
    std::string trace;
};

/// Makes the calls that @p input chooses.
/// @returns what is wrong; nothing if there is no fault.
inline std::string faultOfDocumentCalls(Input input)
{
    return DocumentCalls(input).run();
}

} // namespace tarn::tests

// The least that a program can do that makes the same bytes in the same way: ready qualified names,
// one batch of UTF-16 and one conversion for each, with this project's kernels, and no namespaces,
// sinks or failures to care for. What a writer takes longer than this is what its interface costs.
#include "benchmarks/registry.hpp"

#include "corda/i18n/codecvt_ustring_to_string.hpp"
#include "tarn/xml/copy_if_plain.hpp"
#include "tarn/xml/text_escaping.hpp"
#include "text/utf16.hpp"

#include <algorithm>
#include <cstring>

namespace benchmarks {

namespace {

using namespace tarn::utils::detail;

class ByHandWriter
{
public:
    using String = std::u16string;

    ByHandWriter() { put(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>"); }

    void startElement(const Name<String>& name)
    {
        endStartTag();
        newLine();
        put(u"<");
        put(name.qualifiedName);
        openNames.push_back(&name.qualifiedName);
        isInStartTag = true;
    }

    void startElement(const Name<String>& name, const std::vector<Namespace<String>>& declared)
    {
        startElement(name);
        for (const Namespace<String>& space : declared) {
            putAttribute(space.declaration, space.uri);
        }
    }

    void attribute(const Name<String>& name, const String& value)
    {
        putAttribute(name.qualifiedName, value);
    }

    void text(const String& value)
    {
        endStartTag();
        putEscaped(value);
        isAfterEndTag = false;
    }

    void endElement()
    {
        const String& name = *openNames.back();
        openNames.pop_back();
        if (isInStartTag) {
            put(u"/>");
            isInStartTag = false;
        } else {
            if (isAfterEndTag) {
                newLine();
            }
            putEndTag(name);
        }
        isAfterEndTag = true;
    }

    void textElement(const Name<String>& name, const String& value)
    {
        endStartTag();
        newLine();
        put(u"<");
        put(name.qualifiedName);
        put(u">");
        putEscaped(value);
        putEndTag(name.qualifiedName);
        isAfterEndTag = true;
    }

    std::string_view finish()
    {
        convert();
        return target;
    }

private:
    static constexpr std::size_t CAPACITY = 8192;

    std::size_t room() const { return static_cast<std::size_t>(std::end(batch) - end); }

    char16_t* take(std::size_t length)
    {
        if (room() < length) {
            convert();
        }
        char16_t* const taken = end;
        end += length;
        return taken;
    }

    /// @p text must be shorter than the batch.
    void put(std::u16string_view text)
    {
        std::memcpy(take(text.size()), text.data(), text.size() * sizeof(char16_t));
    }

    void newLine()
    {
        constexpr std::size_t SPACES_PER_LEVEL = 2;
        const std::size_t spaces = openNames.size() * SPACES_PER_LEVEL;
        char16_t* const line = take(1 + spaces);
        *line = u'\n';
        std::fill_n(line + 1, spaces, u' ');
    }

    void endStartTag()
    {
        if (isInStartTag) {
            put(u">");
            isInStartTag = false;
            isAfterEndTag = false;
        }
    }

    void putAttribute(const String& name, const String& value)
    {
        put(u" ");
        put(name);
        put(u"=\"");
        putEscaped(value);
        put(u"\"");
    }

    void putEndTag(const String& name)
    {
        put(u"</");
        put(name);
        put(u">");
    }

    void putEscaped(std::u16string_view value)
    {
        if (value.size() <= LONGEST_SHORT_VALUE && value.size() <= room()) {
            if (char16_t* const copied = copyIfPlain(value, end)) {
                end = copied;
                return;
            }
        }
        const char16_t* unread = value.begin();
        while (unread != value.end()) {
            if (room() < ESCAPING_MARGIN) {
                convert();
            }
            const auto run =
                escape(unread, value.end(), end, std::end(batch), REPLACEMENTS_OF_XML_1_0);
            unread = run.read;
            end = run.written;
        }
    }

    void convert()
    {
        const bool endsInHalf = end != batch && tarn::text::isHighSurrogate(end[-1]);
        const auto length = static_cast<std::size_t>(end - batch) - (endsInHalf ? 1 : 0);
        target.append(converter.do_convert(batch, length));
        end = std::copy(batch + length, end, batch);
    }

    const corda::i18n::codecvt_ustring_to_string converter{"UTF-8", true};
    std::string target;
    std::vector<const String*> openNames;
    bool isInStartTag = false;
    bool isAfterEndTag = false;
    char16_t* end = batch; // of what is in the batch
    char16_t batch[CAPACITY];
};

const Registration<ByHandWriter> registration("by-hand", "");

} // namespace

} // namespace benchmarks

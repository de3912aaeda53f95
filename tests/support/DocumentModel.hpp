// What a document says after the calls that were made on it, kept as plainly as possible.
#pragma once

#include <tarn/document/Document.hpp>

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::tests {

/// Knows only calls that are allowed, and who asks may know which those are.
class DocumentModel
{
public:
    struct OpenElement
    {
        std::size_t id;
        std::string defaultUri; ///< The default namespace inside.
        bool hasPrefix = false;
        bool declaresDefault = false;
        bool hasContent = false;
        bool isMixed = false;
        bool hasLines = false;
        bool isInBase64 = false;
        std::string base64Data = {};
        std::set<std::string> attributes = {};
    };

    enum class Stage
    {
        BeforeRoot,
        InRoot,
        AfterRoot,
        Finished
    };

    static std::string expanded(const document::Name& name)
    {
        return '{' + std::string(name.uri()) + '}' + std::string(name.localName());
    }

    explicit DocumentModel(document::Layout layout) : layout(layout) {}

    /// @returns nothing if the element has ended.
    OpenElement* find(std::size_t id)
    {
        const auto found = std::ranges::find(open, id, &OpenElement::id);
        return found == open.end() ? nullptr : &*found;
    }

    /// @returns the number of the element, which no other ever has.
    std::size_t start(const document::Name& name)
    {
        line(open.size());
        said += '<' + expanded(name);
        OpenElement element{++lastId, open.empty() ? "" : open.back().defaultUri};
        element.isMixed = !open.empty() && open.back().isMixed;
        element.hasPrefix = !name.prefix().empty();
        if (!element.hasPrefix) {
            element.declaresDefault = element.defaultUri != name.uri();
            element.defaultUri = name.uri();
        }
        open.push_back(element);
        stage = Stage::InRoot;
        return lastId;
    }

    void end(std::size_t id)
    {
        if (find(id) != nullptr) {
            endInside(id);
            endInnermost();
        }
    }

    void attribute(OpenElement& element, const document::Name& name, std::string_view value)
    {
        element.attributes.insert(expanded(name));
        said += ' ' + expanded(name) + "=\"" + std::string(value) + '"';
    }

    void mixed(std::size_t id, std::string_view text)
    {
        content(id);
        open.back().isMixed = true;
        said += text;
    }

    void base64(std::size_t id, std::string_view data)
    {
        if (open.back().id != id || !open.back().isInBase64) {
            mixed(id, "");
        }
        open.back().isInBase64 = true;
        open.back().base64Data += data;
    }

    /// Ends what is open in the element and its start tag.
    void content(std::size_t id)
    {
        endInside(id);
        endBase64();
        said += open.back().hasContent ? "" : ">";
        open.back().hasContent = true;
    }

    /// Begins a line for a comment or an instruction; a parser says nothing of those outside the
    /// root.
    void line(std::size_t depth)
    {
        if (layout == document::Layout::indented && !open.empty() && !open.back().isMixed) {
            said += '\n' + std::string(2 * depth, ' ');
            open.back().hasLines = true;
        }
    }

    void finish()
    {
        while (!open.empty()) {
            endInnermost();
        }
        stage = Stage::Finished;
    }

    void reset()
    {
        open.clear();
        said.clear();
        stage = Stage::BeforeRoot;
        hasDoctype = false;
    }

    Stage stage = Stage::BeforeRoot;
    bool hasDoctype = false;
    std::vector<OpenElement> open;
    /// As outlineOfXml().
    std::string said;

private:
    void endInside(std::size_t id)
    {
        while (open.back().id != id) {
            endInnermost();
        }
    }

    void endInnermost()
    {
        endBase64();
        if (!open.back().hasContent) {
            said += '>';
        } else if (open.back().hasLines) {
            line(open.size() - 1);
        }
        said += "</>";
        open.pop_back();
        stage = open.empty() ? Stage::AfterRoot : stage;
    }

    void endBase64()
    {
        static constexpr std::string_view DIGITS =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        unsigned bits = 0;
        int count = 0;
        for (const char byte : open.back().base64Data) {
            bits = bits << 8 | static_cast<unsigned char>(byte);
            for (count += 8; count >= 6; count -= 6) {
                said += DIGITS[bits >> (count - 6) & 63];
            }
        }
        if (count > 0) {
            said += DIGITS[bits << (6 - count) & 63];
            said += count == 2 ? "==" : "=";
        }
        open.back().base64Data.clear();
        open.back().isInBase64 = false;
    }

    document::Layout layout;
    std::size_t lastId = 0;
};

} // namespace tarn::tests

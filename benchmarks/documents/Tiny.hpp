// Very small documents, each written by a new writer to a new target.
#pragma once

#include "benchmarks/text_forms.hpp"

namespace benchmarks {

template <class String>
class Tiny
{
public:
    static constexpr const char* NAME = "tiny";
    static constexpr int COPIES = 1000;

    template <class Writer>
    void write(Writer& writer) const
    {
        writer.startElement(root);
        writer.attribute(id, number);
        writer.textElement(state, ready);
        writer.endElement();
    }

private:
    Name<String> root{u"message"};
    Name<String> id{u"id"};
    Name<String> state{u"state"};
    String number = convert<String>(u"4711");
    String ready = convert<String>(u"ready");
};

/// The same, written one after the other by one writer, which each library clears in its own way.
template <class String>
struct TinyAgain : Tiny<String>
{
    static constexpr const char* NAME = "tiny-again";
    static constexpr bool USES_WRITER_AGAIN = true;
};

} // namespace benchmarks

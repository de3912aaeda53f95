// A program that uses only the installed interface of the writer.
#include <tarn/utils/num_to_string.hpp>
#include <tarn/xml/XmlWriter.hpp>

#include <iostream>
#include <sstream>
#include <string>

namespace {

// Written before main, from the constructor of a static object.
const std::string early = [] {
    std::string xml;
    tarn::utils::XmlWriter writer(xml);
    writer.writeStartDocument();
    writer.writeStartElement(u"early", u"urn:early", u"e");
    writer.writeAttribute(u"lang", u"http://www.w3.org/XML/1998/namespace", u"en");
    writer.writeValue(u"\x01<");
    writer.writeEndDocument();
    return xml;
}();

} // namespace

int main()
{
    std::ostringstream stream;
    tarn::utils::XmlWriter writer(stream);
    writer.writeStartElement(u"late", u"", u"");
    writer.writeAttribute(u"count", tarn::utils::num_to_string(42));
    writer.writeEndDocument();
    const bool isRight = early == "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                  "<e:early xmlns:e=\"urn:early\" xml:lang=\"en\">&lt;</e:early>" &&
                         stream.str() == "\n<late count=\"42\"/>";
    std::cout << (isRight ? "as expected" : "wrong:\n" + early + stream.str()) << '\n';
    return isRight ? 0 : 1;
}

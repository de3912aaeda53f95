#include <tarn/xml/XmlWriter.hpp>

#include <gtest/gtest.h>

#include <string>

namespace {

using tarn::utils::XmlWriter;

TEST(XmlWriter, WritesADocument)
{
    std::string xml;
    XmlWriter writer(xml);
    writer.writeStartDocument();
    writer.writeStartElement(u"root", u"urn:a", u"");
    writer.writeAttribute(u"id", u"7");
    writer.writeValue(u"a<b");
    writer.writeEndDocument();
    EXPECT_EQ(xml, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                   "<ns1:root xmlns:ns1=\"urn:a\" id=\"7\">a&lt;b</ns1:root>");
}

} // namespace

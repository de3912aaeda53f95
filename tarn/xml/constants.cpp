#include "tarn/xml/constants.hpp"

#include "tarn/xml/XmlWriter.hpp"

namespace tarn::utils {

// Built before any other static object, so that a program that links the library statically can use
// a writer in the constructors of its own static objects.

[[gnu::init_priority(101)]] const std::u16string detail::NONE;
[[gnu::init_priority(101)]] const std::u16string XML_PREFIX = u"xml";
[[gnu::init_priority(101)]] const std::u16string XMLNS_PREFIX = u"xmlns";
[[gnu::init_priority(101)]] const std::u16string XML_NAMESPACE =
    u"http://www.w3.org/XML/1998/namespace";
[[gnu::init_priority(101)]] const std::u16string XMLNS_NAMESPACE = u"http://www.w3.org/2000/xmlns/";

[[gnu::init_priority(101)]] const std::u16string XmlWriter::DEFAULT_VERSION = u"1.0";

} // namespace tarn::utils

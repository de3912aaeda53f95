#include "tarn/xml/XmlWriter.hpp"

#include "tarn/xml/constants.hpp"
#include "tarn/xml/Sink.hpp"
#include "tarn/xml/XmlWriterImpl.hpp"

#include <cassert>
#include <functional>
#include <memory>

namespace tarn::utils {

using detail::NONE;

namespace {

using Text = std::u16string;

/// Calls @p OPERATION with the caller's UTF-16 string open for it.
template <auto OPERATION, class... Arguments>
[[gnu::noinline]] void callOverTarget(XmlWriter::Impl& impl, const Arguments&... arguments)
{
    const auto target = impl.openTarget();
    std::invoke(OPERATION, impl, arguments...);
}

/// The same with arguments of which at least one is this string itself: a copy takes its place,
/// since the string changes with each piece that is written.
template <auto OPERATION, class... Arguments>
[[gnu::noinline, gnu::cold]] void callWithCopy(XmlWriter::Impl& impl, const Arguments&... arguments)
{
    Text copy;
    ((impl.isTarget(arguments) ? void(copy = arguments) : void()), ...);
    callOverTarget<OPERATION>(impl, (impl.isTarget(arguments) ? copy : arguments)...);
}

/// Calls @p OPERATION with @p arguments as they are now.
template <auto OPERATION, class... Arguments>
void call(XmlWriter::Impl* impl, const Arguments&... arguments)
{
    assert(impl != nullptr && "a call on an XmlWriter that was moved from");
    if (!impl->isOverTarget()) {
        std::invoke(OPERATION, *impl, arguments...);
    } else if ((impl->isTarget(arguments) || ...)) [[unlikely]] {
        callWithCopy<OPERATION>(*impl, arguments...);
    } else {
        callOverTarget<OPERATION>(*impl, arguments...);
    }
}

} // namespace

XmlWriter::XmlWriter(std::u16string& output) : impl(new Impl(std::make_unique<UStringSink>(output)))
{
}

XmlWriter::XmlWriter(std::string& output) : impl(new Impl(std::make_unique<StdStringSink>(output)))
{
}

XmlWriter::XmlWriter(std::ostream& output) : impl(new Impl(std::make_unique<StreamSink>(output))) {}

XmlWriter::~XmlWriter()
{
    delete impl;
}

void XmlWriter::writeStartDocument(const std::u16string& version)
{
    call<&Impl::writeStartDocument>(impl, version);
}

void XmlWriter::writeEndDocument()
{
    call<&Impl::writeEndDocument>(impl);
}

void XmlWriter::writeRawXml(const std::u16string& xml)
{
    call<&Impl::writeRawXml>(impl, xml);
}

void XmlWriter::writeValue(const std::u16string& value)
{
    call<&Impl::writeValue>(impl, value);
}

void XmlWriter::writeStartElement(const std::u16string& localName,
                                  const std::u16string& namespaceUri, const std::u16string& prefix)
{
    call<&Impl::writeStartElement>(impl, localName, namespaceUri, prefix);
}

void XmlWriter::writeStartElementClose()
{
    call<&Impl::writeStartElementClose>(impl);
}

void XmlWriter::writeEndElement()
{
    call<&Impl::writeEndElement>(impl);
}

void XmlWriter::writeElement(const std::u16string& localName, const std::u16string& namespaceUri,
                             const std::u16string& prefix, const std::u16string& value)
{
    call<&Impl::writeElement>(impl, localName, namespaceUri, prefix, value);
}

void XmlWriter::writeElement(const std::u16string& localName, const std::u16string& namespaceUri,
                             const std::u16string& value)
{
    writeElement(localName, namespaceUri, NONE, value);
}

void XmlWriter::writeElement(const std::u16string& localName, const std::u16string& value)
{
    writeElement(localName, NONE, NONE, value);
}

void XmlWriter::writeEmptyElement(const std::u16string& localName,
                                  const std::u16string& namespaceUri, const std::u16string& prefix)
{
    call<&Impl::writeEmptyElement>(impl, localName, namespaceUri, prefix);
}

void XmlWriter::writeStartAttribute(const std::u16string& localName,
                                    const std::u16string& namespaceUri,
                                    const std::u16string& prefix)
{
    call<&Impl::writeStartAttribute>(impl, localName, namespaceUri, prefix);
}

void XmlWriter::writeEndAttribute()
{
    call<&Impl::writeEndAttribute>(impl);
}

void XmlWriter::writeAttribute(const std::u16string& localName, const std::u16string& namespaceUri,
                               const std::u16string& prefix, const std::u16string& value)
{
    call<&Impl::writeAttribute>(impl, localName, namespaceUri, prefix, value);
}

void XmlWriter::writeAttribute(const std::u16string& localName, const std::u16string& namespaceUri,
                               const std::u16string& value)
{
    writeAttribute(localName, namespaceUri, NONE, value);
}

void XmlWriter::writeAttribute(const std::u16string& localName, const std::u16string& value)
{
    writeAttribute(localName, NONE, NONE, value);
}

void XmlWriter::writeNamespace(const std::u16string& namespaceUri, const std::u16string& prefix)
{
    call<&Impl::writeNamespace>(impl, namespaceUri, prefix);
}

void XmlWriter::writeDefaultNamespace(const std::u16string& namespaceUri)
{
    writeAttribute(XMLNS_PREFIX, namespaceUri);
}

void XmlWriter::registerDefaultNamespace(const std::u16string& namespaceUri)
{
    call<&Impl::registerPrefix>(impl, namespaceUri, NONE);
}

} // namespace tarn::utils

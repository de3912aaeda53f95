// Logs events to a stream: each event reaches the stream as soon as it is logged, so that a log
// that is never closed lacks nothing but its last line.
#include <tarn/xml/XmlWriter.hpp>

#include <iostream>
#include <string>

namespace {

const std::u16string NONE;

/// Text is handed to a stream in batches and by `writeEndDocument`, which ends every open element.
/// So each event is a whole document to the writer, and the tags of the element around all events
/// are written raw.
class EventLog
{
public:
    explicit EventLog(std::ostream& output) : writer(output)
    {
        writer.writeStartDocument();
        writer.writeRawXml(u"\n<log>");
        writer.writeEndDocument();
    }

    void add(const std::u16string& time, const std::u16string& level, const std::u16string& message)
    {
        writer.writeStartElement(u"event", NONE, NONE);
        writer.writeAttribute(u"time", time);
        writer.writeAttribute(u"level", level);
        writer.writeValue(message);
        writer.writeEndDocument();
    }

    void close()
    {
        writer.writeRawXml(u"\n</log>\n");
        writer.writeEndDocument();
    }

private:
    tarn::utils::XmlWriter writer;
};

} // namespace

int main()
{
    EventLog log(std::cout);
    log.add(u"2026-11-24T09:15:02Z", u"info", u"opened \"tracks & waypoints\"");
    log.add(u"2026-11-24T09:15:03Z", u"warning", u"3 < 5 points\tin segment \u2116\u00A07");
    log.add(u"2026-11-24T09:15:04Z", u"error", u"bad header: \x01\x02\x1B[31mRIFF");
    log.close();
    return std::cout ? 0 : 1;
}

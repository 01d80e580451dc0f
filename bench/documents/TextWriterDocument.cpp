#include "TextWriterDocument.h"

#include <libxml/xmlwriter.h>

#include <cstdlib>
#include <memory>
#include <span>

namespace
{

const xmlChar* Xml(const char* text)
{
    return reinterpret_cast<const xmlChar*>(text);
}

void Check(int result)
{
    if (result < 0)
    {
        std::abort();
    }
}

std::string Escaped(const std::string& text)
{
    if (text.find_first_of("&<>") == std::string::npos)
    {
        return text;
    }
    std::string escaped;
    for (const char unit : text)
    {
        switch (unit)
        {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        default:
            escaped += unit;
        }
    }
    return escaped;
}

/// The document's kinds of values in terms of the text writer.
class CTextWriter
{
public:
    explicit CTextWriter(xmlBuffer* buffer) : m_writer(xmlNewTextWriterMemory(buffer, 0)) {}
    CTextWriter(const CTextWriter&) = delete;
    CTextWriter& operator=(const CTextWriter&) = delete;
    ~CTextWriter() { xmlFreeTextWriter(m_writer); }

    void Open(const char* name) { Check(xmlTextWriterStartElement(m_writer, Xml(name))); }
    void Close() { Check(xmlTextWriterFullEndElement(m_writer)); }
    void Cdata(const char* name, const std::string& text)
    {
        Open(name);
        Check(xmlTextWriterWriteCDATA(m_writer, Xml(Escaped(text).c_str())));
        Close();
    }
    void Raw(const char* name, const std::string& text)
    {
        Open(name);
        Check(xmlTextWriterWriteRaw(m_writer, Xml(text.c_str())));
        Close();
    }
    void Number(const char* name, std::uint32_t value)
    {
        Check(xmlTextWriterWriteFormatElement(
            m_writer, Xml(name), "%d", static_cast<std::int32_t>(value)));
    }
    void Flag(const char* name, bool value) { Raw(name, value ? "TRUE" : "FALSE"); }
    void Time(const char* name, const int (&time)[6])
    {
        Check(xmlTextWriterWriteFormatElement(m_writer,
                                              Xml(name),
                                              "%02d/%02d/%04d %02d:%02d:%02d",
                                              time[0],
                                              time[1],
                                              time[2],
                                              time[3],
                                              time[4],
                                              time[5]));
    }
    void Hex(const char* name, const std::vector<std::uint8_t>& bytes)
    {
        Open(name);
        if (!bytes.empty()) // the text writer refuses an empty block
        {
            Check(xmlTextWriterWriteBinHex(m_writer,
                                           reinterpret_cast<const char*>(bytes.data()),
                                           0,
                                           static_cast<int>(bytes.size())));
        }
        Close();
    }
    void HexWithSize(const char* name, const char* sizeName, const std::vector<std::uint8_t>& bytes)
    {
        Hex(name, bytes);
        Number(sizeName, static_cast<std::uint32_t>(bytes.size()));
    }

private:
    xmlTextWriter* m_writer;
};

void WriteMeeting(CTextWriter& writer, const NarrowMeeting& meeting)
{
    writer.Open("appointment");
    writer.Number("subKey", meeting.subKey);
    writer.Cdata("subject", meeting.subject);
    writer.Cdata("location", meeting.location);
    writer.Cdata("description", meeting.description);
    writer.Cdata("hostName", meeting.hostName);
    writer.Cdata("hostEmail", meeting.hostEmail);
    writer.Number("duration", meeting.duration);
    writer.Number("meetStatus", meeting.meetingStatus);
    writer.Flag("isRecurrent", meeting.isRecurring);
    writer.Number("recurrentType", static_cast<std::uint32_t>(meeting.recurrenceType));
    writer.Raw("recurrentPattern", meeting.recurrencePattern);
    writer.Raw("profile", meeting.profileName);
    writer.Raw("store", meeting.storeName);
    writer.Flag("isAllDayEvent", meeting.isAllDay);
    writer.Number("responseStatus", meeting.responseStatus);
    writer.Number("busyStatus", meeting.busyStatus);
    writer.Cdata("tlvcOIEx", meeting.calendarText);
    writer.Cdata("desktoolsproperty", meeting.deskToolsProperty);
    writer.Cdata("UCCapabilities", meeting.capabilities);
    writer.Time("startTime", meeting.startTime);
    writer.Time("endTime", meeting.endTime);
    writer.Time("firstTime", meeting.firstTime);
    writer.HexWithSize("recStateEntryID", "recStateIDSize", meeting.recurrenceState);
    writer.HexWithSize("timeZoneEntryID", "timeZoneIDSize", meeting.timeZone);
    writer.HexWithSize("entryID", "entryIDSize", meeting.entryId);
    writer.HexWithSize("instanceEntryID", "instanceIDSize", meeting.instanceKey);
    writer.HexWithSize("storeEntryID", "storeIDSize", meeting.storeEntryId);
    writer.Raw("UId", meeting.uid);
    writer.Cdata("xaltdescription", meeting.htmlBody);
    writer.Open("attendees");
    for (const NarrowAttendee& attendee : meeting.attendees)
    {
        writer.Open("attendee");
        writer.Cdata("name", attendee.name);
        writer.Cdata("email", attendee.email);
        writer.Number("attendType", attendee.recipientFlags);
        writer.Number("recipType", attendee.recipientType);
        writer.Number("responseType", attendee.trackStatus);
        writer.Close();
    }
    writer.Close();
    writer.Close();
}

} // namespace

std::string TextWriterDocument(const std::vector<NarrowMeeting>& meetings)
{
    const std::unique_ptr<xmlBuffer, void (*)(xmlBuffer*)> buffer(xmlBufferCreate(), xmlBufferFree);
    {
        CTextWriter writer(buffer.get());
        writer.Open("appointments");
        for (const NarrowMeeting& meeting : meetings)
        {
            WriteMeeting(writer, meeting);
        }
        writer.Close();
    }
    return {reinterpret_cast<const char*>(xmlBufferContent(buffer.get())),
            static_cast<std::size_t>(xmlBufferLength(buffer.get()))};
}

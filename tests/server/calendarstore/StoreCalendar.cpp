#include "StoreCalendar.h"

namespace
{

constexpr const char* kUtcZone = R"({ "timeZone": { "bias": 0 } })";

std::string Quoted(const std::string& text)
{
    return "\"" + text + "\"";
}

std::string Joined(const std::vector<std::string>& parts)
{
    std::string all;
    for (const std::string& part : parts)
    {
        all += (all.empty() ? "" : ",\n") + part;
    }
    return all;
}

/// What a message and an embedded one have in common, behind their own keys.
std::string Content(const StoreItem& item)
{
    std::vector<std::string> properties;
    for (const auto& [key, json] : item.properties)
    {
        properties.push_back(Quoted(key) + ": " + json);
    }
    return "\"class\": " + Quoted(item.messageClass) + ", \"properties\": { " + Joined(properties) +
           " }, \"recipients\": [" + Joined(item.recipients) + "], \"attachments\": [" +
           Joined(item.attachments) + "]";
}

} // namespace

StoreItem& StoreItem::Set(const std::string& key, const std::string& json)
{
    properties[key] = json;
    return *this;
}

StoreItem& StoreItem::SetText(const std::string& key, const std::string& text)
{
    return Set(key, Quoted(text));
}

StoreItem& StoreItem::SetTimes(const std::string& start, const std::string& end)
{
    SetText("PidLidAppointmentStartWhole", start);
    return SetText("PidLidAppointmentEndWhole", end);
}

std::string StoreItem::Json() const
{
    return "{ \"id\": " + std::to_string(id) + ", \"folder\": " + std::to_string(folder) + ", " +
           Content(*this) + " }";
}

std::string DailyRecurrence(const std::string& first,
                            const std::string& last,
                            const std::string& modified)
{
    return R"({ "recurrence": { "frequency": "daily", "start": )" + Quoted(first) +
           R"(, "startMinute": 540, "endMinute": 600, "end": { "until": )" + Quoted(last) +
           R"( }, "modified": [)" + modified + "] } }";
}

std::string SmtpRecipient(const std::string& name,
                          const std::string& email,
                          int flags,
                          int trackStatus)
{
    return R"({ "PR_RECIPIENT_TYPE": 1, "PR_ADDRTYPE_W": "SMTP", "PR_DISPLAY_NAME_W": )" +
           Quoted(name) + R"(, "PR_EMAIL_ADDRESS_W": )" + Quoted(email) +
           R"(, "PR_SMTP_ADDRESS_W": )" + Quoted(email) + R"(, "PR_RECIPIENT_FLAGS": )" +
           std::to_string(flags) + R"(, "PR_RECIPIENT_TRACKSTATUS": )" +
           std::to_string(trackStatus) + " }";
}

std::string DirectoryRecipient(const std::string& name, const std::string& address, int flags)
{
    return R"({ "PR_RECIPIENT_TYPE": 1, "PR_ADDRTYPE_W": "EX", "PR_DISPLAY_NAME_W": )" +
           Quoted(name) + R"(, "PR_EMAIL_ADDRESS_W": )" + Quoted(address) +
           R"(, "PR_RECIPIENT_FLAGS": )" + std::to_string(flags) + " }";
}

std::string EmbeddedMessage(const StoreItem& message)
{
    return R"({ "properties": { "PR_ATTACH_METHOD": 5 }, "message": { )" + Content(message) +
           " } }";
}

StoreItem& CStoreCalendar::Add(const std::string& subject,
                               const std::string& start,
                               const std::string& end,
                               int folder)
{
    StoreItem item;
    item.id = ++m_lastId;
    item.folder = folder;
    item.SetText("PR_SUBJECT_W", subject).SetText("PR_BODY_W", "body");
    item.SetText("PR_BODY_HTML_W", "<p>body</p>").Set("PidLidRecurring", "false");
    item.SetTimes(start, end);
    return m_items[item.id] = item;
}

StoreItem& CStoreCalendar::AddDaily(const std::string& subject,
                                    const std::string& first,
                                    const std::string& last,
                                    const std::string& modified)
{
    StoreItem& item = Add(subject, first + "T09:00:00Z", first + "T10:00:00Z");
    item.Set("PidLidRecurring", "true").Set("PidLidRecurrenceType", "1");
    item.SetText("PidLidClipStart", first + "T00:00:00Z");
    item.SetText("PidLidClipEnd", last + "T00:00:00Z");
    item.Set("PidLidTimeZoneStruct", kUtcZone);
    item.Set("PidLidAppointmentRecur", DailyRecurrence(first, last, modified));
    return item;
}

StoreItem& CStoreCalendar::Item(int id)
{
    return m_items.at(id);
}

void CStoreCalendar::Remove(int id)
{
    m_items.erase(id);
}

std::string CStoreCalendar::Text()
{
    std::vector<std::string> messages;
    messages.reserve(m_items.size());
    for (const auto& [id, item] : m_items)
    {
        messages.push_back(item.Json());
    }
    // The server looks its named properties up once for the process, so that every document has to
    // give them the same numbers.
    return R"({ "format": "mapistore", "version": 1, "revision": )" + std::to_string(++m_revision) +
           R"(, "nextId": )" + std::to_string(m_lastId + 1) + R"(,
  "namedIds": {
    "PSETID_Appointment:0x820D": "0x8100", "PSETID_Appointment:0x820E": "0x8101",
    "PSETID_Appointment:0x8235": "0x8102", "PSETID_Appointment:0x8236": "0x8103",
    "PSETID_Appointment:0x8223": "0x8104", "PSETID_Appointment:0x8216": "0x8105",
    "PSETID_Appointment:0x8231": "0x8106", "PSETID_Appointment:0x8232": "0x8107"
  },
  "profiles": [ { "name": "Demo", "default": true, "identity": 40, "stores": [1] } ],
  "stores": [ { "id": 1, "name": )" +
           Quoted(storeName) + R"(, "uid": "5D1F6A0B93C84E27A1B0C2D3E4F50617", "default": true,
    "personal": )" +
           (isPersonal ? "true" : "false") + R"(, "tableIdentifiers": )" +
           Quoted(tableIdentifiers) + R"(,
    "folders": [
      { "id": 3, "parent": null, "name": "", "role": "root" },
      { "id": 4, "parent": 3, "name": "Top", "role": "ipmSubtree" },
      { "id": 5, "parent": 4, "name": "Inbox", "class": "IPF.Note", "role": "inbox" },
      { "id": 9, "parent": 4, "name": "Calendar", "class": "IPF.Appointment", "role": "calendar" },
      { "id": 10, "parent": 9, "name": "Team", "class": "IPF.Appointment" },
      { "id": 11, "parent": 9, "name": "Rooms", "class": "IPF.Appointment" }
    ],
    "messages": [)" +
           Joined(messages) + R"(] } ],
  "addressBook": { "uid": "AD0F6A0B93C84E27A1B0C2D3E4F50619",
    "containers": [ { "id": 30, "parent": null, "properties": { "PR_DISPLAY_NAME_W": "Global" } } ],
    "entries": [ { "id": 40, "containers": [30],
      "properties": { "PR_DISPLAY_NAME_W": "Ada Quist", "PR_ADDRTYPE_W": "SMTP",
        "PR_GIVEN_NAME_W": "Ada", "PR_SURNAME_W": "Quist",
        "PR_EMAIL_ADDRESS_W": "ada.quist@nordlys.example",
        "PR_SMTP_ADDRESS_W": "ada.quist@nordlys.example" } } ] } })";
}

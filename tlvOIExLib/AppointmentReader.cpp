#include <cwctype>

#include "ComRef.h"
#include "GlobalObjectId.h"
#include "MapiMemory.h"
#include "MAPIMessageBase.h"
#include "MapiUtil.h"
#include "Minutes1601.h"
#include "NarrowText.h"
#include "PropertySets.h"
#include "PropValue.h"
#include "Trace.h"

namespace
{

constexpr const char* kFunction = "CMAPIMessageBase::GetMAPIAppointmentInfo";

// PSETID_Appointment. Source: [MS-OXPROPS].
constexpr long kLocation = 0x8208;
constexpr long kBusyStatus = 0x8205;
constexpr long kStartWhole = 0x820D;
constexpr long kEndWhole = 0x820E;
constexpr long kDuration = 0x8213;
constexpr long kSubType = 0x8215;
constexpr long kRecur = 0x8216;
constexpr long kStateFlags = 0x8217;
constexpr long kResponseStatus = 0x8218;
constexpr long kRecurring = 0x8223;
constexpr long kRecurrenceType = 0x8231;
constexpr long kRecurrencePattern = 0x8232;
constexpr long kTimeZoneStruct = 0x8233;
// PSETID_Meeting.
constexpr long kGlobalObjectId = 0x3;

// Fixed numbers in the named range: a store that maps its names in the usual order answers them
// without a name being resolved. One that does not has the named property asked next.
constexpr ULONG kFixedEndTag = 0x80140040;
constexpr ULONG kFixedDurationTag = 0x80E00003;

// The HTML body is wanted as 8-bit text, not as the bytes that the store keeps.
constexpr ULONG kHtmlAsText = 0x1013001E;

constexpr WStringView kDefaultDeskToolsProperty =
    L"PHByb3BlcnR5PjxwbXI+ZmFsc2U8L3Btcj48am9pbnVybD48L2pvaW51cmw+PHNpcHVybD48L3NpcHVybD48bWVldGlu"
    L"Z251bWJlcj48L21lZXRpbmdudW1iZXI+PC9wcm9wZXJ0eT4AAA==";

/// Above this a meeting is no longer the user's own plain meeting.
constexpr std::uint32_t kOwnMeetingStatus = 1;

using Value = CMapiBuffer<SPropValue>;

// Tags of the three series properties that every series of one store shares, 0 while not known.
// Written and read on the work thread alone.
ULONG g_recurrencePatternTag = 0;
ULONG g_recurStateTag = 0;
ULONG g_recurrenceTypeTag = 0;

void Step(const char* what)
{
    SEND_TRACE(1, kFunction, "kovantest GetMAPIAppointmentInfo %s", what);
}

HRESULT NamedById(IMessage* message, const GUID& set, long id, ULONG type, Value& value)
{
    return GetNamedProp(message, set, id, value, type, nullptr, true);
}

HRESULT NamedByText(IMessage* message, const WCHAR* name, Value& value)
{
    return GetNamedProp(message, PS_PUBLIC_STRINGS, 0, value, PT_UNICODE, name, false);
}

/// Reads a public text property; the status of the read.
HRESULT ReadPublicText(IMessage* message, const WCHAR* name, WString& text)
{
    Value value;
    const HRESULT status = NamedByText(message, name, value);
    if (status == S_OK)
    {
        prop::TakeText(value.Get(), text);
    }
    return status;
}

void ReadNumber(IMessage* message, long id, std::uint32_t& number)
{
    Value value;
    if (NamedById(message, PSETID_Appointment, id, PT_UNSPECIFIED, value) == S_OK)
    {
        prop::TakeNumber(value.Get(), number);
    }
}

void ReadTimes(IMessage* message, MeetingInfo& info)
{
    Value value;
    if (NamedById(message, PSETID_Appointment, kStartWhole, PT_SYSTIME, value) == S_OK)
    {
        prop::TakeTime(value.Get(), info.firstTime);
    }
    if (GetOneProp(message, kFixedEndTag, value) == S_OK && prop::TakeTime(value.Get(), info.end))
    {
        return;
    }
    if (NamedById(message, PSETID_Appointment, kEndWhole, PT_SYSTIME, value) == S_OK)
    {
        prop::TakeTime(value.Get(), info.end);
    }
}

void ReadUid(IMessage* message, MeetingInfo& info)
{
    Value value;
    BinaryBlock block;
    if (NamedById(message, PSETID_Meeting, kGlobalObjectId, PT_BINARY, value) == S_OK &&
        prop::TakeBlock(value.Get(), block))
    {
        info.uid = GetUidFromGlobalObjectId(block);
    }
}

void ReadDeskToolsProperty(IMessage* message, MeetingInfo& info)
{
    HRESULT status =
        ReadPublicText(message, L"tlvmeetingcalendarproperty", info.strPropertyFromDeskTools);
    if (status != S_OK)
    {
        SEND_TRACE(3,
                   kFunction,
                   "failed to get tlvmeetingcalendarproperty,hresult=0x%x",
                   static_cast<unsigned>(status));
    }
    if (info.strPropertyFromDeskTools.empty())
    {
        status = ReadPublicText(
            message, L"tlv_meeting_calendar_property", info.strPropertyFromDeskTools);
        if (status != S_OK)
        {
            SEND_TRACE(3,
                       kFunction,
                       "failed to get tlv_meeting_calendar_property,hresult=0x%x",
                       static_cast<unsigned>(status));
        }
    }
    // Only a property that is there and empty stands for the default; one that could not be read
    // stays empty.
    if (status == S_OK && info.strPropertyFromDeskTools.empty())
    {
        SEND_TRACE(1, kFunction, "DT Property with empty value!! Use the default vaule!!");
        info.strPropertyFromDeskTools = kDefaultDeskToolsProperty;
    }
}

void ReadDuration(IMessage* message, MeetingInfo& info)
{
    Value value;
    if (NamedById(message, PSETID_Appointment, kDuration, PT_UNSPECIFIED, value) == S_OK &&
        prop::TakeNumber(value.Get(), info.duration))
    {
        return;
    }
    if (GetOneProp(message, kFixedDurationTag, value) == S_OK &&
        prop::TakeNumber(value.Get(), info.duration))
    {
        return;
    }
    SEND_TRACE(3, kFunction, "failed to get PR_CALENDAR_DURATION");
    // Unsigned on purpose: without an end the difference wraps.
    info.duration = MinutesFromSystemTime(info.end) - MinutesFromSystemTime(info.firstTime);
}

/// Appends a body too large for one answer. False when the store gives no stream either.
bool ReadBodyStream(IMessage* message, WString& text)
{
    constexpr ULONG kReadBytes = 254;
    CComRef<IStream> stream;
    if (message->OpenProperty(PR_BODY_W, &IID_IStream, STGM_READ, 0, stream.PutUnknown()) != S_OK ||
        !stream)
    {
        return false;
    }
    for (;;)
    {
        WCHAR units[kReadBytes / sizeof(WCHAR) + 1] = {};
        ULONG read = 0;
        if (FAILED(stream->Read(units, kReadBytes, &read)))
        {
            read = 0;
        }
        if (read > 0)
        {
            text.append(units);
        }
        if (read < kReadBytes)
        {
            return true;
        }
    }
}

/// The status with which the store refuses one property, where GetOneProp knows only that it did.
HRESULT HrGetOneProp(IMessage* message, ULONG tag, Value& value)
{
    SizedSPropTagArray(1, tags) = {1, {tag}};
    ULONG count = 0;
    const HRESULT status = message->GetProps(
        reinterpret_cast<SPropTagArray*>(&tags), MAPI_UNICODE, &count, value.Put());
    if (SUCCEEDED(status) && value && PROP_TYPE(value->ulPropTag) == PT_ERROR)
    {
        return value->Value.err;
    }
    return status;
}

void StripLeadingSpace(WString& text)
{
    std::size_t first = 0;
    while (first < text.size() && std::iswspace(text[first]) != 0)
    {
        first++;
    }
    text.erase(0, first);
}

void StripSpace(WString& text)
{
    StripLeadingSpace(text);
    while (!text.empty() && std::iswspace(text.back()) != 0)
    {
        text.pop_back();
    }
}

void ReadBody(IMessage* message, MeetingInfo& info)
{
    Value value;
    if (GetOneProp(message, PR_BODY_W, value) == S_OK && prop::TakeText(value.Get(), info.strDesc))
    {
        StripLeadingSpace(info.strDesc);
        return;
    }
    if (HrGetOneProp(message, PR_BODY_W, value) != E_OUTOFMEMORY ||
        !ReadBodyStream(message, info.strDesc))
    {
        info.strDesc = kBodyNotRead;
        SEND_TRACE(1, kFunction, "Get BODY failed");
    }
    StripLeadingSpace(info.strDesc);
}

void ReadHtmlBody(IMessage* message, MeetingInfo& info)
{
    Value value;
    if (GetOneProp(message, kHtmlAsText, value) != S_OK ||
        !prop::TakeThreadText(value.Get(), info.strXaltDesc))
    {
        info.strXaltDesc = kBodyNotRead;
        SEND_TRACE(1, kFunction, "Get XaltDesc failed");
    }
}

void ReadHostEntryId(IMessage* message, MeetingInfo& info)
{
    for (const ULONG tag : {PR_SENT_REPRESENTING_ENTRYID, PR_SENDER_ENTRYID})
    {
        Value value;
        if (GetOneProp(message, tag, value) == S_OK &&
            prop::TakeBlock(value.Get(), info.hostEntryId))
        {
            return;
        }
        SEND_TRACE(3, kFunction, "get PR_SENDER_ENTRYID failed");
    }
}

/// A text that its writer cut into "TalvoOI", "TalvoOI1", "TalvoOI2" and so on.
void ReadCalendarFamily(IMessage* message, WString& text)
{
    WString name = L"TalvoOI";
    WString piece;
    if (ReadPublicText(message, name.c_str(), piece) != S_OK)
    {
        CUtil::GetPropFromStream(message, name.c_str(), text);
        return;
    }
    for (unsigned number = 1;; number++)
    {
        text += piece;
        SEND_TRACE(3,
                   kFunction,
                   "name:[%s] , value:[%s]",
                   NarrowText(name).c_str(),
                   NarrowText(piece).c_str());
        StripSpace(text);
        if (text.empty())
        {
            return;
        }
        name = L"TalvoOI" + std::to_wstring(number);
        piece.clear();
        if (ReadPublicText(message, name.c_str(), piece) != S_OK)
        {
            return;
        }
    }
}

void ReadCalendarText(IMessage* message, MeetingInfo& info)
{
    if (info.meetingStatus > kOwnMeetingStatus)
    {
        ReadPublicText(message, L"TalvoOIAttendee", info.calendarText);
    }
    else
    {
        ReadCalendarFamily(message, info.calendarText);
    }
}

bool ReadByCachedTag(IMessage* message, long id, ULONG type, ULONG& tag, Value& value)
{
    if (tag == 0)
    {
        GetNamedTag(message, PSETID_Appointment, id, type, tag);
    }
    return tag != 0 && GetOneProp(message, tag, value) == S_OK;
}

void ReadSeries(IMessage* message, MeetingInfo& info)
{
    Value value;
    if (ReadByCachedTag(message, kRecurrencePattern, PT_UNICODE, g_recurrencePatternTag, value))
    {
        prop::TakeText(value.Get(), info.recurrencePattern);
    }
    if (ReadByCachedTag(message, kRecur, PT_BINARY, g_recurStateTag, value))
    {
        prop::TakeBlock(value.Get(), info.recurrenceState);
    }
    std::uint32_t type = 0;
    if (ReadByCachedTag(message, kRecurrenceType, PT_LONG, g_recurrenceTypeTag, value) &&
        prop::TakeNumber(value.Get(), type))
    {
        info.recurrenceType = static_cast<std::int32_t>(type);
    }
    if (NamedById(message, PSETID_Appointment, kTimeZoneStruct, PT_BINARY, value) == S_OK)
    {
        prop::TakeBlock(value.Get(), info.timeZone);
    }
}

void ReadTexts(IMessage* message, MeetingInfo& info)
{
    ReadPublicText(message, L"TalvoKey", info.key);
    ReadPublicText(message, L"TalvoSpace", info.space);
    ReadDeskToolsProperty(message, info);
    const HRESULT status = ReadPublicText(message, L"UCCapabilities", info.m_strUCCapabilities);
    if (status != S_OK)
    {
        SEND_TRACE(3,
                   kFunction,
                   "failed to get UCCapabilities,hresult=0x%x",
                   static_cast<unsigned>(status));
    }
    Value value;
    if (NamedById(message, PSETID_Appointment, kLocation, PT_UNSPECIFIED, value) == S_OK)
    {
        prop::TakeText(value.Get(), info.location);
    }
}

} // namespace

bool CMAPIMessageBase::GetMAPIAppointmentInfo(IMessage* message, MeetingInfo& info)
{
    Step("start");
    ReadTimes(message, info);
    Value value;
    if (GetOneProp(message, PR_SUBJECT_W, value) == S_OK)
    {
        prop::TakeText(value.Get(), info.strName);
    }
    ReadUid(message, info);
    ReadTexts(message, info);
    ReadDuration(message, info);
    Step("bodies");
    ReadBody(message, info);
    ReadHtmlBody(message, info);
    Step("states");
    ReadNumber(message, kStateFlags, info.meetingStatus);
    std::uint32_t isAllDay = 0;
    ReadNumber(message, kSubType, isAllDay);
    info.isAllDay = isAllDay != 0 ? 1 : 0;
    ReadNumber(message, kResponseStatus, info.responseStatus);
    ReadNumber(message, kBusyStatus, info.busyStatus);
    ReadHostEntryId(message, info);
    ReadCalendarText(message, info);
    std::uint32_t isRecurring = 0;
    ReadNumber(message, kRecurring, isRecurring);
    info.isRecurring = isRecurring != 0 ? 1 : 0;
    if (info.isRecurring != 0)
    {
        ReadSeries(message, info);
    }
    Step("end");
    return true;
}

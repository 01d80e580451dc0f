// The five methods of the client object that do something.

#include <string_view>

#include "MapiClient.h"
#include "MapiDataStore.h"
#include "Monitor.h"
#include "MonitorThread.h"
#include "NarrowText.h"
#include "Trace.h"
#include "WorkThread.h"

namespace
{

constexpr ULONG kMailTypeFirst = 1;
constexpr ULONG kMailTypeLast = 16;

/// A null BSTR is an empty text.
std::wstring_view ViewOf(BSTR text)
{
    return text != nullptr ? std::wstring_view(text) : std::wstring_view();
}

/// Exact and case sensitive; absent and unknown texts bring nothing up.
ULONG InitTypeOf(BSTR text)
{
    const std::wstring_view name = ViewOf(text);
    if (name == L"CALENDARING")
    {
        return InitTypeCalendar;
    }
    return name == L"CONTACTRESOLUTION" ? InitTypeContacts : InitTypeNone;
}

FILETIME ToFileTime(const oiexMapiFileTime& time)
{
    return {time.dwLowDateTime, time.dwHighDateTime};
}

SYSTEMTIME ToDate(const FILETIME& time)
{
    SYSTEMTIME date{};
    FileTimeToSystemTime(&time, &date);
    return date;
}

} // namespace

HRESULT CMapiClient::Initialize(TLVOI_MAILTYPE tlvMailType,
                                BSTR bstrTraceLocation,
                                BSTR bstrInitializationType) noexcept
try
{
    StartClientMonitorThread(); // started at the process's start; this is the safety net
    if (bstrTraceLocation != nullptr)
    {
        SEND_TRACE(2,
                   "CMapiClient::Initialize",
                   "Trace location is initialized to path: %s",
                   NarrowText(ViewOf(bstrTraceLocation)).c_str());
    }
    else
    {
        SEND_TRACE(1, "CMapiClient::Initialize", "Trace location is initialized to path: NULL");
    }
    SEND_TRACE(2, "CMapiClient::Initialize", "CMapiClient::Initialize");
    if (!EnsureWorkThread())
    {
        SEND_TRACE(0, "CMapiClient::Initialize", "new CWorkThread failed");
        return E_FAIL;
    }
    // From 2 to 15 no mail system answers: the controller refuses those in OnInitialize.
    const auto mailType = static_cast<ULONG>(tlvMailType);
    if (mailType < kMailTypeFirst || mailType > kMailTypeLast)
    {
        return E_FAIL;
    }
    const ULONG initType = InitTypeOf(bstrInitializationType);
    CClientMonitor* const monitor = CClientMonitor::GetInstance();
    const CWorkThreadUse work;
    if (monitor == nullptr || !work)
    {
        return E_FAIL;
    }
    const ULONG sequence = monitor->NextSequence();
    monitor->MapSequence(sequence, this);
    const HRESULT hr = work->AddInitWork(sequence, mailType, initType);
    m_nMapiRefCount++;
    SEND_TRACE(3,
               "CMapiClient::Initialize",
               "MAPI Reference count is now %d, initType[%d]",
               static_cast<int>(m_nMapiRefCount),
               static_cast<int>(initType));
    return hr;
}
catch (...)
{
    return E_FAIL;
}

HRESULT CMapiClient::GetCurProfileInfo(BSTR* bstrProfileInfo) noexcept
try
{
    SEND_TRACE(2, "CMapiClient::GetCurProfileInfo", "CMapiClient::GetCurProfileInfo");
    const CWorkThreadUse work;
    if (work && bstrProfileInfo != nullptr)
    {
        work->GetProfileInfo(bstrProfileInfo);
    }
    return S_OK;
}
catch (...)
{
    return E_FAIL;
}

HRESULT CMapiClient::ListAppointment(oiexMapiFileTime* pftStart,
                                     oiexMapiFileTime* pftEnd,
                                     ULONG* pulSequenceID) noexcept
try
{
    const CWorkThreadUse work;
    CClientMonitor* const monitor = CClientMonitor::GetInstance();
    if (pftStart == nullptr || pftEnd == nullptr || pulSequenceID == nullptr || !work ||
        monitor == nullptr)
    {
        return E_FAIL;
    }
    const FILETIME start = ToFileTime(*pftStart);
    const FILETIME end = ToFileTime(*pftEnd);
    const SYSTEMTIME first = ToDate(start);
    const SYSTEMTIME last = ToDate(end);
    SEND_TRACE(3,
               "CMapiClient::ListAppointment",
               "start time,[year:%d,month:%d,day:%d];end time,[year:%d,month:%d,day:%d]",
               first.wYear,
               first.wMonth,
               first.wDay,
               last.wYear,
               last.wMonth,
               last.wDay);
    const ULONG sequence = monitor->NextSequence();
    monitor->MapSequence(sequence, this);
    *pulSequenceID = sequence;
    work->AddListAppointmentWork(start, end, sequence);
    return S_OK;
}
catch (...)
{
    return E_FAIL;
}

HRESULT CMapiClient::ReleaseApp(VARIANT_BOOL vbHibernate) noexcept
try
{
    // First of all and on every call: with two clients initialised, the first of them to release
    // silences the other as well.
    MapiDataStore().SetReleasing(1);
    if (m_nMapiRefCount == 0)
    {
        return S_OK;
    }
    m_nMapiRefCount--;
    if (m_nMapiRefCount == 0)
    {
        // Only the automation form of true hibernates; any other value ends the work thread.
        ReleaseWorkThread(vbHibernate == VARIANT_TRUE);
    }
    return S_OK;
}
catch (...)
{
    return E_FAIL;
}

HRESULT CMapiClient::PostEvent(TLVOI_EVENTTYPE chEventType, BSTR bstrKey) noexcept
try
{
    SEND_TRACE(3,
               "CMapiClient::PostEvent",
               "CMapiClient::PostEvent %s, Type:%d",
               NarrowText(ViewOf(bstrKey)).c_str(),
               static_cast<int>(chEventType));
    const CWorkThreadUse work;
    if (!work)
    {
        return E_FAIL;
    }
    switch (chEventType)
    {
    case TLVOIEVE_APPT_ADD:
        return work->AddPostEventWork(TaskType::PostAdd, bstrKey);
    case TLVOIEVE_APPT_UPDATE:
        return work->AddPostEventWork(TaskType::PostUpdate, bstrKey);
    case TLVOIEVE_APPT_DELETE:
        return work->AddPostEventWork(TaskType::PostDelete, bstrKey);
    default:
        return E_FAIL;
    }
}
catch (...)
{
    return E_FAIL;
}

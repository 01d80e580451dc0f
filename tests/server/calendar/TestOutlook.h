#pragma once

#include <gtest/gtest.h>

#include <string>

#include "FakeCalendar.h"
#include "MapiDataStore.h"
#include "OutlookCtrl.h"
#include "PropertySets.h"
#include "TraceCapture.h"

/// The controller with its parts within reach of a test.
class CTestOutlook final : public COutlookCtrl
{
public:
    using CMAPIFolderBase::ResolveEntryId;
    using CMAPIFolderBase::RestrictAppointmentOnTable;
    using CMAPIMessageBase::GetExceptionAppointmentInfo;
    using CMAPIMessageBase::GetExceptionRecipients;
    using CMAPIMessageBase::GetMAPIAppointmentInfo;
    using CMAPIMessageBase::GetMAPIApptAttenddeeList;
    using COutlookCtrl::lpMsgStore;
    using COutlookCtrl::m_bNeedRealEntryID;
    using COutlookCtrl::m_CalendarSinks;
    using COutlookCtrl::m_hrInit;
    using COutlookCtrl::m_StoreEid;
    using COutlookCtrl::m_strProfile;
    using COutlookCtrl::m_strStoreName;
    using COutlookCtrl::m_strUserEmail;
    using COutlookCtrl::m_strUserName;
};

/// A controller that is up, with one calendar folder in its store, and an empty data store. At its end
/// every fake object has to be gone.
class CalendarTest : public testing::Test
{
protected:
    CalendarTest();
    ~CalendarTest() override;

    /// A message with start, end and what makes it an appointment; in the folder, the store and, as a
    /// row, in the table.
    CComRef<CFakeMessage> AddAppointment(BYTE id, const std::string& start, const std::string& end);
    /// The same as the master of a series with this pattern, which begins at `start`.
    CComRef<CFakeMessage> AddSeries(BYTE id,
                                    const std::string& start,
                                    const std::string& end,
                                    const std::vector<BYTE>& pattern);
    /// An embedded message of a series, not yet attached.
    static CComRef<CFakeMessage> MakeException(const std::string& start, const std::string& end);
    /// Another subscribed folder, with a table of its own.
    MAPI_TBLSinkInfo& AddFolder();

    /// Window as local times of the machine, which the tests run in UTC+0 or Europe/Berlin; so both
    /// are given in UTC and turned into local times here.
    std::vector<std::wstring> List(const std::string& start, const std::string& end);
    /// The values of one element in the document of the last List.
    std::vector<std::wstring> Values(const std::wstring& element) const;
    static std::vector<std::wstring> ValuesIn(const WString& xml, const std::wstring& element);

    CTestOutlook m_outlook;
    CComRef<CFakeFolder> m_folder = MakeFake<CFakeFolder>();
    CComRef<CFakeTable> m_table = MakeFake<CFakeTable>();
    CComRef<CFakeStore> m_store = MakeFake<CFakeStore>();
    CTraceCapture m_trace;
    WString m_xml;
    ULONG m_listed = 0; ///< what ListAppointment answered
};

/// Lines of the capture that begin with `beginning`, without the level.
std::vector<std::string> LinesWith(const CTraceCapture& trace, const std::string& beginning);

/// One recipient with address type SMTP.
CFakeProps Recipient(const std::wstring& name, const std::wstring& email, LONG flags = 1);

/// The bytes of a text in UTF-16.
std::vector<BYTE> WideBytes(const std::wstring& text);

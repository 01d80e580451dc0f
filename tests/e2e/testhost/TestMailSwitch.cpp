// The mail system of the test host: it knows no MAPI, and does what the begin of a listing's window
// asks for.

#include <windows.h>

#include <oleauto.h>

#include <cstdint>
#include <stdexcept>

#include "EventMessages.h"
#include "EventPost.h"
#include "MailInterface.h"
#include "TestBehaviour.h"
#include "Trace.h"

namespace
{
constexpr const wchar_t* kProfile =
    L"<CurrentOLProfile><ProfileName><![CDATA[Test]]></ProfileName></CurrentOLProfile>";
constexpr const wchar_t* kOneAppointment =
    L"<appointments><appointment><subject><![CDATA[Test]]></subject></appointment></appointments>";
constexpr const wchar_t* kFolderFailure =
    L"<appointments><appointment><subject><![CDATA[####DTOIEX_OUTLOOK_MEETING_ERROR####]]></"
    L"subject>"
    L"<meetStatus>5</meetStatus></appointment></appointments>";
constexpr ULONG kUnknownMailType = 1;

TestBehaviour BehaviourOf(FILETIME start)
{
    SYSTEMTIME begin{};
    begin.wYear = 2020;
    begin.wMonth = 1;
    begin.wDay = 1;
    FILETIME beginTime{};
    SystemTimeToFileTime(&begin, &beginTime);
    const auto ticks = [](FILETIME time) {
        return (static_cast<std::uint64_t>(time.dwHighDateTime) << 32U) | time.dwLowDateTime;
    };
    return static_cast<TestBehaviour>((ticks(start) - ticks(beginTime)) / 10000000U);
}

void HangUntilToldToGoOn()
{
    HANDLE hangs = CreateEventW(nullptr, TRUE, FALSE, kHangsEvent);
    HANDLE goOn = CreateEventW(nullptr, TRUE, FALSE, kGoOnEvent);
    SetEvent(hangs);
    WaitForSingleObject(goOn, INFINITE);
    CloseHandle(goOn);
    CloseHandle(hangs);
}

[[noreturn]] void ReadFromNowhere()
{
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
    ExitProcess(96); // not reached
}

LONG WINAPI ForeignFilter(EXCEPTION_POINTERS* /*pointers*/)
{
    // A filter that would hide the crash from ours.
    ExitProcess(95);
}

// A trace library that dies of the line by which the crash filter announces itself.
class CFaultyRoute final : public ITraceRoute
{
public:
    bool IsOpen() noexcept override { return true; }
    void SendHeartbeat(std::string_view /*line*/) noexcept override {}
    void Write(TL_SDK::TLLoggerLevel /*level*/, std::string_view line) noexcept override
    {
        if (line.find("CRASH!!!") != std::string_view::npos)
        {
            ReadFromNowhere();
        }
    }
};

CFaultyRoute g_faultyRoute;

class CTestMailSwitch final : public IMailSwitch
{
public:
    using CMailInterface::Init;
    ULONG Init(ULONG mailType, ULONG /*initType*/) override
    {
        if (mailType != MailTypeOutlook)
        {
            return kUnknownMailType;
        }
        m_mailType = mailType;
        return 0;
    }
    [[nodiscard]] ULONG GetMailType() const override { return m_mailType; }

    ULONG ListAppointment(FILETIME start, FILETIME /*end*/, CEventText& xml) override
    {
        switch (BehaviourOf(start))
        {
        case TestBehaviour::OneAppointment:
            xml = CEventText(kOneAppointment);
            return 0;
        case TestBehaviour::Hang:
            HangUntilToldToGoOn();
            break;
        case TestBehaviour::AccessViolation:
            ReadFromNowhere();
        case TestBehaviour::EscapingException:
            throw std::runtime_error("nobody catches this");
        case TestBehaviour::FilterTakenAway:
            SetUnhandledExceptionFilter(ForeignFilter);
            ReadFromNowhere();
        case TestBehaviour::CrashInFilter:
            SetTraceRoute(&g_faultyRoute);
            ReadFromNowhere();
        case TestBehaviour::LargeDocument:
            xml = CEventText(std::wstring(kLargeUnits, L'x'));
            return 0;
        case TestBehaviour::ManyChanges:
            for (unsigned change = 0; change < kManyChanges; ++change)
            {
                PostEventText(WM_EVENT_CALENDAR_UPDATED,
                              ChangeAdded,
                              L"change " + std::to_wstring(change),
                              nullptr);
            }
            break;
        case TestBehaviour::OneChangeEach:
            for (const ChangeType type : {ChangeAdded, ChangeDeleted, ChangeModified})
            {
                PostEventText(WM_EVENT_CALENDAR_UPDATED, type, L"calendar", nullptr);
                PostEventText(WM_EVENT_CONTACT_UPDATED, type, L"contact", nullptr);
            }
            break;
        case TestBehaviour::EmptyText:
            return 0;
        case TestBehaviour::FolderFailure:
            xml = CEventText(kFolderFailure);
            return 0;
        case TestBehaviour::EmptyListing:
            break;
        }
        xml = CEventText(L"<appointments></appointments>");
        return 0;
    }

    ULONG GetCurProfileInfo(BSTR* profile) override
    {
        *profile = SysAllocString(kProfile);
        return 1;
    }

    // Nothing that the interface offers leads to the rest.
    ULONG SendMail(WString, WString, WString, ULONG) override { return 0; }
    ULONG GetSMTPFromDispName(const WString&, WString&) override { return 0; }
    ULONG ListRecurrentInstance(const WString&, const FILETIME*, const FILETIME*, WString&) override
    {
        return 0;
    }
    ULONG ListRecentEmail(ULONG, const WString&, ULONG, std::vector<MailRecord>&) override
    {
        return 0;
    }
    ULONG GetAppointment(const WString&, WString&) override { return 0; }
    ULONG GetPersonalContact(std::vector<ContactRecord>&) override { return 0; }
    ULONG GetContactDetail(const WString&, ContactRecord&) override { return 0; }
    void ClearDataStore() override {}
    ULONG GetMsgInfoByTableSink(IMAPIFolder*, const WString&, const WString&, WString&) override
    {
        return 0;
    }
    ULONG DeleteMsgInfoByTableSink(const WString&, WString&) override { return 0; }
    ULONG GetContactInfoByTableSink(IMAPIFolder*,
                                    const WString&,
                                    const WString&,
                                    ContactRecord&) override
    {
        return 0;
    }
    ULONG SearchContacts(const WString&, std::vector<ContactRecord>&, ULONG) override { return 0; }
    ULONG ResolveContacts(const WString&, std::vector<ContactRecord>&, ULONG) override { return 0; }

private:
    ULONG m_mailType = MailTypeNone;
};

} // namespace

// Stands in the place of the product's MakeMapiCtrl.
std::unique_ptr<IMailSwitch> MakeTestMailSwitch() noexcept;

std::unique_ptr<IMailSwitch> MakeTestMailSwitch() noexcept
{
    return std::make_unique<CTestMailSwitch>();
}

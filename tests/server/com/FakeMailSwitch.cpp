#include "FakeMailSwitch.h"

#include "ContactRecord.h"
#include "MailRecord.h"
#include "WorkTask.h"

namespace
{

class CFakeMailSwitch final : public IMailSwitch
{
public:
    ULONG Init() override { return 0; }
    void FreeLib() override
    {
        TheFakeMail().freeLibCalls++;
        SetEvent(TheFakeMail().called.Get());
    }
    ULONG SendMail(WString, WString, WString, ULONG) override { return 0; }
    ULONG GetSMTPFromDispName(const WString&, WString&) override { return 0; }
    ULONG ListAppointment(FILETIME start, FILETIME end, CEventText& xml) override
    {
        TheFakeMail().listStart = TaskTime(start);
        TheFakeMail().listEnd = TaskTime(end);
        xml = CEventText(L"<appointments></appointments>");
        return 0;
    }
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
    ULONG GetCurProfileInfo(BSTR* profile) override
    {
        *profile = SysAllocString(L"<CurrentOLProfile/>");
        return 0;
    }
    void ClearDataStore() override { TheFakeMail().clearCalls++; }
    ULONG Init(ULONG mailType, ULONG initType) override
    {
        TheFakeMail().initCalls++;
        TheFakeMail().lastMailType = mailType;
        TheFakeMail().lastInitType = initType; // last: what DrainWork waits for
        SetEvent(TheFakeMail().called.Get());
        return TheFakeMail().initAnswer;
    }
    [[nodiscard]] ULONG GetMailType() const override { return TheFakeMail().mailTypeInForce; }
    ULONG
    GetMsgInfoByTableSink(IMAPIFolder*, const WString&, const WString&, WString&) override
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
};

} // namespace

void WaitForCall(const std::atomic<int>& calls, int before) noexcept
{
    while (calls == before)
    {
        WaitForSingleObject(TheFakeMail().called.Get(), INFINITE);
    }
}

FakeMail& TheFakeMail() noexcept
{
    static FakeMail s_mail;
    return s_mail;
}

std::unique_ptr<IMailSwitch> MakeFakeMailSwitch() noexcept
{
    return std::make_unique<CFakeMailSwitch>();
}

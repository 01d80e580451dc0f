#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "ContactRecord.h"
#include "MailInterface.h"
#include "MailRecord.h"

/// What the work thread asked the mail system, as "operation entry instance".
///
/// Thread: filled by the work thread, waited for by the test.
struct Asked
{
    std::mutex lock;
    std::condition_variable changed;
    std::vector<std::string> operations;
    std::vector<IMAPIFolder*> folders;

    void Add(const char* operation,
             IMAPIFolder* folder,
             const WString& entry,
             const WString& instance)
    {
        const std::scoped_lock hold(lock);
        operations.push_back(std::string(operation) + " " +
                             std::string(entry.begin(), entry.end()) + " " +
                             std::string(instance.begin(), instance.end()));
        folders.push_back(folder);
        changed.notify_all();
    }
    std::vector<std::string> WaitFor(std::size_t count)
    {
        std::unique_lock hold(lock);
        changed.wait(hold, [&] { return operations.size() >= count; });
        return operations;
    }
};

inline Asked* g_asked = nullptr;

/// A mail system that notes what it is asked about changes, and tells nobody anything.
class CRecordingSwitch final : public IMailSwitch
{
public:
    ULONG SendMail(WString, WString, WString, ULONG) override { return 0; }
    ULONG GetSMTPFromDispName(const WString&, WString&) override { return 0; }
    ULONG ListAppointment(FILETIME, FILETIME, CEventText&) override { return 0; }
    ULONG
    ListRecurrentInstance(const WString&, const FILETIME*, const FILETIME*, WString&) override
    {
        return 0;
    }
    ULONG ListRecentEmail(ULONG, const WString&, ULONG, std::vector<MailRecord>&) override
    {
        return 0;
    }
    ULONG GetAppointment(const WString&, WString&) override { return 0; }
    ULONG GetPersonalContact(std::vector<ContactRecord>&) override { return 0; }
    ULONG GetContactDetail(const WString& key, ContactRecord&) override
    {
        g_asked->Add("contact deleted", nullptr, L"", key);
        return 0;
    }
    ULONG GetCurProfileInfo(BSTR*) override { return 0; }
    void ClearDataStore() override {}
    using IMailSwitch::Init;
    ULONG Init(ULONG, ULONG) override { return 0; }
    [[nodiscard]] ULONG GetMailType() const override { return 1; }
    ULONG GetMsgInfoByTableSink(IMAPIFolder* folder,
                                const WString& entry,
                                const WString& instance,
                                WString&) override
    {
        g_asked->Add("appointment", folder, entry, instance);
        return 0;
    }
    ULONG DeleteMsgInfoByTableSink(const WString& instance, WString&) override
    {
        g_asked->Add("appointment deleted", nullptr, L"", instance);
        return 0;
    }
    ULONG GetContactInfoByTableSink(IMAPIFolder* folder,
                                    const WString& entry,
                                    const WString& instance,
                                    ContactRecord&) override
    {
        g_asked->Add("contact", folder, entry, instance);
        return 0;
    }
    ULONG SearchContacts(const WString&, std::vector<ContactRecord>&, ULONG) override { return 0; }
    ULONG ResolveContacts(const WString&, std::vector<ContactRecord>&, ULONG) override { return 0; }
};

inline std::unique_ptr<IMailSwitch> MakeRecordingSwitch() noexcept
{
    return std::make_unique<CRecordingSwitch>();
}

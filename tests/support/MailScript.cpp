#include "MailScript.h"

#include "NarrowText.h"

namespace
{

CMailScript* g_script = nullptr;

std::string Text(WStringView text)
{
    return NarrowText(text);
}

std::string Time(const FILETIME& time)
{
    return std::to_string((static_cast<unsigned long long>(time.dwHighDateTime) << 32) |
                          time.dwLowDateTime);
}

std::string Pointer(const void* pointer)
{
    return std::to_string(reinterpret_cast<ULONG_PTR>(pointer));
}

template <typename... Parts>
std::string Call(const char* name, const Parts&... parts)
{
    std::string text = std::string(name) + "(";
    const char* separator = "";
    ((text += separator + parts, separator = ", "), ...);
    return text + ")";
}

template <typename Function, typename... Arguments>
ULONG Run(const Function& function, Arguments&... arguments)
{
    return function ? function(arguments...) : 0;
}

class CScriptedSwitch final : public IMailSwitch
{
public:
    explicit CScriptedSwitch(CMailScript& script) : m_script(script) {}
    CScriptedSwitch(const CScriptedSwitch&) = delete;
    CScriptedSwitch& operator=(const CScriptedSwitch&) = delete;
    ~CScriptedSwitch() override { m_script.Note("Destroy()"); }

    using IMailSwitch::Init;
    ULONG Init(ULONG mailType, ULONG initType) override
    {
        m_script.Note(Call("Init", std::to_string(mailType), std::to_string(initType)));
        return Run(m_script.init, mailType, initType);
    }
    ULONG GetMailType() const override { return m_script.mailType; }
    void FreeLib() override
    {
        m_script.Note("FreeLib()");
        if (m_script.freeLib)
        {
            m_script.freeLib();
        }
    }
    ULONG SendMail(WString subject, WString recipients, WString body, ULONG flag) override
    {
        m_script.Note(
            Call("SendMail", Text(subject), Text(recipients), Text(body), std::to_string(flag)));
        return 0;
    }
    ULONG GetSMTPFromDispName(const WString& name, WString& smtp) override
    {
        m_script.Note(Call("GetSMTPFromDispName", Text(name)));
        return Run(m_script.getSmtp, smtp);
    }
    ULONG ListAppointment(FILETIME start, FILETIME end, CEventText& xml) override
    {
        m_script.Note(Call("ListAppointment", Time(start), Time(end)));
        WString text;
        const ULONG result = Run(m_script.listAppointment, text);
        xml = CEventText(WStringView(text));
        return result;
    }
    ULONG ListRecurrentInstance(const WString& entryId,
                                const FILETIME* start,
                                const FILETIME* end,
                                WString& xml) override
    {
        m_script.Note(Call("ListRecurrentInstance", Text(entryId), Time(*start), Time(*end)));
        return Run(m_script.listRecurrentInstance, xml);
    }
    ULONG ListRecentEmail(ULONG number,
                          const WString& contact,
                          ULONG folderType,
                          std::vector<MailRecord>& mails) override
    {
        m_script.Note(Call(
            "ListRecentEmail", std::to_string(number), Text(contact), std::to_string(folderType)));
        return Run(m_script.listRecentEmail, mails);
    }
    ULONG GetAppointment(const WString& entryId, WString& xml) override
    {
        m_script.Note(Call("GetAppointment", Text(entryId)));
        return Run(m_script.getAppointment, xml);
    }
    ULONG GetPersonalContact(std::vector<ContactRecord>& contacts) override
    {
        m_script.Note("GetPersonalContact()");
        return Run(m_script.getPersonalContact, contacts);
    }
    ULONG GetContactDetail(const WString& key, ContactRecord& contact) override
    {
        m_script.Note(Call("GetContactDetail", Text(key)));
        return Run(m_script.getContactDetail, contact);
    }
    ULONG GetCurProfileInfo(BSTR* profile) override
    {
        m_script.Note("GetCurProfileInfo()");
        return Run(m_script.getProfile, profile);
    }
    void ClearDataStore() override
    {
        m_script.Note("ClearDataStore()");
        if (m_script.clearDataStore)
        {
            m_script.clearDataStore();
        }
    }
    ULONG GetMsgInfoByTableSink(IMAPIFolder* folder,
                                const WString& entryHex,
                                const WString& instanceHex,
                                WString& xml) override
    {
        m_script.Note(
            Call("GetMsgInfoByTableSink", Pointer(folder), Text(entryHex), Text(instanceHex)));
        return Run(m_script.getMsgInfo, xml);
    }
    ULONG DeleteMsgInfoByTableSink(const WString& instanceHex, WString& xml) override
    {
        m_script.Note(Call("DeleteMsgInfoByTableSink", Text(instanceHex)));
        return Run(m_script.deleteMsgInfo, xml);
    }
    ULONG GetContactInfoByTableSink(IMAPIFolder* folder,
                                    const WString& entryHex,
                                    const WString& instanceHex,
                                    ContactRecord& contact) override
    {
        m_script.Note(
            Call("GetContactInfoByTableSink", Pointer(folder), Text(entryHex), Text(instanceHex)));
        return Run(m_script.getContactInfo, contact);
    }
    ULONG SearchContacts(const WString& text,
                         std::vector<ContactRecord>& contacts,
                         ULONG maxResults) override
    {
        m_script.Note(Call("SearchContacts", Text(text), std::to_string(maxResults)));
        return Run(m_script.searchContacts, contacts);
    }
    ULONG
    ResolveContacts(const WString& text, std::vector<ContactRecord>& contacts, ULONG kind) override
    {
        m_script.Note(Call("ResolveContacts", Text(text), std::to_string(kind)));
        return Run(m_script.resolveContacts, contacts);
    }

private:
    CMailScript& m_script;
};

std::unique_ptr<IMailSwitch> MakeScripted() noexcept
{
    return std::make_unique<CScriptedSwitch>(*g_script);
}

} // namespace

CMailScript::CMailScript()
{
    g_script = this;
    m_before = SetMailSwitchFactory(MakeScripted);
}

CMailScript::~CMailScript()
{
    SetMailSwitchFactory(m_before);
    g_script = nullptr;
}

std::vector<std::string> CMailScript::Calls() const
{
    const std::scoped_lock hold(m_callsLock);
    std::vector<std::string> calls;
    for (const NotedCall& call : m_calls)
    {
        calls.push_back(call.text);
    }
    return calls;
}

DWORD CMailScript::ThreadOfCall(std::size_t index) const
{
    const std::scoped_lock hold(m_callsLock);
    return m_calls.at(index).threadId;
}

void CMailScript::Note(const std::string& call)
{
    if (!keepsNotes)
    {
        return;
    }
    const std::scoped_lock hold(m_callsLock);
    m_calls.push_back({call, GetCurrentThreadId()});
}

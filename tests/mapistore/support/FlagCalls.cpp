#include "OperationCalls.h"

namespace mapitest
{
namespace
{

template <class T>
void AddProps(FlagCalls& calls, const std::string& name, T* object)
{
    calls[name + "::GetLastError"] = [=](ULONG flags) {
        return object->GetLastError(S_OK, flags, nullptr);
    };
    calls[name + "::SaveChanges"] = [=](ULONG flags) { return object->SaveChanges(flags); };
    calls[name + "::GetProps"] = [=](ULONG flags) {
        return object->GetProps(nullptr, flags, nullptr, nullptr);
    };
    calls[name + "::GetPropList"] = [=](ULONG flags) {
        return object->GetPropList(flags, nullptr);
    };
    calls[name + "::OpenProperty"] = [=](ULONG flags) {
        return object->OpenProperty(PR_BODY_W, &IID_IStream, 0, flags, nullptr);
    };
    calls[name + "::CopyTo"] = [=](ULONG flags) {
        return object->CopyTo(0, nullptr, nullptr, 0, nullptr, nullptr, nullptr, flags, nullptr);
    };
    calls[name + "::CopyProps"] = [=](ULONG flags) {
        CTags tags{PR_SUBJECT_W};
        return object->CopyProps(tags, 0, nullptr, nullptr, nullptr, flags, nullptr);
    };
    calls[name + "::GetNamesFromIDs"] = [=](ULONG flags) {
        return object->GetNamesFromIDs(nullptr, nullptr, flags, nullptr, nullptr);
    };
    calls[name + "::GetIDsFromNames"] = [=](ULONG flags) {
        return object->GetIDsFromNames(0, nullptr, flags, nullptr);
    };
}

template <class T>
void AddContainer(FlagCalls& calls, const std::string& name, T* object)
{
    AddProps(calls, name, object);
    calls[name + "::GetContentsTable"] = [=](ULONG flags) {
        return object->GetContentsTable(flags, nullptr);
    };
    calls[name + "::GetHierarchyTable"] = [=](ULONG flags) {
        return object->GetHierarchyTable(flags, nullptr);
    };
    calls[name + "::OpenEntry"] = [=](ULONG flags) {
        return object->OpenEntry(0, nullptr, nullptr, flags, nullptr, nullptr);
    };
}

void AddTable(FlagCalls& calls, mapi64::IMAPITable* table)
{
    const std::string name = "IMAPITable::";
    calls[name + "GetLastError"] = [=](ULONG flags) {
        return table->GetLastError(S_OK, flags, nullptr);
    };
    calls[name + "SetColumns"] = [=](ULONG flags) { return table->SetColumns(nullptr, flags); };
    calls[name + "QueryColumns"] = [=](ULONG flags) { return table->QueryColumns(flags, nullptr); };
    calls[name + "GetRowCount"] = [=](ULONG flags) { return table->GetRowCount(flags, nullptr); };
    calls[name + "FindRow"] = [=](ULONG flags) { return table->FindRow(nullptr, 0, flags); };
    calls[name + "Restrict"] = [=](ULONG flags) { return table->Restrict(nullptr, flags); };
    calls[name + "SortTable"] = [=](ULONG flags) { return table->SortTable(nullptr, flags); };
    calls[name + "QueryRows"] = [=](ULONG flags) { return table->QueryRows(1, flags, nullptr); };
    calls[name + "WaitForCompletion"] = [=](ULONG flags) {
        return table->WaitForCompletion(flags, 0, nullptr);
    };
}

void AddSession(FlagCalls& calls, mapi64::IMAPISession* session)
{
    const std::string name = "IMAPISession::";
    calls[name + "GetLastError"] = [=](ULONG flags) {
        return session->GetLastError(S_OK, flags, nullptr);
    };
    calls[name + "GetMsgStoresTable"] = [=](ULONG flags) {
        return session->GetMsgStoresTable(flags, nullptr);
    };
    calls[name + "OpenMsgStore"] = [=](ULONG flags) {
        return session->OpenMsgStore(0, 0, nullptr, nullptr, flags, nullptr);
    };
    calls[name + "OpenAddressBook"] = [=](ULONG flags) {
        return session->OpenAddressBook(0, nullptr, flags, nullptr);
    };
    calls[name + "OpenProfileSection"] = [=](ULONG flags) {
        return session->OpenProfileSection(nullptr, nullptr, flags, nullptr);
    };
    calls[name + "GetStatusTable"] = [=](ULONG flags) {
        return session->GetStatusTable(flags, nullptr);
    };
    calls[name + "OpenEntry"] = [=](ULONG flags) {
        return session->OpenEntry(0, nullptr, nullptr, flags, nullptr, nullptr);
    };
    calls[name + "CompareEntryIDs"] = [=](ULONG flags) {
        return session->CompareEntryIDs(0, nullptr, 0, nullptr, flags, nullptr);
    };
    calls[name + "EnumAdrTypes"] = [=](ULONG flags) {
        return session->EnumAdrTypes(flags, nullptr, nullptr);
    };
    calls[name + "Logoff"] = [=](ULONG flags) { return session->Logoff(0, flags, 0); };
}

void AddStore(FlagCalls& calls, mapi64::IMsgStore* store)
{
    const std::string name = "IMsgStore::";
    AddProps(calls, "IMsgStore", store);
    calls[name + "CompareEntryIDs"] = [=](ULONG flags) {
        return store->CompareEntryIDs(0, nullptr, 0, nullptr, flags, nullptr);
    };
    calls[name + "OpenEntry"] = [=](ULONG flags) {
        return store->OpenEntry(0, nullptr, nullptr, flags, nullptr, nullptr);
    };
    calls[name + "GetReceiveFolder"] = [=](ULONG flags) {
        return store->GetReceiveFolder(nullptr, flags, nullptr, nullptr, nullptr);
    };
    calls[name + "GetReceiveFolderTable"] = [=](ULONG flags) {
        return store->GetReceiveFolderTable(flags, nullptr);
    };
    calls[name + "StoreLogoff"] = [=](ULONG flags) { return store->StoreLogoff(&flags); };
    calls[name + "AbortSubmit"] = [=](ULONG flags) {
        return store->AbortSubmit(0, nullptr, flags);
    };
}

void AddFolder(FlagCalls& calls, IMAPIFolder* folder)
{
    const std::string name = "IMAPIFolder::";
    AddContainer(calls, "IMAPIFolder", folder);
    calls[name + "CreateMessage"] = [=](ULONG flags) {
        return folder->CreateMessage(nullptr, flags, nullptr);
    };
    calls[name + "CopyMessages"] = [=](ULONG flags) {
        return folder->CopyMessages(nullptr, nullptr, nullptr, 0, nullptr, flags);
    };
    calls[name + "DeleteMessages"] = [=](ULONG flags) {
        return folder->DeleteMessages(nullptr, 0, nullptr, flags);
    };
    calls[name + "CreateFolder"] = [=](ULONG flags) {
        return folder->CreateFolder(0, nullptr, nullptr, nullptr, flags, nullptr);
    };
    calls[name + "DeleteFolder"] = [=](ULONG flags) {
        return folder->DeleteFolder(0, nullptr, 0, nullptr, flags);
    };
    calls[name + "SetReadFlags"] = [=](ULONG flags) {
        return folder->SetReadFlags(nullptr, 0, nullptr, flags);
    };
    calls[name + "GetMessageStatus"] = [=](ULONG flags) {
        return folder->GetMessageStatus(0, nullptr, flags, nullptr);
    };
    calls[name + "EmptyFolder"] = [=](ULONG flags) {
        return folder->EmptyFolder(0, nullptr, flags);
    };
}

void AddMessage(FlagCalls& calls, IMessage* message)
{
    const std::string name = "IMessage::";
    AddProps(calls, "IMessage", message);
    calls[name + "GetAttachmentTable"] = [=](ULONG flags) {
        return message->GetAttachmentTable(flags, nullptr);
    };
    calls[name + "OpenAttach"] = [=](ULONG flags) {
        return message->OpenAttach(0, nullptr, flags, nullptr);
    };
    calls[name + "CreateAttach"] = [=](ULONG flags) {
        return message->CreateAttach(nullptr, flags, nullptr, nullptr);
    };
    calls[name + "DeleteAttach"] = [=](ULONG flags) {
        return message->DeleteAttach(0, 0, nullptr, flags);
    };
    calls[name + "GetRecipientTable"] = [=](ULONG flags) {
        return message->GetRecipientTable(flags, nullptr);
    };
    calls[name + "ModifyRecipients"] = [=](ULONG flags) {
        return message->ModifyRecipients(flags, nullptr);
    };
    calls[name + "SubmitMessage"] = [=](ULONG flags) { return message->SubmitMessage(flags); };
    calls[name + "SetReadFlag"] = [=](ULONG flags) { return message->SetReadFlag(flags); };
}

void AddBook(FlagCalls& calls, const CallTargets& targets)
{
    mapi64::IAddrBook* const book = targets.book;
    const std::string name = "IAddrBook::";
    AddProps(calls, "IAddrBook", book);
    calls[name + "OpenEntry"] = [=](ULONG flags) {
        return book->OpenEntry(0, nullptr, nullptr, flags, nullptr, nullptr);
    };
    calls[name + "CompareEntryIDs"] = [=](ULONG flags) {
        return book->CompareEntryIDs(0, nullptr, 0, nullptr, flags, nullptr);
    };
    calls[name + "CreateOneOff"] = [=](ULONG flags) {
        return book->CreateOneOff(nullptr, nullptr, nullptr, flags, nullptr, nullptr);
    };
    calls[name + "ResolveName"] = [=](ULONG flags) {
        return book->ResolveName(0, flags, nullptr, nullptr);
    };
    calls[name + "PrepareRecips"] = [=](ULONG flags) {
        return book->PrepareRecips(flags, nullptr, nullptr);
    };
    calls[name + "GetSearchPath"] = [=](ULONG flags) {
        return book->GetSearchPath(flags, nullptr);
    };
    calls["IABContainer::ResolveNames"] = [container = targets.container](ULONG flags) {
        return container->ResolveNames(nullptr, flags, nullptr, nullptr);
    };
    calls["IDistList::ResolveNames"] = [list = targets.list](ULONG flags) {
        return list->ResolveNames(nullptr, flags, nullptr, nullptr);
    };
}

} // namespace

FlagCalls AllFlagCalls(const CallTargets& targets)
{
    FlagCalls calls;
    calls["MAPIAdminProfiles"] = [](ULONG flags) { return MAPIAdminProfiles(flags, nullptr); };
    calls["MAPILogonEx"] = [](ULONG flags) {
        return MAPILogonEx(0, nullptr, nullptr, flags | MAPI_EXTENDED, nullptr);
    };
    calls["MAPIInitialize"] = [](ULONG flags) {
        MAPIINIT_0 init{MAPI_INIT_VERSION, flags};
        return MAPIInitialize(&init);
    };
    calls["IProfAdmin::GetLastError"] = [admin = targets.profiles](ULONG flags) {
        return admin->GetLastError(S_OK, flags, nullptr);
    };
    calls["IProfAdmin::GetProfileTable"] = [admin = targets.profiles](ULONG flags) {
        return admin->GetProfileTable(flags, nullptr);
    };
    AddSession(calls, targets.session);
    AddProps(calls, "IProfSect", targets.section);
    AddStore(calls, targets.store);
    AddFolder(calls, targets.folder);
    AddMessage(calls, targets.message);
    AddProps(calls, "IAttach", targets.attach);
    AddBook(calls, targets);
    AddContainer(calls, "IABContainer", targets.container);
    AddContainer(calls, "IDistList", targets.list);
    AddProps(calls, "IMailUser", targets.user);
    AddTable(calls, targets.table);
    return calls;
}

} // namespace mapitest

#include "OperationCalls.h"

namespace mapitest
{
namespace
{

template <class T>
void AddProps(Calls& calls, const std::string& name, T* object)
{
    calls[name + "::GetLastError"] = [=] { return object->GetLastError(S_OK, 0, nullptr); };
    calls[name + "::SaveChanges"] = [=] { return object->SaveChanges(0); };
    calls[name + "::GetProps"] = [=] { return object->GetProps(nullptr, 0, nullptr, nullptr); };
    calls[name + "::GetPropList"] = [=] { return object->GetPropList(0, nullptr); };
    calls[name + "::OpenProperty"] = [=] {
        return object->OpenProperty(0, nullptr, 0, 0, nullptr);
    };
    calls[name + "::SetProps"] = [=] { return object->SetProps(0, nullptr, nullptr); };
    calls[name + "::DeleteProps"] = [=] { return object->DeleteProps(nullptr, nullptr); };
    calls[name + "::CopyTo"] = [=] {
        return object->CopyTo(0, nullptr, nullptr, 0, nullptr, nullptr, nullptr, 0, nullptr);
    };
    calls[name + "::CopyProps"] = [=] {
        return object->CopyProps(nullptr, 0, nullptr, nullptr, nullptr, 0, nullptr);
    };
    calls[name + "::GetNamesFromIDs"] = [=] {
        return object->GetNamesFromIDs(nullptr, nullptr, 0, nullptr, nullptr);
    };
    calls[name + "::GetIDsFromNames"] = [=] {
        return object->GetIDsFromNames(0, nullptr, 0, nullptr);
    };
}

template <class T>
void AddContainer(Calls& calls, const std::string& name, T* object)
{
    AddProps(calls, name, object);
    calls[name + "::GetContentsTable"] = [=] { return object->GetContentsTable(0, nullptr); };
    calls[name + "::GetHierarchyTable"] = [=] { return object->GetHierarchyTable(0, nullptr); };
    calls[name + "::OpenEntry"] = [=] {
        return object->OpenEntry(0, nullptr, nullptr, 0, nullptr, nullptr);
    };
    calls[name + "::SetSearchCriteria"] = [=] {
        return object->SetSearchCriteria(nullptr, nullptr, 0);
    };
    calls[name + "::GetSearchCriteria"] = [=] {
        return object->GetSearchCriteria(0, nullptr, nullptr, nullptr);
    };
}

template <class T>
void AddBookContainer(Calls& calls, const std::string& name, T* object)
{
    AddContainer(calls, name, object);
    calls[name + "::CreateEntry"] = [=] { return object->CreateEntry(0, nullptr, 0, nullptr); };
    calls[name + "::CopyEntries"] = [=] { return object->CopyEntries(nullptr, 0, nullptr, 0); };
    calls[name + "::DeleteEntries"] = [=] { return object->DeleteEntries(nullptr, 0); };
    calls[name + "::ResolveNames"] = [=] {
        return object->ResolveNames(nullptr, 0, nullptr, nullptr);
    };
}

void AddTable(Calls& calls, mapi64::IMAPITable* table)
{
    const std::string name = "IMAPITable::";
    calls[name + "GetLastError"] = [=] { return table->GetLastError(S_OK, 0, nullptr); };
    calls[name + "Advise"] = [=] { return table->Advise(0, nullptr, nullptr); };
    calls[name + "Unadvise"] = [=] { return table->Unadvise(0); };
    calls[name + "GetStatus"] = [=] { return table->GetStatus(nullptr, nullptr); };
    calls[name + "SetColumns"] = [=] { return table->SetColumns(nullptr, 0); };
    calls[name + "QueryColumns"] = [=] { return table->QueryColumns(0, nullptr); };
    calls[name + "GetRowCount"] = [=] { return table->GetRowCount(0, nullptr); };
    calls[name + "SeekRow"] = [=] { return table->SeekRow(0, 0, nullptr); };
    calls[name + "SeekRowApprox"] = [=] { return table->SeekRowApprox(0, 0); };
    calls[name + "QueryPosition"] = [=] { return table->QueryPosition(nullptr, nullptr, nullptr); };
    calls[name + "FindRow"] = [=] { return table->FindRow(nullptr, 0, 0); };
    calls[name + "Restrict"] = [=] { return table->Restrict(nullptr, 0); };
    calls[name + "CreateBookmark"] = [=] { return table->CreateBookmark(nullptr); };
    calls[name + "FreeBookmark"] = [=] { return table->FreeBookmark(0); };
    calls[name + "SortTable"] = [=] { return table->SortTable(nullptr, 0); };
    calls[name + "QuerySortOrder"] = [=] { return table->QuerySortOrder(nullptr); };
    calls[name + "QueryRows"] = [=] { return table->QueryRows(1, 0, nullptr); };
    calls[name + "Abort"] = [=] { return table->Abort(); };
    calls[name + "ExpandRow"] = [=] {
        return table->ExpandRow(0, nullptr, 0, 0, nullptr, nullptr);
    };
    calls[name + "CollapseRow"] = [=] { return table->CollapseRow(0, nullptr, 0, nullptr); };
    calls[name + "WaitForCompletion"] = [=] { return table->WaitForCompletion(0, 0, nullptr); };
    calls[name + "GetCollapseState"] = [=] {
        return table->GetCollapseState(0, 0, nullptr, nullptr, nullptr);
    };
    calls[name + "SetCollapseState"] = [=] {
        return table->SetCollapseState(0, 0, nullptr, nullptr);
    };
}

void AddStream(Calls& calls, IStream* stream)
{
    const std::string name = "IStream::";
    const LARGE_INTEGER none{};
    const ULARGE_INTEGER zero{};
    calls[name + "Read"] = [=] { return stream->Read(nullptr, 0, nullptr); };
    calls[name + "Write"] = [=] { return stream->Write(nullptr, 0, nullptr); };
    calls[name + "Seek"] = [=] { return stream->Seek(none, 0, nullptr); };
    calls[name + "SetSize"] = [=] { return stream->SetSize(zero); };
    calls[name + "CopyTo"] = [=] { return stream->CopyTo(nullptr, zero, nullptr, nullptr); };
    calls[name + "Commit"] = [=] { return stream->Commit(0); };
    calls[name + "Revert"] = [=] { return stream->Revert(); };
    calls[name + "LockRegion"] = [=] { return stream->LockRegion(zero, zero, 0); };
    calls[name + "UnlockRegion"] = [=] { return stream->UnlockRegion(zero, zero, 0); };
    calls[name + "Stat"] = [=] { return stream->Stat(nullptr, 0); };
    calls[name + "Clone"] = [=] { return stream->Clone(nullptr); };
}

void AddSession(Calls& calls, mapi64::IMAPISession* session)
{
    const std::string name = "IMAPISession::";
    calls[name + "GetLastError"] = [=] { return session->GetLastError(S_OK, 0, nullptr); };
    calls[name + "GetMsgStoresTable"] = [=] { return session->GetMsgStoresTable(0, nullptr); };
    calls[name + "OpenMsgStore"] = [=] {
        return session->OpenMsgStore(0, 0, nullptr, nullptr, 0, nullptr);
    };
    calls[name + "OpenAddressBook"] = [=] {
        return session->OpenAddressBook(0, nullptr, 0, nullptr);
    };
    calls[name + "OpenProfileSection"] = [=] {
        return session->OpenProfileSection(nullptr, nullptr, 0, nullptr);
    };
    calls[name + "GetStatusTable"] = [=] { return session->GetStatusTable(0, nullptr); };
    calls[name + "OpenEntry"] = [=] {
        return session->OpenEntry(0, nullptr, nullptr, 0, nullptr, nullptr);
    };
    calls[name + "CompareEntryIDs"] = [=] {
        return session->CompareEntryIDs(0, nullptr, 0, nullptr, 0, nullptr);
    };
    calls[name + "Advise"] = [=] { return session->Advise(0, nullptr, 0, nullptr, nullptr); };
    calls[name + "Unadvise"] = [=] { return session->Unadvise(0); };
    calls[name + "MessageOptions"] = [=] {
        return session->MessageOptions(0, 0, nullptr, nullptr);
    };
    calls[name + "QueryDefaultMessageOpt"] = [=] {
        return session->QueryDefaultMessageOpt(nullptr, 0, nullptr, nullptr);
    };
    calls[name + "EnumAdrTypes"] = [=] { return session->EnumAdrTypes(0, nullptr, nullptr); };
    calls[name + "QueryIdentity"] = [=] { return session->QueryIdentity(nullptr, nullptr); };
    calls[name + "Logoff"] = [=] { return session->Logoff(0, 0, 0); };
    calls[name + "SetDefaultStore"] = [=] { return session->SetDefaultStore(0, 0, nullptr); };
    calls[name + "AdminServices"] = [=] { return session->AdminServices(0, nullptr); };
    calls[name + "ShowForm"] = [=] {
        return session->ShowForm(0, nullptr, nullptr, nullptr, 0, nullptr, 0, 0, 0, 0, nullptr);
    };
    calls[name + "PrepareForm"] = [=] { return session->PrepareForm(nullptr, nullptr, nullptr); };
}

void AddProfiles(Calls& calls, IProfAdmin* admin)
{
    const std::string name = "IProfAdmin::";
    calls[name + "GetLastError"] = [=] { return admin->GetLastError(S_OK, 0, nullptr); };
    calls[name + "GetProfileTable"] = [=] { return admin->GetProfileTable(0, nullptr); };
    calls[name + "CreateProfile"] = [=] { return admin->CreateProfile(nullptr, nullptr, 0, 0); };
    calls[name + "DeleteProfile"] = [=] { return admin->DeleteProfile(nullptr, 0); };
    calls[name + "ChangeProfilePassword"] = [=] {
        return admin->ChangeProfilePassword(nullptr, nullptr, nullptr, 0);
    };
    calls[name + "CopyProfile"] = [=] {
        return admin->CopyProfile(nullptr, nullptr, nullptr, 0, 0);
    };
    calls[name + "RenameProfile"] = [=] {
        return admin->RenameProfile(nullptr, nullptr, nullptr, 0, 0);
    };
    calls[name + "SetDefaultProfile"] = [=] { return admin->SetDefaultProfile(nullptr, 0); };
    calls[name + "AdminServices"] = [=] {
        return admin->AdminServices(nullptr, nullptr, 0, 0, nullptr);
    };
}

void AddStore(Calls& calls, mapi64::IMsgStore* store)
{
    const std::string name = "IMsgStore::";
    AddProps(calls, "IMsgStore", store);
    calls[name + "Advise"] = [=] { return store->Advise(0, nullptr, 0, nullptr, nullptr); };
    calls[name + "Unadvise"] = [=] { return store->Unadvise(0); };
    calls[name + "CompareEntryIDs"] = [=] {
        return store->CompareEntryIDs(0, nullptr, 0, nullptr, 0, nullptr);
    };
    calls[name + "OpenEntry"] = [=] {
        return store->OpenEntry(0, nullptr, nullptr, 0, nullptr, nullptr);
    };
    calls[name + "SetReceiveFolder"] = [=] {
        return store->SetReceiveFolder(nullptr, 0, 0, nullptr);
    };
    calls[name + "GetReceiveFolder"] = [=] {
        return store->GetReceiveFolder(nullptr, 0, nullptr, nullptr, nullptr);
    };
    calls[name + "GetReceiveFolderTable"] = [=] {
        return store->GetReceiveFolderTable(0, nullptr);
    };
    calls[name + "StoreLogoff"] = [=] { return store->StoreLogoff(nullptr); };
    calls[name + "AbortSubmit"] = [=] { return store->AbortSubmit(0, nullptr, 0); };
    calls[name + "GetOutgoingQueue"] = [=] { return store->GetOutgoingQueue(0, nullptr); };
    calls[name + "SetLockState"] = [=] { return store->SetLockState(nullptr, 0); };
    calls[name + "FinishedMsg"] = [=] { return store->FinishedMsg(0, 0, nullptr); };
    calls[name + "NotifyNewMail"] = [=] { return store->NotifyNewMail(nullptr); };
}

void AddFolder(Calls& calls, IMAPIFolder* folder)
{
    const std::string name = "IMAPIFolder::";
    AddContainer(calls, "IMAPIFolder", folder);
    calls[name + "CreateMessage"] = [=] { return folder->CreateMessage(nullptr, 0, nullptr); };
    calls[name + "CopyMessages"] = [=] {
        return folder->CopyMessages(nullptr, nullptr, nullptr, 0, nullptr, 0);
    };
    calls[name + "DeleteMessages"] = [=] { return folder->DeleteMessages(nullptr, 0, nullptr, 0); };
    calls[name + "CreateFolder"] = [=] {
        return folder->CreateFolder(0, nullptr, nullptr, nullptr, 0, nullptr);
    };
    calls[name + "CopyFolder"] = [=] {
        return folder->CopyFolder(0, nullptr, nullptr, nullptr, nullptr, 0, nullptr, 0);
    };
    calls[name + "DeleteFolder"] = [=] { return folder->DeleteFolder(0, nullptr, 0, nullptr, 0); };
    calls[name + "SetReadFlags"] = [=] { return folder->SetReadFlags(nullptr, 0, nullptr, 0); };
    calls[name + "GetMessageStatus"] = [=] {
        return folder->GetMessageStatus(0, nullptr, 0, nullptr);
    };
    calls[name + "SetMessageStatus"] = [=] {
        return folder->SetMessageStatus(0, nullptr, 0, 0, nullptr);
    };
    calls[name + "SaveContentsSort"] = [=] { return folder->SaveContentsSort(nullptr, 0); };
    calls[name + "EmptyFolder"] = [=] { return folder->EmptyFolder(0, nullptr, 0); };
}

void AddMessage(Calls& calls, IMessage* message)
{
    const std::string name = "IMessage::";
    AddProps(calls, "IMessage", message);
    calls[name + "GetAttachmentTable"] = [=] { return message->GetAttachmentTable(0, nullptr); };
    calls[name + "OpenAttach"] = [=] { return message->OpenAttach(0, nullptr, 0, nullptr); };
    calls[name + "CreateAttach"] = [=] {
        return message->CreateAttach(nullptr, 0, nullptr, nullptr);
    };
    calls[name + "DeleteAttach"] = [=] { return message->DeleteAttach(0, 0, nullptr, 0); };
    calls[name + "GetRecipientTable"] = [=] { return message->GetRecipientTable(0, nullptr); };
    calls[name + "ModifyRecipients"] = [=] { return message->ModifyRecipients(0, nullptr); };
    calls[name + "SubmitMessage"] = [=] { return message->SubmitMessage(0); };
    calls[name + "SetReadFlag"] = [=] { return message->SetReadFlag(0); };
}

void AddBook(Calls& calls, mapi64::IAddrBook* book)
{
    const std::string name = "IAddrBook::";
    AddProps(calls, "IAddrBook", book);
    calls[name + "OpenEntry"] = [=] {
        return book->OpenEntry(0, nullptr, nullptr, 0, nullptr, nullptr);
    };
    calls[name + "CompareEntryIDs"] = [=] {
        return book->CompareEntryIDs(0, nullptr, 0, nullptr, 0, nullptr);
    };
    calls[name + "Advise"] = [=] { return book->Advise(0, nullptr, 0, nullptr, nullptr); };
    calls[name + "Unadvise"] = [=] { return book->Unadvise(0); };
    calls[name + "CreateOneOff"] = [=] {
        return book->CreateOneOff(nullptr, nullptr, nullptr, 0, nullptr, nullptr);
    };
    calls[name + "NewEntry"] = [=] {
        return book->NewEntry(0, 0, 0, nullptr, 0, nullptr, nullptr, nullptr);
    };
    calls[name + "ResolveName"] = [=] { return book->ResolveName(0, 0, nullptr, nullptr); };
    calls[name + "Address"] = [=] { return book->Address(nullptr, nullptr, nullptr); };
    calls[name + "Details"] = [=] {
        return book->Details(nullptr, nullptr, nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0);
    };
    calls[name + "RecipOptions"] = [=] { return book->RecipOptions(0, 0, nullptr); };
    calls[name + "QueryDefaultRecipOpt"] = [=] {
        return book->QueryDefaultRecipOpt(nullptr, 0, nullptr, nullptr);
    };
    calls[name + "GetPAB"] = [=] { return book->GetPAB(nullptr, nullptr); };
    calls[name + "SetPAB"] = [=] { return book->SetPAB(0, nullptr); };
    calls[name + "GetDefaultDir"] = [=] { return book->GetDefaultDir(nullptr, nullptr); };
    calls[name + "SetDefaultDir"] = [=] { return book->SetDefaultDir(0, nullptr); };
    calls[name + "GetSearchPath"] = [=] { return book->GetSearchPath(0, nullptr); };
    calls[name + "SetSearchPath"] = [=] { return book->SetSearchPath(0, nullptr); };
    calls[name + "PrepareRecips"] = [=] { return book->PrepareRecips(0, nullptr, nullptr); };
}

void AddFunctions(Calls& calls)
{
    calls["MAPIInitialize"] = [] { return MAPIInitialize(nullptr); };
    calls["MAPILogonEx"] = [] { return MAPILogonEx(0, nullptr, nullptr, 0, nullptr); };
    calls["MAPIAdminProfiles"] = [] { return MAPIAdminProfiles(0, nullptr); };
    calls["MAPIAllocateBuffer"] = [] { return MAPIAllocateBuffer(1, nullptr); };
    calls["MAPIAllocateMore"] = [] { return MAPIAllocateMore(1, nullptr, nullptr); };
    calls["MAPIFreeBuffer"] = [] {
        int nothing = 0;
        return static_cast<HRESULT>(MAPIFreeBuffer(&nothing));
    };
}

} // namespace

Calls AllCalls(const CallTargets& targets)
{
    Calls calls;
    AddFunctions(calls);
    AddProfiles(calls, targets.profiles);
    AddSession(calls, targets.session);
    AddProps(calls, "IProfSect", targets.section);
    AddStore(calls, targets.store);
    AddFolder(calls, targets.folder);
    AddMessage(calls, targets.message);
    AddProps(calls, "IAttach", targets.attach);
    AddBook(calls, targets.book);
    AddBookContainer(calls, "IABContainer", targets.container);
    AddBookContainer(calls, "IDistList", targets.list);
    AddProps(calls, "IMailUser", targets.user);
    AddTable(calls, targets.table);
    AddStream(calls, targets.stream);
    return calls;
}

} // namespace mapitest

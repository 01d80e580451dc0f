#include <map>
#include <set>
#include <thread>

#include "OperationFixture.h"

using namespace mapitest;

namespace
{

constexpr ULONG kNobodysFlag = 0x02000000;

bool IsFunction(const std::string& operation)
{
    return operation.find("::") == std::string::npos;
}

/// What each operation answers to arguments of nothing, where it is not MAPI_E_INVALID_PARAMETER.
HRESULT NullStatus(const std::string& operation)
{
    static const std::map<HRESULT, std::set<std::string>> kOthers = {
        {S_OK,
         {"IABContainer::SaveChanges",
          "IAddrBook::SaveChanges",
          "IAttach::SaveChanges",
          "IDistList::SaveChanges",
          "IMAPIFolder::SaveChanges",
          "IMAPIFolder::SetReadFlags",
          "IMAPITable::Abort",
          "IMAPITable::Restrict",
          "IMAPITable::SeekRow",
          "IMAPITable::WaitForCompletion",
          "IMailUser::SaveChanges",
          "IMessage::DeleteAttach",
          "IMessage::SaveChanges",
          "IMessage::SetReadFlag",
          "IMsgStore::SaveChanges",
          "IProfSect::SaveChanges",
          "IStream::Commit",
          "IStream::Revert",
          "IStream::Seek"}},
        // Of the address book, which cannot be changed, and of a message that SaveChanges closed for it.
        {MAPI_E_NO_ACCESS,
         {"IABContainer::CopyEntries",
          "IABContainer::CreateEntry",
          "IABContainer::DeleteEntries",
          "IDistList::CopyEntries",
          "IDistList::CreateEntry",
          "IDistList::DeleteEntries",
          "IMessage::SubmitMessage"}},
        {MAPI_E_INVALID_ENTRYID,
         {"IMAPIFolder::DeleteFolder", "IMAPIFolder::SetMessageStatus", "IMsgStore::AbortSubmit"}},
        {MAPI_E_INVALID_BOOKMARK, {"IMAPITable::FreeBookmark"}},
        {STG_E_INVALIDPOINTER,
         {"IStream::Clone", "IStream::CopyTo", "IStream::Read", "IStream::Stat"}},
        {STG_E_INVALIDFUNCTION, {"IStream::LockRegion", "IStream::UnlockRegion"}},
        {STG_E_ACCESSDENIED, {"IStream::SetSize", "IStream::Write"}},
        {MAPI_E_UNKNOWN_FLAGS, {"MAPILogonEx"}}, // which asks for extended MAPI
        {MAPI_E_NO_SUPPORT,
         {"IABContainer::GetSearchCriteria",
          "IABContainer::SetSearchCriteria",
          "IAddrBook::Address",
          "IAddrBook::Advise",
          "IAddrBook::Details",
          "IAddrBook::NewEntry",
          "IAddrBook::QueryDefaultRecipOpt",
          "IAddrBook::RecipOptions",
          "IAddrBook::SetDefaultDir",
          "IAddrBook::SetPAB",
          "IAddrBook::SetSearchPath",
          "IAddrBook::Unadvise",
          "IDistList::GetSearchCriteria",
          "IDistList::SetSearchCriteria",
          "IMAPIFolder::CopyFolder",
          "IMAPIFolder::GetSearchCriteria",
          "IMAPIFolder::SaveContentsSort",
          "IMAPIFolder::SetSearchCriteria",
          "IMAPISession::AdminServices",
          "IMAPISession::Advise",
          "IMAPISession::MessageOptions",
          "IMAPISession::PrepareForm",
          "IMAPISession::QueryDefaultMessageOpt",
          "IMAPISession::SetDefaultStore",
          "IMAPISession::ShowForm",
          "IMAPISession::Unadvise",
          "IMAPITable::CollapseRow",
          "IMAPITable::ExpandRow",
          "IMAPITable::GetCollapseState",
          "IMAPITable::SetCollapseState",
          "IMsgStore::FinishedMsg",
          "IMsgStore::GetOutgoingQueue",
          "IMsgStore::NotifyNewMail",
          "IMsgStore::SetLockState",
          "IMsgStore::SetReceiveFolder",
          "IProfAdmin::AdminServices",
          "IProfAdmin::ChangeProfilePassword",
          "IProfAdmin::CopyProfile",
          "IProfAdmin::CreateProfile",
          "IProfAdmin::DeleteProfile",
          "IProfAdmin::RenameProfile",
          "IProfAdmin::SetDefaultProfile"}}};
    for (const auto& [status, operations] : kOthers)
    {
        if (operations.count(operation) != 0)
        {
            return status;
        }
    }
    return MAPI_E_INVALID_PARAMETER;
}

TEST_F(OperationTest, ArgumentsOfNothingAreAnsweredByEveryOperation)
{
    EveryObject all = OpenAll();
    const Calls calls = AllCalls(TargetsOf(all));
    for (const auto& [name, call] : calls)
    {
        // For these nothing is a good argument, and they would take away what the others need.
        if (name != "MAPIInitialize" && name != "IMAPISession::Logoff" &&
            name != "IMsgStore::StoreLogoff" && name != "IMAPIFolder::EmptyFolder")
        {
            EXPECT_EQ(call(), NullStatus(name)) << name;
        }
    }
}

TEST_F(OperationTest, UnknownFlagsAreRefusedByEveryOperationThatTakesFlagsAndNoted)
{
    EveryObject all = OpenAll();
    const FlagCalls calls = AllFlagCalls(TargetsOf(all));
    ULONG64 noted = 0;
    for (const auto& [name, call] : calls)
    {
        EXPECT_EQ(call(kNobodysFlag), MAPI_E_UNKNOWN_FLAGS) << name;
        EXPECT_EQ(Counts().misuse, ++noted) << name;
        EXPECT_NE(Report().find("misuse " + name + " 0x80040106 unknown flags"), std::string::npos)
            << name << "\n"
            << Report();
    }
}

TEST_F(OperationTest, NoOperationIsServedAfterLogoff)
{
    EveryObject all = OpenAll();
    ASSERT_EQ(session->Logoff(0, 0, 0), S_OK);
    for (const auto& [name, call] : AllCalls(TargetsOf(all)))
    {
        // Profiles belong to no session.
        if (!IsFunction(name) && name.find("IProfAdmin::") != 0)
        {
            EXPECT_EQ(call(), MAPI_E_END_OF_SESSION) << name;
        }
    }
}

TEST_F(OperationTest, NoOperationOfAStoreIsServedAfterItsLogoff)
{
    EveryObject all = OpenAll();
    const Calls calls = AllCalls(TargetsOf(all));
    ULONG flags = 0;
    ASSERT_EQ(store->StoreLogoff(&flags), S_OK);
    for (const char* const kind :
         {"IMsgStore::", "IMAPIFolder::", "IMessage::", "IAttach::", "IMAPITable::", "IStream::"})
    {
        for (auto call = calls.lower_bound(kind); call->first.find(kind) == 0; ++call)
        {
            EXPECT_EQ(call->second(), MAPI_E_END_OF_SESSION) << call->first;
        }
    }
}

TEST_F(OperationTest, NoOperationIsServedAfterTheLastRelease)
{
    const Calls calls = [&] {
        EveryObject all = OpenAll();
        return AllCalls(TargetsOf(all));
    }();
    store.Reset();
    session.Reset();
    ULONG64 noted = 0;
    for (const auto& [name, call] : calls)
    {
        if (!IsFunction(name))
        {
            EXPECT_EQ(call(), MAPI_E_INVALID_OBJECT) << name;
            EXPECT_EQ(Counts().misuse, ++noted) << name;
        }
    }
}

TEST_F(OperationTest, NoOperationIsServedOnAThreadWithoutMapi)
{
    EveryObject all = OpenAll();
    const Calls calls = AllCalls(TargetsOf(all));
    std::map<std::string, HRESULT> answers;
    std::thread other([&] {
        for (const auto& [name, call] : calls)
        {
            if (!IsFunction(name) || name == "MAPILogonEx" || name == "MAPIAdminProfiles")
            {
                answers[name] = call();
            }
        }
    });
    other.join();
    EXPECT_GT(answers.size(), 200U);
    for (const auto& [name, answer] : answers)
    {
        EXPECT_EQ(answer, MAPI_E_NOT_INITIALIZED) << name;
    }
    EXPECT_EQ(Counts().misuse, answers.size());
}

TEST_F(OperationTest, NoOperationIsServedAfterTheLastMapiUninitialize)
{
    EveryObject all = OpenAll();
    const Calls calls = AllCalls(TargetsOf(all));
    MAPIUninitialize();
    for (const auto& [name, call] : calls)
    {
        if (!IsFunction(name))
        {
            EXPECT_EQ(call(), MAPI_E_NOT_INITIALIZED) << name;
        }
    }
    EXPECT_EQ(MAPILogonEx(0, nullptr, nullptr, 0, nullptr), MAPI_E_NOT_INITIALIZED);
    all = EveryObject();
    store.Reset();
    session.Reset();
    Start();
}

TEST_F(OperationTest, InterfaceThatAnObjectLacksIsRefusedAndNoted)
{
    EveryObject all = OpenAll();
    std::string inbox = FolderId(4);
    std::string item = MessageId(100);
    std::string user = EntryId(MAPI_MAILUSER, bookUid, 30);
    std::string owner = EntryId(MAPI_STORE, storeUid, 1);
    auto* const folderId = reinterpret_cast<ENTRYID*>(inbox.data());
    auto* const messageId = reinterpret_cast<ENTRYID*>(item.data());
    auto* const userId = reinterpret_cast<ENTRYID*>(user.data());
    auto* const storeId = reinterpret_cast<ENTRYID*>(owner.data());
    ULONG type = 0;
    ULONG number = 0;
    IUnknown* out = nullptr;
    const IID* const wrong = &IID_IProfSect;
    const std::pair<const char*, HRESULT> answers[] = {
        {"IMAPISession::OpenMsgStore",
         session->OpenMsgStore(0, 32, storeId, wrong, 0, reinterpret_cast<::IMsgStore**>(&out))},
        {"IMAPISession::OpenEntry", session->OpenEntry(32, folderId, wrong, 0, &type, &out)},
        {"IMsgStore::OpenEntry", store->OpenEntry(32, messageId, wrong, 0, &type, &out)},
        {"IMAPIFolder::OpenEntry", all.folder->OpenEntry(32, messageId, wrong, 0, &type, &out)},
        {"IMAPIFolder::CreateMessage",
         all.folder->CreateMessage(wrong, 0, reinterpret_cast<IMessage**>(&out))},
        {"IMAPIFolder::OpenProperty",
         all.folder->OpenProperty(PR_CONTAINER_CONTENTS, wrong, 0, 0, &out)},
        {"IMessage::OpenAttach",
         all.message->OpenAttach(0, wrong, 0, reinterpret_cast<IAttach**>(&out))},
        {"IMessage::CreateAttach",
         all.message->CreateAttach(wrong, 0, &number, reinterpret_cast<IAttach**>(&out))},
        {"IAddrBook::OpenEntry", all.book->OpenEntry(32, userId, wrong, 0, &type, &out)},
        {"IABContainer::OpenEntry", all.container->OpenEntry(32, userId, wrong, 0, &type, &out)},
        {"IABContainer::OpenProperty",
         all.container->OpenProperty(PR_CONTAINER_CONTENTS, wrong, 0, 0, &out)}};
    for (const auto& [name, answer] : answers)
    {
        EXPECT_EQ(answer, MAPI_E_INTERFACE_NOT_SUPPORTED) << name;
        EXPECT_NE(Report().find(std::string("misuse ") + name + " 0x80004002 "), std::string::npos)
            << name << "\n"
            << Report();
    }
    EXPECT_EQ(out, nullptr);
    // Asking an object itself is no misuse.
    void* asked = this;
    EXPECT_EQ(all.folder->QueryInterface(*wrong, &asked), MAPI_E_INTERFACE_NOT_SUPPORTED);
    EXPECT_EQ(asked, nullptr);
    EXPECT_EQ(Counts().misuse, sizeof(answers) / sizeof(answers[0]));
}

TEST_F(OperationTest, NullOutPointerIsNoted)
{
    EXPECT_EQ(session->QueryIdentity(nullptr, nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Counts().misuse, 1U);
    EXPECT_NE(Report().find("misuse IMAPISession::QueryIdentity 0x80070057 a null pointer"),
              std::string::npos)
        << Report();
}

} // namespace

#include "OperationFixture.h"

#include "TestPaths.h"

namespace mapitest
{
namespace
{

#define DT_WIDEN(text) L##text
#define DT_WIDE(text) DT_WIDEN(text)

const char* const kItem = R"({ "id": 100, "folder": 4, "class": "IPM.Note",
  "properties": { "PR_SUBJECT_W": "one", "PR_BODY_W": "text" },
  "attachments": [ { "properties": { "PR_ATTACH_METHOD": 1, "PR_ATTACH_DATA_BIN": "00" } } ] },
  { "id": 101, "folder": 4, "class": "IPM.Note", "properties": { "PR_SUBJECT_W": "two" } },
  { "id": 102, "folder": 4, "class": "IPM.Note", "properties": { "PR_SUBJECT_W": "three" } })";

} // namespace

void OperationTest::SetUp()
{
    StoreTest::SetUp();
    WriteDocument(UsualDocument(kItem));
    Start();
}

void OperationTest::OpenInBook(const BookRef& book, ULONG type, ULONG64 id, IUnknown** out)
{
    std::string bytes = EntryId(type, bookUid, id);
    ULONG opened = 0;
    EXPECT_EQ(
        book->OpenEntry(32, reinterpret_cast<ENTRYID*>(bytes.data()), nullptr, 0, &opened, out),
        S_OK);
}

EveryObject OperationTest::OpenAll()
{
    EveryObject all;
    EXPECT_EQ(MAPIAdminProfiles(0, all.profiles.Put()), S_OK);
    EXPECT_EQ(session->OpenProfileSection(nullptr, nullptr, 0, all.section.Put()), S_OK);
    all.folder = OpenFolder(4);
    all.message = OpenMessage(100);
    EXPECT_EQ(all.message->OpenAttach(0, nullptr, MAPI_BEST_ACCESS, all.attach.Put()), S_OK);
    EXPECT_EQ(session->OpenAddressBook(0, nullptr, 0, all.book.PutAs<::IAddrBook>()), S_OK);
    OpenInBook(all.book, MAPI_ABCONT, 28, all.container.PutAs<IUnknown>());
    OpenInBook(all.book, MAPI_DISTLIST, 31, all.list.PutAs<IUnknown>());
    OpenInBook(all.book, MAPI_MAILUSER, 30, all.user.PutAs<IUnknown>());
    all.table = Contents(4);
    EXPECT_EQ(
        all.message->OpenProperty(PR_BODY_W, &IID_IStream, 0, 0, all.stream.PutAs<IUnknown>()),
        S_OK);
    return all;
}

CallTargets OperationTest::TargetsOf(const EveryObject& objects) const
{
    return {objects.profiles.Get(),
            session.Get(),
            objects.section.Get(),
            store.Get(),
            objects.folder.Get(),
            objects.message.Get(),
            objects.attach.Get(),
            objects.book.Get(),
            objects.container.Get(),
            objects.list.Get(),
            objects.user.Get(),
            objects.table.Get(),
            objects.stream.Get()};
}

std::vector<std::string> ListedOperations()
{
    const std::string text =
        ReadFileText(L"Z:" DT_WIDE(DT_SOURCE_DIR) L"/mapistore/operations.txt");
    std::vector<std::string> names;
    for (size_t at = 0; at < text.size();)
    {
        const size_t end = text.find('\n', at);
        const std::string line = text.substr(at, end - at);
        if (!line.empty() && line[0] != '#')
        {
            names.push_back(line);
        }
        at = end + 1;
    }
    return names;
}

} // namespace mapitest

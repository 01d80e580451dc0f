#include "StoreFixture.h"

#include <cstring>
#include <fstream>

namespace mapitest
{
namespace
{

constexpr const char* kHead = R"({
  "format": "mapistore",
  "version": 1,
  "revision": 4,
  "nextId": 100000000,
)";

constexpr const char* kProfiles = R"(  "profiles": [
    { "name": "Demo", "default": true, "identity": 30, "stores": [1] }
  ],
  "stores": [
    {
      "id": 1,
      "name": "ada.quist@nordlys.example",
      "uid": "5D1F6A0B93C84E27A1B0C2D3E4F50617",
      "default": true,
      "personal": true,
      "folders": [
        { "id": 2, "parent": null, "name": "", "role": "root" },
        { "id": 3, "parent": 2, "name": "Top of personal folders", "role": "ipmSubtree" },
        { "id": 4, "parent": 3, "name": "Inbox", "class": "IPF.Note", "role": "inbox" },
        { "id": 5, "parent": 3, "name": "Outbox", "class": "IPF.Note", "role": "outbox" },
        { "id": 6, "parent": 3, "name": "Sent Items", "class": "IPF.Note", "role": "sentItems" },
        { "id": 7, "parent": 3, "name": "Deleted Items", "class": "IPF.Note", "role": "deletedItems" },
        { "id": 8, "parent": 3, "name": "Calendar", "class": "IPF.Appointment", "role": "calendar" },
        { "id": 9, "parent": 8, "name": "Team calendar", "class": "IPF.Appointment" },
        { "id": 10, "parent": 3, "name": "Contacts", "class": "IPF.Contact", "role": "contacts" },
        { "id": 11, "parent": 3, "name": "Sync log", "class": "IPF.Appointment", "hidden": true, "advise": false }
      ],
      "messages": [)";

constexpr const char* kTail = R"(]
    }
  ],
  "addressBook": {
    "uid": "B3A1E9F04C5D4682977E10AABBCCDDEE",
    "containers": [
      { "id": 28, "parent": null, "properties": {
          "PR_DISPLAY_NAME_W": "Global Address List", "PR_CONTAINER_FLAGS": 11, "PR_DISPLAY_TYPE": 131072 } },
      { "id": 29, "parent": 28, "properties": { "PR_DISPLAY_NAME_W": "Nordlys" } }
    ],
    "entries": [
      { "id": 30, "containers": [28, 29], "properties": {
          "PR_DISPLAY_NAME_W": "Ada Quist", "PR_GIVEN_NAME_W": "Ada", "PR_SURNAME_W": "Quist",
          "PR_ADDRTYPE_W": "EX", "PR_EMAIL_ADDRESS_W": "/o=Nordlys/cn=adaq",
          "PR_SMTP_ADDRESS_W": "ada.quist@nordlys.example", "PR_ACCOUNT_W": "adaq" } },
      { "id": 31, "containers": [28], "type": "distList", "members": [30, 32],
        "properties": { "PR_DISPLAY_NAME_W": "Everybody", "PR_ADDRTYPE_W": "EX" } },
      { "id": 32, "containers": [28], "properties": {
          "PR_DISPLAY_NAME_W": "Bo Ferrand", "PR_ADDRTYPE_W": "SMTP",
          "PR_EMAIL_ADDRESS_W": "bo.ferrand@nordlys.example" } }
    ]
  }
}
)";

} // namespace

std::string UsualDocument(const std::string& messages, const std::string& extra)
{
    const std::string body = messages.empty() ? "" : "\n        " + messages + "\n      ";
    return kHead + extra + kProfiles + body + kTail;
}

void CRows::Reset()
{
    SRowSet* rows = std::exchange(m_rows, nullptr);
    FreeProws(rows);
}

CTags::CTags(std::initializer_list<ULONG> tags) : m_words(tags)
{
    m_words.insert(m_words.begin(), static_cast<ULONG>(tags.size()));
}

CTags::CTags(const std::vector<ULONG>& tags) : m_words(tags)
{
    m_words.insert(m_words.begin(), static_cast<ULONG>(tags.size()));
}

std::string HexOf(const std::string& bytes)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const char c : bytes)
    {
        const auto byte = static_cast<unsigned char>(c);
        text.push_back(kDigits[byte >> 4]);
        text.push_back(kDigits[byte & 15]);
    }
    return text;
}

std::string BytesOf(const std::string& hex)
{
    std::string bytes;
    for (size_t i = 0; i + 1 < hex.size(); i += 2)
    {
        bytes.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

std::wstring TempFolder()
{
    static int number = 0;
    wchar_t base[MAX_PATH];
    GetTempPathW(MAX_PATH, base);
    std::wstring path = std::wstring(base) + L"mapistore-test-" +
                        std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++number);
    CreateDirectoryW(path.c_str(), nullptr);
    return path;
}

void RemoveFolder(const std::wstring& path)
{
    WIN32_FIND_DATAW found{};
    HANDLE search = FindFirstFileW((path + L"\\*").c_str(), &found);
    if (search != INVALID_HANDLE_VALUE)
    {
        do
        {
            const std::wstring name = found.cFileName;
            const std::wstring whole = path + L"\\" + name;
            if (name == L"." || name == L"..")
            {
                continue;
            }
            if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
            {
                RemoveFolder(whole);
            }
            else
            {
                DeleteFileW(whole.c_str());
            }
        } while (FindNextFileW(search, &found));
        FindClose(search);
    }
    RemoveDirectoryW(path.c_str());
}

std::string ReadFileText(const std::wstring& path)
{
    std::string text;
    HANDLE file = CreateFileW(path.c_str(),
                              GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr,
                              OPEN_EXISTING,
                              0,
                              nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    char piece[65536];
    DWORD cb = 0;
    while (ReadFile(file, piece, sizeof(piece), &cb, nullptr) && cb != 0)
    {
        text.append(piece, cb);
    }
    CloseHandle(file);
    return text;
}

void WriteFileText(const std::wstring& path, const std::string& text)
{
    const std::wstring fresh = path + L".test";
    HANDLE file = CreateFileW(fresh.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    DWORD cb = 0;
    WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &cb, nullptr);
    CloseHandle(file);
    // Wine replaces no file that somebody has open, and the library may be reading it just now.
    while (!MoveFileExW(fresh.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING))
    {
        ASSERT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
        SwitchToThread();
    }
}

void StoreTest::SetUp()
{
    m_path = TempFolder();
    ASSERT_EQ(MapiStoreConfigure(L"Folder", m_path.c_str()), S_OK);
    // A test that wants to hear of the disk says so; the others ask for it by MapiStoreRefresh.
    ASSERT_EQ(MapiStoreConfigure(L"Watch", L"0"), S_OK);
    ASSERT_EQ(MapiStoreConfigure(L"Guard", L"1"), S_OK);
}

void StoreTest::TearDown()
{
    if (m_running)
    {
        Stop();
    }
    MapiStoreSetFaults("");
    for (const wchar_t* name : {L"Folder", L"Watch", L"Guard", L"Faults", L"Ledger"})
    {
        MapiStoreConfigure(name, nullptr);
    }
    RemoveFolder(m_path);
}

void StoreTest::WriteDocument(const std::string& text)
{
    WriteFileText(m_path + L"\\store.json", text);
}

std::string StoreTest::ReadDocument() const
{
    return ReadFileText(m_path + L"\\store.json");
}

void StoreTest::LogOn()
{
    ULONG flags = MAPI_UNICODE | MAPI_EXTENDED | MAPI_NEW_SESSION | MAPI_EXPLICIT_PROFILE;
    wchar_t profile[] = L"Demo";
    ASSERT_EQ(MAPILogonEx(0, profile, nullptr, flags, session.PutAs<::IMAPISession>()), S_OK);
    std::string id = EntryId(MAPI_STORE, storeUid, 1);
    ASSERT_EQ(session->OpenMsgStore(0,
                                    static_cast<ULONG>(id.size()),
                                    reinterpret_cast<ENTRYID*>(id.data()),
                                    nullptr,
                                    MAPI_BEST_ACCESS,
                                    store.PutAs<::IMsgStore>()),
              S_OK);
}

void StoreTest::Start()
{
    MAPIINIT_0 init{MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
    ASSERT_EQ(MAPIInitialize(&init), S_OK);
    m_running = true;
    LogOn();
}

void StoreTest::Stop()
{
    store.Reset();
    session.Reset();
    MAPIUninitialize();
    m_running = false;
    const MapiStoreCounts counts = Counts();
    EXPECT_EQ(counts.interfacesLeft, 0U) << Report();
    EXPECT_EQ(counts.buffersLeft, 0U) << Report();
    EXPECT_EQ(counts.connectionsLeft, 0U) << Report();
}

std::string StoreTest::EntryId(ULONG type, const std::string& uidHex, ULONG64 id) const
{
    std::string bytes(32, '\0');
    const std::string uid = BytesOf(uidHex);
    std::memcpy(&bytes[4], uid.data(), 16);
    bytes[20] = 1;
    bytes[21] = static_cast<char>(type);
    std::memcpy(&bytes[24], &id, sizeof(id));
    return bytes;
}

std::string StoreTest::FolderId(ULONG64 id) const
{
    return EntryId(MAPI_FOLDER, storeUid, id);
}

std::string StoreTest::MessageId(ULONG64 id, bool tableForm) const
{
    std::string bytes = EntryId(MAPI_MESSAGE, storeUid, id);
    bytes[0] = tableForm ? static_cast<char>(0x80) : '\0';
    return bytes;
}

FolderRef StoreTest::OpenFolder(ULONG64 id, ULONG flags)
{
    FolderRef folder;
    ULONG type = 0;
    std::string entry = FolderId(id);
    EXPECT_EQ(store->OpenEntry(static_cast<ULONG>(entry.size()),
                               reinterpret_cast<ENTRYID*>(entry.data()),
                               nullptr,
                               flags,
                               &type,
                               folder.PutAs<IUnknown>()),
              S_OK);
    EXPECT_EQ(type, MAPI_FOLDER);
    return folder;
}

MessageRef StoreTest::OpenMessage(ULONG64 id, ULONG flags)
{
    MessageRef message;
    ULONG type = 0;
    std::string entry = MessageId(id);
    EXPECT_EQ(store->OpenEntry(static_cast<ULONG>(entry.size()),
                               reinterpret_cast<ENTRYID*>(entry.data()),
                               nullptr,
                               flags,
                               &type,
                               message.PutAs<IUnknown>()),
              S_OK);
    EXPECT_EQ(type, MAPI_MESSAGE);
    return message;
}

TableRef StoreTest::Contents(ULONG64 folder, ULONG flags)
{
    const FolderRef opened = OpenFolder(folder);
    TableRef table;
    EXPECT_EQ(opened->GetContentsTable(flags, table.PutAs<::IMAPITable>()), S_OK);
    return table;
}

SPropValue TextValue(ULONG tag, const wchar_t* text)
{
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.lpszW = const_cast<wchar_t*>(text);
    return value;
}

SPropValue NumberValue(ULONG tag, LONG number)
{
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.l = number;
    return value;
}

CRows AllRows(const TableRef& table)
{
    CRows rows;
    EXPECT_EQ(table->QueryRows(0x0FFFFFFF, 0, rows.Put()), S_OK);
    return rows;
}

std::vector<std::wstring> TextColumn(const TableRef& table, ULONG tag)
{
    CTags columns{tag};
    EXPECT_EQ(table->SetColumns(columns, 0), S_OK);
    EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
    const CRows rows = AllRows(table);
    std::vector<std::wstring> texts;
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        const SPropValue& value = rows[i].lpProps[0];
        texts.push_back(value.ulPropTag == tag ? value.Value.lpszW : L"<none>");
    }
    return texts;
}

MapiStoreCounts Counts()
{
    MapiStoreCounts counts{};
    MapiStoreGetCounts(&counts);
    return counts;
}

std::string Report()
{
    std::string text(MapiStoreGetReport(nullptr, 0), '\0');
    MapiStoreGetReport(text.data(), static_cast<ULONG>(text.size()));
    return text.c_str();
}

} // namespace mapitest

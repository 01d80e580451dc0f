#include <algorithm>
#include <cstring>

#include "StoreFixture.h"
#include "TestPaths.h"

using namespace mapitest;

namespace
{

#define DT_WIDEN(text) L##text
#define DT_WIDE(text) DT_WIDEN(text)

/// One way of damaging a document, and what the library says of it.
struct Damage
{
    const char* name;
    const char* find;
    const char* with;
    const char* says; // behind "store.json:LINE:COLUMN: "
};

const char* const kMessage = R"({ "id": 100, "folder": 8, "class": "IPM.Appointment",
          "properties": { "PR_SUBJECT_W": "S", "PR_IMPORTANCE": 1, "PR_CLIENT_SUBMIT_TIME": "2026-01-02T03:04:05Z",
            "0x66010102": "00FF", "0x6602000B": true, "0x66030048": "{00020329-0000-0000-C000-000000000046}",
            "0x66041003": [1], "PidLidTimeZoneStruct": { "timeZone": { "bias": -60 } },
            "PidLidAppointmentRecur": { "recurrence": { "frequency": "weekly", "days": ["MO"], "start": "2026-11-02",
              "startMinute": 540, "endMinute": 600, "end": { "until": "2026-12-28" } } },
            "PidLidLocation": "L", "PS_PUBLIC_STRINGS:Key:PT_UNICODE": "k" },
          "recipients": [ { "PR_RECIPIENT_TYPE": 1, "PR_DISPLAY_NAME_W": "R" } ],
          "attachments": [ { "properties": { "PR_ATTACH_METHOD": 1 } } ] })";

const Damage kDamages[] = {
    {"no JSON", "\"format\": \"mapistore\",", "\"format\": mapistore,", "syntax error"},
    {"cut short", "\"addressBook\": {", "", "syntax error"},
    {"key twice",
     "\"version\": 1,",
     "\"version\": 1, \"version\": 1,",
     "the key \"version\" stands here twice"},
    {"other format", "\"mapistore\"", "\"maildir\"", "format: expected \"mapistore\""},
    {"other version",
     "\"version\": 1",
     "\"version\": 2",
     "version: expected a whole number from 1 to 1"},
    {"no revision", "\"revision\": 4,", "", "the key \"revision\" is missing"},
    {"unknown key", "\"revision\": 4,", "\"revision\": 4, \"colour\": 1,", "colour: unknown key"},
    {"store's unknown key",
     "\"personal\": true,",
     "\"personel\": true,",
     "stores[0].personel: unknown key"},
    {"number as text",
     "\"nextId\": 100000000",
     "\"nextId\": \"many\"",
     "nextId: expected a whole number"},
    {"id above nextId",
     "\"nextId\": 100000000",
     "\"nextId\": 50",
     "stores[0].messages[0].id: \"nextId\" has to be above every identifier"},
    {"id twice",
     "\"id\": 3, \"parent\"",
     "\"id\": 4, \"parent\"",
     "stores[0].folders[2].id: the identifier 4 is used twice"},
    {"id negative", "\"id\": 100,", "\"id\": -1,", "stores[0].messages[0].id: expected a whole"},
    {"bad uid",
     "5D1F6A0B93C84E27A1B0C2D3E4F50617",
     "5D1F",
     "stores[0].uid: expected 32 hexadecimal digits"},
    {"uid twice",
     "B3A1E9F04C5D4682977E10AABBCCDDEE",
     "5D1F6A0B93C84E27A1B0C2D3E4F50617",
     "addressBook.uid: two stores or address books have this uid"},
    {"no parent folder",
     "\"id\": 9, \"parent\": 8",
     "\"id\": 9, \"parent\": 999",
     "stores[0].folders[7].parent: the store has no such folder"},
    {"folders in a ring",
     "\"id\": 3, \"parent\": 2",
     "\"id\": 3, \"parent\": 8",
     "stores[0].folders[1].parent: the folders contain each other"},
    {"two roots",
     "\"id\": 3, \"parent\": 2",
     "\"id\": 3, \"parent\": null",
     "stores[0].folders: a store has one folder without a parent"},
    {"role twice",
     "\"role\": \"calendar\"",
     "\"role\": \"inbox\"",
     "stores[0].folders[6].role: two folders of the store have this role"},
    {"unknown role",
     "\"role\": \"calendar\"",
     "\"role\": \"kalender\"",
     "stores[0].folders[6].role: unknown role"},
    {"bad form",
     "\"personal\": true,",
     "\"personal\": true, \"tableIdentifiers\": \"x\",",
     "stores[0].tableIdentifiers: expected \"longTerm\" or \"table\""},
    {"message in no folder",
     "\"id\": 100, \"folder\": 8",
     "\"id\": 100, \"folder\": 88",
     "stores[0].messages[0].folder: the store has no such folder"},
    {"message without class",
     "\"class\": \"IPM.Appointment\",\n          \"properties\"",
     "\"properties\"",
     "stores[0].messages[0]: the key \"class\" is missing"},
    {"unknown property",
     "\"PR_SUBJECT_W\"",
     "\"PR_SUBJEKT_W\"",
     "stores[0].messages[0].properties.PR_SUBJEKT_W: unknown property"},
    {"property twice",
     "\"PR_IMPORTANCE\": 1",
     "\"PR_SUBJECT_A\": \"x\"",
     "stores[0].messages[0].properties.PR_SUBJECT_A: this property stands here twice"},
    {"text as number",
     "\"PR_SUBJECT_W\": \"S\"",
     "\"PR_SUBJECT_W\": 5",
     "stores[0].messages[0].properties.PR_SUBJECT_W: expected text"},
    {"number too large",
     "\"PR_IMPORTANCE\": 1",
     "\"PR_IMPORTANCE\": 3000000000",
     "properties.PR_IMPORTANCE: expected a whole number from -2147483648 to 2147483647"},
    {"computed property",
     "\"PR_IMPORTANCE\": 1",
     "\"PR_ENTRYID\": \"00\"",
     "properties.PR_ENTRYID: this property is computed and cannot be stored"},
    {"bad time",
     "2026-01-02T03:04:05Z",
     "2026-02-30T03:04:05Z",
     "properties.PR_CLIENT_SUBMIT_TIME: expected a time such as"},
    {"local time",
     "2026-01-02T03:04:05Z",
     "2026-01-02T03:04:05",
     "properties.PR_CLIENT_SUBMIT_TIME: expected a time such as"},
    {"odd hexadecimal",
     "\"00FF\"",
     "\"00F\"",
     "properties.0x66010102: expected an even number of hexadecimal digits"},
    {"truth as number",
     "\"0x6602000B\": true",
     "\"0x6602000B\": 1",
     "properties.0x6602000B: expected true or false"},
    {"bad GUID",
     "{00020329-0000-0000-C000-000000000046}",
     "{00020329}",
     "properties.0x66030048: expected a GUID in braces"},
    {"list as value",
     "\"0x66041003\": [1]",
     "\"0x66041003\": 1",
     "properties.0x66041003: expected an array"},
    {"wrong item",
     "\"0x66041003\": [1]",
     "\"0x66041003\": [1, true]",
     "properties.0x66041003[1]: expected a whole number"},
    {"unstorable type",
     "\"0x66010102\"",
     "\"0x6601000D\"",
     "properties.0x6601000D: no property type that can be stored"},
    {"tag of a named one",
     "\"0x66010102\"",
     "\"0x85010102\"",
     "properties.0x85010102: identifiers of 0x8000 and above belong to named properties"},
    {"unknown set",
     "PS_PUBLIC_STRINGS:Key",
     "PS_PRIVATE:Key",
     "properties.PS_PRIVATE:Key:PT_UNICODE: unknown property set \"PS_PRIVATE\""},
    {"unknown type",
     "Key:PT_UNICODE",
     "Key:PT_TEXT",
     "properties.PS_PUBLIC_STRINGS:Key:PT_TEXT: unknown property type \"PT_TEXT\""},
    {"no file",
     "\"00FF\"",
     "{ \"file\": \"files/none.bin\" }",
     "properties.0x66010102.file: there is no such file"},
    {"file elsewhere",
     "\"00FF\"",
     "{ \"file\": \"../x\" }",
     "properties.0x66010102.file: expected a path below the store folder"},
    {"unknown reference",
     "\"00FF\"",
     "{ \"entry\": 8 }",
     "properties.0x66010102.entry: no such object has the identifier 8"},
    {"unknown form",
     "\"00FF\"",
     "{ \"hex\": \"00\" }",
     "properties.0x66010102: expected hexadecimal text or an object"},
    {"two forms",
     "\"00FF\"",
     "{ \"folder\": 8, \"store\": 1 }",
     "properties.0x66010102: expected one key that tells what the value is"},
    {"zone with one date",
     "\"bias\": -60",
     R"("bias": -60, "standardDate": { "month": 10, "week": 5, "day": "SU", "time": "03:00" })",
     "properties.PidLidTimeZoneStruct.timeZone: a zone has both dates or none"},
    {"weekly without days", "\"days\": [\"MO\"],", "", "recurrence: a weekly rule needs \"days\""},
    {"unknown day",
     "[\"MO\"]",
     "[\"MON\"]",
     "recurrence.days[0]: expected a day from \"SU\" to \"SA\""},
    {"end before start",
     "2026-12-28",
     "2026-10-28",
     "recurrence.end: the last instance lies before the first"},
    {"unknown frequency", "\"weekly\"", "\"hourly\"", "recurrence.frequency: expected \"daily\""},
    {"recipient without type",
     "\"PR_RECIPIENT_TYPE\": 1, ",
     "",
     "stores[0].messages[0].recipients[0]: a recipient has PR_RECIPIENT_TYPE"},
    {"embedded without message",
     "\"PR_ATTACH_METHOD\": 1",
     "\"PR_ATTACH_METHOD\": 5",
     "stores[0].messages[0].attachments[0]: an attachment has PR_ATTACH_METHOD, and \"message\""},
    {"profile's store",
     "\"stores\": [1]",
     "\"stores\": [8]",
     "profiles[0].stores[0]: expected the identifier of a store"},
    {"profile's identity",
     "\"identity\": 30",
     "\"identity\": 28",
     "profiles[0].identity: expected the identifier of an entry of the address book"},
    {"profile without name",
     "\"name\": \"Demo\"",
     "\"name\": \"\"",
     "profiles[0].name: a profile has a name"},
    {"containers in a ring",
     "\"id\": 28, \"parent\": null",
     "\"id\": 28, \"parent\": 29",
     "addressBook.containers[0].parent: the containers contain each other"},
    {"entry in no container",
     "\"containers\": [28, 29]",
     "\"containers\": [28, 8]",
     "addressBook.entries[0].containers[1]: expected the identifier of a container"},
    {"members of a user",
     "\"type\": \"distList\", ",
     "",
     "addressBook.entries[1].members: only a distribution list has members"},
    {"unknown entry type",
     "\"distList\"",
     "\"list\"",
     "addressBook.entries[1].type: expected \"mailUser\" or \"distList\""},
};

class DocumentTest : public StoreTest
{
protected:
    HRESULT TryLogon()
    {
        EXPECT_EQ(MAPIInitialize(nullptr), S_OK);
        wchar_t profile[] = L"Demo";
        ::IMAPISession* none = nullptr;
        const HRESULT hr = MAPILogonEx(
            0, profile, nullptr, MAPI_UNICODE | MAPI_EXTENDED | MAPI_NEW_SESSION, &none);
        EXPECT_EQ(none, nullptr);
        CRef<IProfAdmin> admin;
        EXPECT_EQ(MAPIAdminProfiles(0, admin.Put()), S_OK);
        TableRef table;
        EXPECT_EQ(admin->GetProfileTable(0, table.PutAs<::IMAPITable>()), S_OK);
        if (hr == MAPI_E_CORRUPT_STORE)
        {
            EXPECT_EQ(TextColumn(table, PR_DISPLAY_NAME_W),
                      std::vector<std::wstring>{L"mapistore"});
        }
        table.Reset();
        admin.Reset();
        MAPIUninitialize();
        return hr;
    }
};

TEST_F(DocumentTest, EveryDamageGivesOneLineAndALogonThatFails)
{
    const std::string good = UsualDocument(kMessage);
    WriteDocument(good);
    Start();
    Stop();
    for (const Damage& damage : kDamages)
    {
        std::string bad = good;
        const size_t at = bad.find(damage.find);
        ASSERT_NE(at, std::string::npos) << damage.name;
        bad.replace(at, std::strlen(damage.find), damage.with);
        WriteDocument(bad);

        EXPECT_EQ(TryLogon(), MAPI_E_CORRUPT_STORE) << damage.name;

        const std::string report = Report();
        const size_t note = report.find("note store.json:");
        ASSERT_NE(note, std::string::npos) << damage.name << "\n" << report;
        const std::string line = report.substr(note, report.find('\n', note) - note);
        EXPECT_NE(line.find(damage.says), std::string::npos) << damage.name << "\n" << line;
    }
}

TEST_F(DocumentTest, LineAndColumnPointAtTheFault)
{
    std::string bad = UsualDocument(kMessage);
    bad.replace(bad.find("\"PR_SUBJECT_W\": \"S\""), 19, "\"PR_SUBJECT_W\": 5");
    WriteDocument(bad);
    EXPECT_EQ(TryLogon(), MAPI_E_CORRUPT_STORE);
    const size_t at = bad.find("\"PR_SUBJECT_W\": 5") + 16;
    const auto lines = std::count(bad.begin(), bad.begin() + static_cast<std::ptrdiff_t>(at), '\n');
    const size_t column = at - bad.rfind('\n', at);
    EXPECT_NE(Report().find("note store.json:" + std::to_string(lines + 1) + ":" +
                            std::to_string(column) + ": stores[0].messages[0]"),
              std::string::npos)
        << Report();
}

TEST_F(DocumentTest, EveryPrefixOfADocumentIsRefusedWithoutACrash)
{
    const std::string good = UsualDocument(kMessage);
    for (size_t cut = 0; cut < good.size() - 2; cut += 37)
    {
        WriteDocument(good.substr(0, cut));
        EXPECT_EQ(TryLogon(), MAPI_E_CORRUPT_STORE) << cut;
    }
}

TEST_F(DocumentTest, MissingDocumentAndMissingFolderFail)
{
    EXPECT_EQ(TryLogon(), MAPI_E_CORRUPT_STORE);
    EXPECT_NE(Report().find("note store.json: cannot be read, error 2"), std::string::npos);
    ASSERT_EQ(MapiStoreConfigure(L"Folder", nullptr), S_OK);
    EXPECT_EQ(TryLogon(), MAPI_E_UNCONFIGURED);
}

TEST_F(DocumentTest, DocumentThatBreaksWhileInUseLeavesTheOldOneInMemory)
{
    WriteDocument(UsualDocument(kMessage));
    Start();
    WriteDocument("{ \"format\": ");
    ASSERT_EQ(MapiStoreRefresh(), S_OK);
    EXPECT_EQ(TextProp(OpenMessage(100).Get(), PR_SUBJECT_W), L"S");
    MessageRef message = OpenMessage(100);
    SPropValue value{};
    value.ulPropTag = PR_IMPORTANCE;
    value.Value.l = 2;
    ASSERT_EQ(message->SetProps(1, &value, nullptr), S_OK);
    EXPECT_EQ(message->SaveChanges(0), MAPI_E_CORRUPT_STORE);
    WriteDocument(UsualDocument(kMessage));
    ASSERT_EQ(MapiStoreRefresh(), S_OK);
    EXPECT_EQ(message->SaveChanges(0), S_OK);
}

TEST_F(DocumentTest, CommentsAreAllowedEverywhere)
{
    std::string document = UsualDocument(kMessage);
    for (size_t at = document.find("{ \""); at != std::string::npos;
         at = document.find("{ \"", at + 20))
    {
        document.insert(at + 1, " \"comment\": \"c\",");
    }
    WriteDocument(document);
    Start();
    EXPECT_EQ(TextProp(OpenMessage(100).Get(), PR_SUBJECT_W), L"S");
}

TEST_F(DocumentTest, ExampleOfTheDescriptionIsServed)
{
    const std::string page = ReadFileText(L"Z:" DT_WIDE(DT_SOURCE_DIR) L"/docs/mapistore.md");
    const size_t chapter = page.find("## A complete example");
    const size_t begin = page.find("```json\n", chapter) + 8;
    WriteDocument(page.substr(begin, page.find("```", begin) - begin));
    Start();
    EXPECT_EQ(TextColumn(Contents(8), PR_SUBJECT_W), std::vector<std::wstring>{L"Planning"});
    EXPECT_EQ(TextProp(OpenMessage(21).Get(), PR_DISPLAY_NAME_W), L"Bo Ferrand");
}

} // namespace

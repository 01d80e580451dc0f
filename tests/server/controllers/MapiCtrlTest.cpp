// The switch between the mail systems.

#include "MapiCtrl.h"

#include <thread>

#include "Bstr.h"
#include "ContactRecord.h"
#include "ControllerTest.h"
#include "MailRecord.h"
#include "MapiDataStore.h"

class MapiCtrlTest : public ControllerTest
{
};

namespace
{

bool HasDocument(CMapiCtrl& mail)
{
    CBstr profile;
    mail.GetCurProfileInfo(profile.Put());
    return !profile.IsNull();
}

} // namespace

TEST_F(MapiCtrlTest, StartsWithoutAMailSystem)
{
    CMapiCtrl mail;
    CEventText listing;
    std::vector<ContactRecord> contacts;

    EXPECT_EQ(mail.Init(), 0U);
    EXPECT_EQ(mail.GetMailType(), 0U);
    EXPECT_EQ(mail.ListAppointment({}, {}, listing), 0U);
    EXPECT_EQ(mail.SearchContacts(L"a", contacts, 1), 0U);
    EXPECT_EQ(mail.ResolveContacts(L"a", contacts, 1), 0U);
}

TEST_F(MapiCtrlTest, SecondInitOfATypeRunsNothingAndAnswersZero)
{
    CMapiCtrl mail;
    ASSERT_EQ(mail.Init(1, 1), 0U);
    trace.Clear();

    EXPECT_EQ(mail.Init(1, 1), 0U);

    EXPECT_EQ(Lines(), Strings{});
    mail.FreeLib();
}

TEST_F(MapiCtrlTest, SecondInitOfATypeAnswersZeroAlsoWhenTheFirstFailed)
{
    mapi.answers["MAPILogonEx"] = {E_FAIL};
    CMapiCtrl mail;
    ASSERT_EQ(mail.Init(1, 1), 0x80080004U);

    EXPECT_EQ(mail.Init(1, 1), 0U);

    // The controller looks ready and is not: the listing is refused by its status.
    CEventText listing;
    EXPECT_EQ(mail.ListAppointment({}, {}, listing), 1U);
    EXPECT_EQ(listing.View(), L"");
    EXPECT_TRUE(HasDocument(mail));
    mail.FreeLib();
}

TEST_F(MapiCtrlTest, InitTypeZeroIsRefusedOnceAndThenPassedOver)
{
    CMapiCtrl mail;

    EXPECT_EQ(mail.Init(1, 0), 1U);
    EXPECT_EQ(mail.Init(1, 0), 0U);

    EXPECT_EQ(mapi.calls, Strings{});
    EXPECT_EQ(mail.Init(1, 1), 0U) << "the bring-up is still to come";
    EXPECT_EQ(mapi.CountCalls("MAPIInitialize"), 1U);
    mail.FreeLib();
}

TEST_F(MapiCtrlTest, NotesFailsTheFirstTimeThatATypeIsAskedOfIt)
{
    CMapiCtrl mail;

    EXPECT_EQ(mail.Init(16, 1), 0x80004005U);
    EXPECT_EQ(mail.Init(16, 1), 0U);
    EXPECT_EQ(mail.Init(16, 2), 0x80004005U);

    EXPECT_EQ(mail.GetMailType(), 16U);
}

TEST_F(MapiCtrlTest, OutlookFreesNotesAndNotesFreesOutlook)
{
    CMapiCtrl mail;
    std::vector<ContactRecord> contacts;
    ASSERT_EQ(mail.Init(16, 1), 0x80004005U);
    EXPECT_EQ(mail.ResolveContacts(L"a", contacts, 1), 0x80004005U);

    EXPECT_EQ(mail.Init(1, 1), 0U);
    EXPECT_EQ(mail.ResolveContacts(L"a", contacts, 1), 0U);

    // Freed behind the new one's start, and the type it had seen is forgotten with it.
    EXPECT_EQ(mail.Init(16, 1), 0x80004005U);
    EXPECT_EQ(mapi.liveObjects, 0);
    EXPECT_EQ(mapi.CountCalls("MAPIUninitialize"), 1U);
}

TEST_F(MapiCtrlTest, OldMailSystemIsFreedBehindTheStartOfTheNewOne)
{
    CMapiCtrl mail;
    std::vector<ContactRecord> contacts;
    ASSERT_EQ(mail.Init(16, 1), 0x80004005U);
    ULONG duringStart = 0;
    mapi.actions["MAPILogonEx"] = [&] { duringStart = mail.SearchContacts(L"a", contacts, 1); };
    EXPECT_EQ(mail.Init(1, 1), 0U);
    EXPECT_EQ(duringStart, 0x80004005U) << "Notes was still there";

    ULONG duringEnd = 0;
    mapi.actions["MAPIUninitialize"] = [&] { duringEnd = mail.GetMailType(); };
    EXPECT_EQ(mail.Init(16, 1), 0x80004005U);

    EXPECT_EQ(duringEnd, 1U) << "the new type is stored last";
    EXPECT_EQ(mail.GetMailType(), 16U);
}

TEST_F(MapiCtrlTest, OutlookAfterNotesIsBroughtUpAnew)
{
    CMapiCtrl mail;
    ASSERT_EQ(mail.Init(1, 1), 0U);
    ASSERT_EQ(mail.Init(16, 1), 0x80004005U);

    EXPECT_EQ(mail.Init(1, 1), 0U);

    EXPECT_EQ(mapi.CountCalls("MAPIInitialize"), 2U);
    mail.FreeLib();
}

TEST_F(MapiCtrlTest, RefusedTypeLeavesOutlookAtWork)
{
    mapi.folders = {}; // nothing to list
    CMapiCtrl mail;
    ASSERT_EQ(mail.Init(1, 1), 0U);

    EXPECT_EQ(mail.Init(5, 2), 1U);

    EXPECT_EQ(mail.GetMailType(), 1U);
    CEventText listing;
    EXPECT_EQ(mail.ListAppointment({}, {}, listing), 0U);
    EXPECT_EQ(listing.View(), L"<appointments></appointments>");
    mail.FreeLib();
}

TEST_F(MapiCtrlTest, TypesTwoToFifteenAreRefusedAndTheOldTypeStays)
{
    CMapiCtrl mail;
    ASSERT_EQ(mail.Init(16, 1), 0x80004005U);

    for (ULONG type = 2; type <= 15; ++type)
    {
        EXPECT_EQ(mail.Init(type, 1), 1U);
        EXPECT_EQ(mail.GetMailType(), 16U);
    }
    EXPECT_EQ(mail.Init(0, 1), 1U);
    EXPECT_EQ(mail.Init(17, 1), 1U);
    EXPECT_EQ(mail.GetMailType(), 16U);
}

TEST_F(MapiCtrlTest, NotesIsAskedForEverythingButOneAppointment)
{
    CMapiCtrl mail;
    ASSERT_EQ(mail.Init(16, 1), 0x80004005U);
    WString text;
    CEventText listing;
    std::vector<MailRecord> mails;
    std::vector<ContactRecord> contacts;
    ContactRecord contact;

    EXPECT_EQ(mail.ListAppointment({}, {}, listing), 0x80004005U);
    EXPECT_EQ(mail.ListRecentEmail(1, L"a", 1, mails), 0x80004005U);
    EXPECT_EQ(mail.GetPersonalContact(contacts), 0x80004005U);
    EXPECT_EQ(mail.SearchContacts(L"a", contacts, 5), 0x80004005U);
    EXPECT_EQ(mail.ResolveContacts(L"a", contacts, 2), 0x80004005U);
    EXPECT_EQ(mail.GetAppointment(L"AB", text), 0U);
    EXPECT_EQ(mail.GetMsgInfoByTableSink(nullptr, L"", L"", text), 0U);
    EXPECT_EQ(mail.DeleteMsgInfoByTableSink(L"", text), 0U);
    EXPECT_EQ(mail.GetContactInfoByTableSink(nullptr, L"", L"", contact), 0U);
    EXPECT_EQ(mail.SendMail(L"", L"", L"", 0), 0U);
    EXPECT_EQ(mail.GetSMTPFromDispName(L"", text), 0U);
    EXPECT_EQ(mail.ListRecurrentInstance(L"", nullptr, nullptr, text), 0U);
    EXPECT_EQ(mail.GetContactDetail(L"", contact), 0U);
    EXPECT_FALSE(HasDocument(mail));
}

TEST_F(MapiCtrlTest, AfterFreeLibEveryOperationAnswersZero)
{
    CMapiCtrl mail;
    ASSERT_EQ(mail.Init(1, 1), 0U);
    mail.FreeLib();
    EXPECT_EQ(mail.GetMailType(), 1U);
    WString text;
    CEventText listing;
    std::vector<MailRecord> mails;
    std::vector<ContactRecord> contacts;
    ContactRecord contact;

    EXPECT_EQ(mail.ListAppointment({}, {}, listing), 0U);
    EXPECT_EQ(mail.ListRecentEmail(1, L"a", 1, mails), 0U);
    EXPECT_EQ(mail.GetMsgInfoByTableSink(nullptr, L"AB", L"CD", text), 0U);
    EXPECT_EQ(mail.DeleteMsgInfoByTableSink(L"CD", text), 0U);
    EXPECT_EQ(mail.GetContactInfoByTableSink(nullptr, L"AB", L"CD", contact), 0U);
    EXPECT_EQ(mail.SearchContacts(L"a", contacts, 5), 0U);
    EXPECT_FALSE(HasDocument(mail));
}

TEST_F(MapiCtrlTest, InitAfterFreeLibStartsAnew)
{
    CMapiCtrl mail;
    ASSERT_EQ(mail.Init(1, 1), 0U);
    mail.FreeLib();

    EXPECT_EQ(mail.Init(1, 1), 0U);

    EXPECT_EQ(mapi.CountCalls("MAPIInitialize"), 2U);
    mail.FreeLib();
}

TEST_F(MapiCtrlTest, FailedBringUpIsForgottenWithItsController)
{
    mapi.folders = {}; // nothing to list
    mapi.answers["MAPILogonEx"] = {E_FAIL};
    CMapiCtrl mail;
    ASSERT_EQ(mail.Init(1, 1), 0x80080004U);
    mail.FreeLib();

    EXPECT_EQ(mail.Init(1, 1), 0U);

    CEventText listing;
    EXPECT_EQ(mail.ListAppointment({}, {}, listing), 0U);
    EXPECT_EQ(listing.View(), L"<appointments></appointments>");
    mail.FreeLib();
}

TEST_F(MapiCtrlTest, DataStoreIsEmptiedOnlyWhileThereIsAnOutlookController)
{
    CMapiCtrl mail;
    MeetingInfo found;
    MapiDataStore().AddAppointment(L"AB", MeetingInfo());
    mail.ClearDataStore();
    EXPECT_TRUE(MapiDataStore().GetAppointment(L"AB", found));
    ASSERT_EQ(mail.Init(16, 1), 0x80004005U);
    mail.ClearDataStore();
    EXPECT_TRUE(MapiDataStore().GetAppointment(L"AB", found)) << "Notes empties nothing";
    bool isFoundDuringStart = true;
    mapi.actions["MAPILogonEx"] = [&] {
        mail.ClearDataStore(); // whatever the mail type, which is still the old one
        isFoundDuringStart = MapiDataStore().GetAppointment(L"AB", found);
    };
    ASSERT_EQ(mail.Init(1, 1), 0U);
    EXPECT_FALSE(isFoundDuringStart);
    MapiDataStore().AddAppointment(L"AB", MeetingInfo());

    mail.ClearDataStore();

    EXPECT_FALSE(MapiDataStore().GetAppointment(L"AB", found));
    mail.FreeLib();
}

TEST_F(MapiCtrlTest, ThereIsNoDocumentDuringTheFirstBringUp)
{
    CMapiCtrl mail;
    bool hasDocument = true;
    mapi.actions["IMAPISession::OpenMsgStore"] = [&] { hasDocument = HasDocument(mail); };

    ASSERT_EQ(mail.Init(1, 1), 0U);

    EXPECT_FALSE(hasDocument);
    EXPECT_TRUE(HasDocument(mail));
    mail.FreeLib();
}

TEST_F(MapiCtrlTest, ProfileDocumentIsThatOfTheBringUp)
{
    CMapiCtrl mail;
    ASSERT_EQ(mail.Init(1, 1), 0U);
    CBstr profile;

    EXPECT_EQ(mail.GetCurProfileInfo(profile.Put()), 1U);
    EXPECT_EQ(mail.GetCurProfileInfo(nullptr), 1U);

    EXPECT_EQ(profile.View(),
              L"<CurrentOLProfile><ProfileName><![CDATA[Work]]></ProfileName>"
              L"<Mapi32FilePath><![CDATA[" +
                  ProviderPath(L"fakemapi64.dll") +
                  L"]]></Mapi32FilePath>"
                  L"<EmailAddress><![CDATA[ada@example.org]]></EmailAddress>"
                  L"\t\t\t\t\t\t\t  <StoreName><![CDATA[Mailbox]]></StoreName>"
                  L"<StoreEid>0102AB</StoreEid><RecordKey>CDEF</RecordKey>"
                  L"<FirstName>Ada</FirstName><LastName>Stone</LastName></CurrentOLProfile>");
    mail.FreeLib();
}

TEST_F(MapiCtrlTest, DestroyingOnTheThreadOfTheInitFreesEverything)
{
    {
        CMapiCtrl mail;
        ASSERT_EQ(mail.Init(1, 1), 0U);
    }

    EXPECT_EQ(mapi.CountCalls("MAPIUninitialize"), 1U);
}

TEST_F(MapiCtrlTest, DestroyingOnAnotherThreadTouchesNoMailObject)
{
    auto mail = std::make_unique<CMapiCtrl>();
    // A Notes controller, so that what is left behind is small.
    std::thread([&] { mail->Init(16, 1); }).join();
    ASSERT_EQ(mail->GetMailType(), 16U);
    trace.Clear();

    mail.reset();

    EXPECT_EQ(Lines(), Strings{});
    EXPECT_EQ(mapi.calls, Strings{});
}

TEST_F(MapiCtrlTest, FactoryMakesTheSwitch)
{
    const std::unique_ptr<IMailSwitch> mail = MakeMapiCtrl();

    ASSERT_NE(mail, nullptr);
    EXPECT_EQ(mail->GetMailType(), 0U);
}

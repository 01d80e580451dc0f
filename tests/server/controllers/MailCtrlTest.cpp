// What all mail systems share, and the one that does nothing.

#include "ContactRecord.h"
#include "ControllerTest.h"
#include "MailRecord.h"
#include "NotesCtrl.h"

class MailCtrlTest : public ControllerTest
{
};

TEST_F(MailCtrlTest, NothingRunsBeforeTheFirstInit)
{
    const CTestOutlook outlook;

    EXPECT_EQ(outlook.m_hrInit, 1U);
    EXPECT_EQ(outlook.m_bInitialized, 0U);
    EXPECT_EQ(outlook.m_strInstallKey,
              L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\Outlook.exe");
    EXPECT_EQ(outlook.m_strStubKey,
              L"SOFTWARE\\Microsoft\\Windows Messaging Subsystem\\MSMapiApps");
}

TEST_F(MailCtrlTest, InstalledMailClientIsReady)
{
    CTestOutlook outlook;

    EXPECT_EQ(outlook.CMailCtrl::Init(), 0U);

    EXPECT_EQ(Lines(), Strings{});
    EXPECT_EQ(outlook.m_hrInit, 0U);
}

TEST_F(MailCtrlTest, EmptyInstallTextCountsAsNotInstalled)
{
    RegisterMailClient(false);
    CTestOutlook outlook;

    EXPECT_EQ(outlook.CMailCtrl::Init(), 0x80080002U);

    EXPECT_EQ(Lines(), (Strings{"0 OUTLOOK is not installed"}));
}

TEST_F(MailCtrlTest, AbsentInstallKeyCountsAsNotInstalled)
{
    CTestOutlook outlook;
    outlook.m_strInstallKey = L"SOFTWARE\\No\\Such\\Key";

    EXPECT_EQ(outlook.CMailCtrl::Init(), 0x80080002U);

    EXPECT_EQ(Lines(), (Strings{"3 failed 1", "0 OUTLOOK is not installed"}));
}

TEST_F(MailCtrlTest, SecondInitAnswersTheLastResultWithoutLooking)
{
    RegisterMailClient(false);
    CTestOutlook outlook;
    outlook.CMailCtrl::Init();
    RegisterMailClient(true);
    trace.Clear();

    EXPECT_EQ(outlook.CMailCtrl::Init(), 0x80080002U);

    EXPECT_EQ(Lines(),
              (Strings{"3 Has been initialized already, the last initialize result[0x 80080002]"}));
    EXPECT_EQ(outlook.m_bInitialized, 1U);
}

TEST_F(MailCtrlTest, InitTypesAreNotedOnce)
{
    CTestOutlook outlook;

    EXPECT_EQ(outlook.RegisterInitType(1), 0U);
    EXPECT_EQ(outlook.RegisterInitType(2), 0U);
    EXPECT_EQ(outlook.RegisterInitType(1), 1U);
    EXPECT_EQ(outlook.RegisterInitType(2), 1U);
}

TEST_F(MailCtrlTest, TextThatFillsTheInstallBufferCounts)
{
    const std::wstring key = L"SOFTWARE\\DtControllerTest";
    HKEY opened = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE,
                              key.c_str(),
                              0,
                              nullptr,
                              0,
                              KEY_ALL_ACCESS,
                              nullptr,
                              &opened,
                              nullptr),
              ERROR_SUCCESS);
    // 520 bytes without a terminator: one letter more stands behind them, or the platform would
    // store the zero that it finds there as well.
    const std::wstring text(261, L'x');
    RegSetValueExW(opened, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.data()), 520);
    RegCloseKey(opened);
    CTestOutlook outlook;
    outlook.m_strInstallKey = key;

    EXPECT_EQ(outlook.CMailCtrl::Init(), 0U);

    RegDeleteTreeW(HKEY_LOCAL_MACHINE, key.c_str());
}

TEST_F(MailCtrlTest, NotesAnswersAndDoesNothing)
{
    CNotesCtrl notes;
    WString text = L"kept";
    CEventText listing(L"kept");
    std::vector<MailRecord> mails;
    std::vector<ContactRecord> contacts;
    ContactRecord contact;
    BSTR profile = nullptr;
    const FILETIME time{};

    EXPECT_EQ(notes.SendMail(L"a", L"b;", L"c", 0), 0U);
    EXPECT_EQ(notes.GetSMTPFromDispName(L"a", text), 0U);
    EXPECT_EQ(notes.ListAppointment(time, time, listing), 0x80004005U);
    EXPECT_EQ(notes.ListRecurrentInstance(L"a", &time, &time, text), 0U);
    EXPECT_EQ(notes.ListRecentEmail(1, L"a", 1, mails), 0x80004005U);
    EXPECT_EQ(notes.GetAppointment(L"a", text), 0U);
    EXPECT_EQ(notes.GetPersonalContact(contacts), 0x80004005U);
    EXPECT_EQ(notes.GetContactDetail(L"a", contact), 0U);
    EXPECT_EQ(notes.GetCurProfileInfo(&profile), 0U);
    notes.ClearDataStore();
    notes.FreeLib();

    EXPECT_EQ(text, L"kept");
    EXPECT_EQ(listing.View(), L"kept");
    EXPECT_EQ(profile, nullptr);
    EXPECT_EQ(Lines(), Strings{});
}

TEST_F(MailCtrlTest, NotesHasNoInstallKeyAndIsNeverInstalled)
{
    CNotesCtrl notes;

    EXPECT_EQ(notes.Init(), 0x80080002U);

    EXPECT_TRUE(trace.Has(0, "OUTLOOK is not installed"));
}

#include <gtest/gtest.h>

#include "PatternBlob.h"
#include "TestOutlook.h"

namespace
{

using Texts = std::vector<std::wstring>;

/// One appointment on 5 March, listed.
class AttendeeCheckTest : public CalendarTest
{
protected:
    AttendeeCheckTest()
    {
        m_message = AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    }
    ~AttendeeCheckTest() override { m_message.Reset(); }

    void ListDay() { List("2024-03-05T00:00:00", "2024-03-06T00:00:00"); }
    void SetStatus(LONG status)
    {
        m_message->props.SetLong(NamedTag(PSETID_Appointment, 0x8217, PT_LONG), status);
    }
    static CFakeProps DirectoryRecipient(const std::wstring& address, LONG flags = 1)
    {
        CFakeProps row;
        row.SetText(PR_DISPLAY_NAME_W, L"Ada");
        row.SetText(PR_EMAIL_ADDRESS_W, address);
        row.SetText(PR_ADDRTYPE_W, L"EX");
        row.SetLong(PR_RECIPIENT_FLAGS, flags);
        return row;
    }

    CComRef<CFakeMessage> m_message;
};

TEST_F(AttendeeCheckTest, APlainAppointmentWithoutAttendeesIsHostedByTheUser)
{
    ListDay();

    EXPECT_EQ(Values(L"hostName"), Texts{L"Own User"});
    EXPECT_EQ(Values(L"hostEmail"), Texts{L"own@example.org"});
    EXPECT_EQ(Values(L"name"), Texts{L"Own User"});
    EXPECT_EQ(Values(L"email"), Texts{L"own@example.org"});
    EXPECT_EQ(Values(L"attendType"), Texts{L"3"});
    EXPECT_EQ(Values(L"recipType"), Texts{L"1"});
    EXPECT_EQ(Values(L"responseType"), Texts{L"0"});
    MeetingInfo stored;
    ASSERT_TRUE(MapiDataStore().GetAppointment(L"00000001", stored));
    EXPECT_EQ(stored.attendees.at(0).addressType, L"SMTP");
    EXPECT_EQ(stored.attendees.at(0).address, L"");
    EXPECT_TRUE(stored.attendees.at(0).entryId.empty());
    EXPECT_FALSE(m_trace.Has(0, "Find no host in attendee list!!"));
}

TEST_F(AttendeeCheckTest, AMeetingWithoutAHostGetsAnEmptyOne)
{
    SetStatus(1);
    m_message->recipients = {Recipient(L"Guest", L"guest@example.org")};

    ListDay();

    EXPECT_EQ(Values(L"hostName"), Texts{L""});
    EXPECT_EQ(Values(L"hostEmail"), Texts{L""});
    EXPECT_EQ(Values(L"name"), (Texts{L"Guest", L""}));
    EXPECT_EQ(Values(L"email"), (Texts{L"guest@example.org", L""}));
    EXPECT_TRUE(m_trace.Has(0, "Find no host in attendee list!!"));
}

TEST_F(AttendeeCheckTest, AnAttendeeWithFlagsThreeIsTheHost)
{
    m_message->recipients = {Recipient(L"Guest", L"guest@example.org"),
                             Recipient(L"Host", L"host@example.org", 3)};

    ListDay();

    EXPECT_EQ(Values(L"hostName"), Texts{L"Host"});
    EXPECT_EQ(Values(L"hostEmail"), Texts{L"host@example.org"});
    EXPECT_EQ(Values(L"name"), (Texts{L"Guest", L"Host"}));
}

TEST_F(AttendeeCheckTest, AnSmtpAddressStandsInForAnEmailThatIsNone)
{
    CFakeProps row = Recipient(L"Guest", L"ignored");
    row.SetText(PR_SMTP_ADDRESS_W, L"@nonsense");
    row.SetText(PR_EMAIL_ADDRESS_W, L"guest@example.org");
    m_message->recipients = {row, Recipient(L"Host", L"host@example.org", 3)};

    ListDay();

    EXPECT_EQ(Values(L"email"), (Texts{L"guest@example.org", L"host@example.org"}));
}

TEST_F(AttendeeCheckTest, AnyOtherAddressTypeIsTracedAndLeft)
{
    CFakeProps row = Recipient(L"Guest", L"nonsense");
    row.SetText(PR_EMAIL_ADDRESS_W, L"guest@example.org");
    row.SetText(PR_ADDRTYPE_W, L"smtp");
    m_message->recipients = {row, Recipient(L"Host", L"host@example.org", 3)};

    ListDay();

    EXPECT_EQ(Values(L"email"), (Texts{L"nonsense", L"host@example.org"}));
    EXPECT_TRUE(m_trace.Has(0,
                            "Appointment's recipient[Guest] with invalid SmtpAddress[nonsense],"
                            "strExAddress[guest@example.org], emailType[smtp], AttdType[1]"));
}

TEST_F(AttendeeCheckTest, AHostOfTheOwnMailboxGetsTheStoresNameAsAddress)
{
    m_outlook.m_strStoreName = L"ada@example.org";
    m_message->recipients = {DirectoryRecipient(L"/o=example/cn=recipients/cn=ada", 3)};

    ListDay();

    EXPECT_EQ(Values(L"hostEmail"), Texts{L"ada@example.org"});
    EXPECT_EQ(Values(L"email"), Texts{L""});
}

TEST_F(AttendeeCheckTest, TheDirectoryAddressHasToEndInTheLocalPartExactly)
{
    m_outlook.m_strStoreName = L"ada@example.org";
    m_message->recipients = {DirectoryRecipient(L"/o=example/cn=recipients/cn=ADA", 3)};
    ListDay();
    EXPECT_EQ(Values(L"hostEmail"), Texts{L""});

    MapiDataStore().ClearDataStore();
    m_outlook.m_strStoreName = L"@example.org";
    m_message->recipients = {DirectoryRecipient(L"/o=example/cn=recipients/cn=ada", 3)};
    ListDay();
    EXPECT_EQ(Values(L"hostEmail"), Texts{L""});
}

TEST_F(AttendeeCheckTest, AHostWithAnAddressKeepsIt)
{
    m_outlook.m_strStoreName = L"host@example.org";
    m_message->recipients = {Recipient(L"Host", L"other-host@example.org", 3)};

    ListDay();

    EXPECT_EQ(Values(L"hostEmail"), Texts{L"other-host@example.org"});
}

TEST_F(AttendeeCheckTest, EachInstanceOfAMeetingWithoutAHostTellsThatItsHostHasNoAddress)
{
    // The series' own check added the empty host that the instances then find.
    pattern::Modified moved =
        pattern::Moved("2024-03-06T09:00:00", "2024-03-06T13:00:00", "2024-03-06T14:00:00");
    pattern::Pattern rule = pattern::Daily("2024-03-06", 1);
    rule.modified = {moved};
    AddSeries(2, "2024-03-06T09:00:00", "2024-03-06T10:00:00", rule.Write())
        ->props.SetLong(NamedTag(PSETID_Appointment, 0x8217, PT_LONG), 1);

    List("2024-03-06T12:00:00", "2024-03-06T14:00:00");

    const std::wstring subKey = Values(L"subKey").at(0);
    char line[128] = {};
    std::snprintf(line,
                  sizeof line,
                  "Appointment's Host[] with empty  Mail Address[], meeting instance id[0x%lx]",
                  std::stoul(subKey));
    EXPECT_TRUE(m_trace.Has(0, line)) << line;
    EXPECT_EQ(Values(L"hostEmail"), Texts{L""});
    EXPECT_EQ(Values(L"name"), Texts{L""}); // no second host was added
}

TEST_F(AttendeeCheckTest, OfTwoHostsTheLastOneCounts)
{
    m_message->recipients = {Recipient(L"First", L"first@example.org", 3),
                             Recipient(L"Second", L"second@example.org", 3)};

    ListDay();

    EXPECT_EQ(Values(L"hostName"), Texts{L"Second"});
}

} // namespace

#include "ChangeText.h"

#include <gtest/gtest.h>

#include "DocumentSamples.h"

using dtclient::CalendarChangeText;
using dtclient::CalendarTime;
using dtclient::ContactChangeText;
using dtclient::OutputForm;

namespace
{
CalendarTime Same(const CalendarTime& utc)
{
    return utc;
}

constexpr const char* kContact =
    "<ContactInfo><EntryID>AB</EntryID><DisplayName><![CDATA[Li &amp; Co]]></DisplayName>"
    "<EmailAddress><![CDATA[li@example.org]]></EmailAddress>\t\t <HasPicture>0</HasPicture>"
    "</ContactInfo>";
} // namespace

TEST(ChangeText, TheTypeWordTellsTheKind)
{
    EXPECT_EQ(dtclient::ChangeKind(1), "added");
    EXPECT_EQ(dtclient::ChangeKind(2), "deleted");
    EXPECT_EQ(dtclient::ChangeKind(3), "updated");
    EXPECT_EQ(dtclient::ChangeKind(9), "change 9");
}

TEST(ChangeText, ACalendarChangeIsOneLineWithItsKind)
{
    EXPECT_EQ(CalendarChangeText(OutputForm::Table, 3, samples::kFullAppointment, Same),
              "updated  Mon 2026-11-02 14:30  1 h 30 min  A & B <now>  Room 5  Ana Diaz  accepted  "
              "recurring, changed\n");
    EXPECT_EQ(CalendarChangeText(OutputForm::Table, 1, samples::kEmptyAppointment, Same),
              "added    no time  0 min  (no subject)\n");
}

TEST(ChangeText, AChangeWithoutDetailsIsStillNews)
{
    EXPECT_EQ(CalendarChangeText(OutputForm::Table, 2, "", Same),
              "deleted  an appointment; the server gave no details\n");
    EXPECT_EQ(CalendarChangeText(OutputForm::Json, 2, "", Same),
              "{\"event\":\"OnCalendarUpdated\",\"kind\":\"deleted\",\"appointments\":[]}\n");
    EXPECT_EQ(CalendarChangeText(OutputForm::Table, 2, "<appointment>", Same),
              "deleted  an appointment; its details cannot be read: expected </appointment>\n");
}

TEST(ChangeText, XmlChangesAreTheDocumentBehindAComment)
{
    EXPECT_EQ(CalendarChangeText(OutputForm::Xml, 1, "<appointment></appointment>", Same),
              "<!-- OnCalendarUpdated added -->\n<appointment></appointment>\n");
}

TEST(ChangeText, AContactChangeNamesThePerson)
{
    EXPECT_EQ(ContactChangeText(OutputForm::Table, 1, kContact),
              "added    Li & Co  <li@example.org>\n");
    EXPECT_EQ(ContactChangeText(OutputForm::Table, 2, ""),
              "deleted  a contact; the server gave no details that can be read\n");
}

TEST(ChangeText, AContactChangeAsJsonHoldsEveryElement)
{
    EXPECT_EQ(ContactChangeText(OutputForm::Json, 3, kContact),
              "{\"event\":\"OnContactUpdated\",\"kind\":\"updated\",\"ContactInfo\":{\"EntryID\":"
              "\"AB\",\"DisplayName\":\"Li & Co\",\"EmailAddress\":\"li@example.org\","
              "\"HasPicture\":\"0\"}}\n");
    EXPECT_EQ(ContactChangeText(OutputForm::Json, 3, ""),
              "{\"event\":\"OnContactUpdated\",\"kind\":\"updated\",\"ContactInfo\":{}}\n");
}

TEST(ChangeText, AnswersToOtherClientsAreSummedUp)
{
    EXPECT_EQ(dtclient::OtherEventText(OutputForm::Table, "OnListAppointment", 112, "<a></a>"),
              "OnListAppointment  112, 7 bytes of text\n");
    EXPECT_EQ(dtclient::OtherEventText(OutputForm::Json, "OnInitialize", 0, ""),
              "{\"event\":\"OnInitialize\",\"number\":0}\n");
    EXPECT_EQ(dtclient::OtherEventText(OutputForm::Xml, "OnListAppointment", 112, "<a></a>"),
              "<!-- OnListAppointment 112 -->\n<a></a>\n");
}

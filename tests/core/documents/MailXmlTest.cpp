#include "MailXml.h"

#include <gtest/gtest.h>

#include <vector>

#include "DocumentFile.h"

namespace
{

/// 2024-02-28 09:05:07.5 UTC.
constexpr FILETIME kFebruary{0x39AFAEC0, 0x01DA6A25};

MailRecord Mail()
{
    MailRecord mail;
    mail.subject = WTEXT("Q1 <draft> & \"plan\"");
    mail.messageClass = WTEXT("IPM.Note");
    mail.messageFlags = 17;
    mail.importance = 2;
    mail.deliveryTime = kFebruary;
    mail.itemRef.entryId = {0x00, 0xAB, 0x1F};
    return mail;
}

} // namespace

TEST(MailXml, OneMailEscapesItsSubjectInsideCdataAndKeepsTheTabs)
{
    EXPECT_EQ(BuildMailInfoXml(Mail()),
              WTEXT("<MailInfo><Subject><![CDATA[Q1 &lt;draft&gt; &amp; \"plan\"]]></Subject>"
                    "<MessageClass>IPM.Note</MessageClass><MessageFlag>17</MessageFlag>"
                    "\t\t\t\t\t\t   <Importance>2</Importance>"
                    "<DeliveryTime>02/28/2024 09:05:07</DeliveryTime>"
                    "<EntryID>00AB1F</EntryID></MailInfo>"));
}

TEST(MailXml, MessageClassGoesInAsItStands)
{
    MailRecord mail = Mail();
    mail.messageClass = WTEXT("IPM.<Odd>&");

    EXPECT_NE(BuildMailInfoXml(mail).find(WTEXT("<MessageClass>IPM.<Odd>&</MessageClass>")),
              WString::npos);
}

TEST(MailXml, NumbersAreSigned)
{
    MailRecord mail = Mail();
    mail.messageFlags = 0xFFFFFFFF;
    mail.importance = 0x80000000;

    const WString document = BuildMailInfoXml(mail);

    EXPECT_NE(document.find(WTEXT("<MessageFlag>-1</MessageFlag>")), WString::npos);
    EXPECT_NE(document.find(WTEXT("<Importance>-2147483648</Importance>")), WString::npos);
}

TEST(MailXml, UnsetTimeIsTheFirstDayTheClockKnows)
{
    MailRecord mail = Mail();
    mail.deliveryTime = {};

    EXPECT_NE(
        BuildMailInfoXml(mail).find(WTEXT("<DeliveryTime>01/01/1601 00:00:00</DeliveryTime>")),
        WString::npos);
}

TEST(MailXml, TimeBeyondTheCalendarIsZero)
{
    MailRecord mail = Mail();
    mail.deliveryTime = {0, 0x80000000};

    EXPECT_NE(
        BuildMailInfoXml(mail).find(WTEXT("<DeliveryTime>00/00/0000 00:00:00</DeliveryTime>")),
        WString::npos);
}

TEST(MailXml, EmptyListIsAnEmptyElement)
{
    EXPECT_EQ(BuildMailsXml({}), WTEXT("<Mails></Mails>"));
}

TEST(MailXml, ListHoldsTheMailsInOrderWithNothingBetween)
{
    std::vector<MailRecord> mails(2, Mail());
    mails[0].subject = WTEXT("first");
    mails[1].subject = WTEXT("second");

    EXPECT_EQ(BuildMailsXml(mails),
              WTEXT("<Mails>") + BuildMailInfoXml(mails[0]) + BuildMailInfoXml(mails[1]) +
                  WTEXT("</Mails>"));
}

TEST(MailXml, DocumentsMatchTheirExpectedFiles)
{
    MailRecord mail;
    mail.subject = WTEXT("Figures <draft> & plan");
    mail.messageClass = WTEXT("IPM.Note<&>");
    mail.messageFlags = 9;
    mail.importance = 2;
    mail.deliveryTime = {0x696BA480, 0x01DA6F06}; // 2024-03-05 14:07:09 UTC
    mail.itemRef.entryId = {0x00, 0xEF};
    const std::vector<MailRecord> mails = {MailRecord(), mail};

    EXPECT_EQ(BuildMailInfoXml(mail), ExpectedDocument("mail-full.expected.txt"));
    EXPECT_EQ(BuildMailInfoXml(MailRecord()), ExpectedDocument("mail-empty.expected.txt"));
    EXPECT_EQ(BuildMailsXml(mails), ExpectedDocument("mails-two.expected.txt"));
    EXPECT_EQ(BuildMailsXml({}), ExpectedDocument("mails-none.expected.txt"));
}

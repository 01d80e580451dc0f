#include "ContactXml.h"

#include <gtest/gtest.h>

#include <iterator>
#include <vector>

#include "DocumentFile.h"

namespace
{

ContactRecord FullContact()
{
    ContactRecord contact;
    contact.displayName = WTEXT("Grace Hopper");
    contact.givenName = WTEXT("Grace");
    contact.surName = WTEXT("Hopper");
    contact.emailAddress = WTEXT("grace@example.org");
    contact.imAddress = WTEXT("grace@im.example.org");
    contact.title = WTEXT("Rear Admiral");
    contact.company = WTEXT("Navy & Sons");
    contact.department = WTEXT("Compilers");
    contact.teleWork = WTEXT("+1 202 555 0101");
    contact.teleMobile = WTEXT("+1 202 555 0102");
    contact.teleFax = WTEXT("+1 202 555 0103");
    contact.teleHome = WTEXT("+1 202 555 0104");
    contact.webSite = WTEXT("https://example.org/?a=1&b=2");
    contact.reserved = WTEXT("not written");
    contact.country = WTEXT("USA");
    contact.postalCode = WTEXT("20001");
    contact.state = WTEXT("DC");
    contact.street = WTEXT("1 <Main> Street");
    contact.locality = WTEXT("Washington");
    contact.entryId = {0x00, 0xAB, 0x10};
    contact.instanceKey = WTEXT("not written");
    contact.hasPicture = 1;
    contact.picture = {0xFF, 0xD8, 0xFF, 0xE0};
    return contact;
}

void ExpectDocument(const WString& built, const std::string& file)
{
    EXPECT_EQ(Utf8FromWide(built), Utf8FromWide(ExpectedDocument(file)));
}

TEST(ContactXml, AnEmptyContactGivesEveryElementAndBothGaps)
{
    ExpectDocument(BuildContactInfoXml(ContactRecord()), "contact-empty.expected.txt");
}

TEST(ContactXml, TheFirstFormLeavesTheInstantMessagingAddressOut)
{
    ExpectDocument(BuildContactInfoXml(FullContact()), "contact-full.expected.txt");
}

TEST(ContactXml, TheSecondFormHasTheInstantMessagingAddress)
{
    ExpectDocument(BuildContactInfoImXml(FullContact()), "contact-im-full.expected.txt");
}

TEST(ContactXml, AContactWithOnlyAnInstantMessagingAddressHasNoMailAddressInTheFirstForm)
{
    ContactRecord contact;
    contact.imAddress = WTEXT("ada@im.example.org");

    EXPECT_EQ(BuildContactInfoXml(contact), BuildContactInfoXml(ContactRecord()));
}

TEST(ContactXml, TheListOfTheFirstFormHasItsFixedDeclaration)
{
    std::vector<ContactRecord> contacts(2);
    contacts[0].displayName = WideFromUtf8("渡辺 花子");
    contacts[1].displayName = WTEXT("Ada");

    ExpectDocument(BuildContactsXml(contacts), "contacts-two.expected.txt");
    ExpectDocument(BuildContactsXml({}), "contacts-none.expected.txt");
}

TEST(ContactXml, TheListOfTheSecondFormHasNoDeclaration)
{
    std::vector<ContactRecord> contacts(2);
    contacts[0].imAddress = WTEXT("ada@im.example.org");
    contacts[1].displayName = WTEXT("Ada");

    ExpectDocument(BuildContactsImXml(contacts), "contacts-im-two.expected.txt");
    ExpectDocument(BuildContactsImXml({}), "contacts-im-none.expected.txt");
}

TEST(ContactXml, EveryTextIsEscapedInsideItsSection)
{
    const WString raw = WTEXT("<&>");
    ContactRecord contact;
    WString* const texts[] = {&contact.displayName,
                              &contact.givenName,
                              &contact.surName,
                              &contact.emailAddress,
                              &contact.imAddress,
                              &contact.title,
                              &contact.company,
                              &contact.department,
                              &contact.teleWork,
                              &contact.teleMobile,
                              &contact.teleFax,
                              &contact.teleHome,
                              &contact.webSite,
                              &contact.country,
                              &contact.postalCode,
                              &contact.state,
                              &contact.street,
                              &contact.locality};
    for (WString* const text : texts)
    {
        *text = raw;
    }
    const WString section = WTEXT("<![CDATA[&lt;&amp;&gt;]]>");

    WString document = BuildContactInfoImXml(contact);

    std::size_t sections = 0;
    for (std::size_t at = document.find(section); at != WString::npos;
         at = document.find(section, at + 1))
    {
        ++sections;
    }
    EXPECT_EQ(sections, std::size(texts));
    EXPECT_EQ(document.find(raw), WString::npos);
}

TEST(ContactXml, EachGapIsSixTabsAndThreeBlanks)
{
    const WString document = BuildContactInfoXml(ContactRecord());

    EXPECT_NE(document.find(WTEXT("</Tele_Mobile>\t\t\t\t\t\t   <Tele_Fax>")), WString::npos);
    EXPECT_NE(document.find(WTEXT("</Locality>\t\t\t\t\t\t   <GivenName>")), WString::npos);
}

TEST(ContactXml, APictureOfMegabytesIsWrittenWhole)
{
    ContactRecord contact;
    contact.picture.assign(2'000'000, 0x5A);

    EXPECT_EQ(BuildContactInfoXml(contact).size(),
              BuildContactInfoXml(ContactRecord()).size() + 4'000'000);
}

} // namespace

#include "ContactXml.h"

#include "DocumentWriter.h"

namespace
{

enum class ContactForm
{
    WithoutImAddress,
    WithImAddress,
};

constexpr WStringView kGap = WTEXT("\t\t\t\t\t\t   ");

void WriteContact(CDocumentWriter& writer, const ContactRecord& contact, ContactForm form)
{
    writer.Open<"ContactInfo">();
    writer.HexElement<"EntryID">(contact.entryId);
    writer.CdataElement<"DisplayName">(contact.displayName);
    writer.CdataElement<"EmailAddress">(contact.emailAddress);
    if (form == ContactForm::WithImAddress)
    {
        writer.CdataElement<"IMAddress">(contact.imAddress);
    }
    writer.CdataElement<"Title">(contact.title);
    writer.CdataElement<"Company">(contact.company);
    writer.CdataElement<"Tele_Work">(contact.teleWork);
    writer.CdataElement<"Tele_Mobile">(contact.teleMobile);
    writer.Raw(kGap);
    writer.CdataElement<"Tele_Fax">(contact.teleFax);
    writer.CdataElement<"Tele_home">(contact.teleHome);
    writer.CdataElement<"WebSite">(contact.webSite);
    writer.CdataElement<"Country">(contact.country);
    writer.CdataElement<"PostalCode">(contact.postalCode);
    writer.CdataElement<"State">(contact.state);
    writer.CdataElement<"Street">(contact.street);
    writer.CdataElement<"Locality">(contact.locality);
    writer.Raw(kGap);
    writer.CdataElement<"GivenName">(contact.givenName);
    writer.CdataElement<"SurName">(contact.surName);
    writer.CdataElement<"Department">(contact.department);
    writer.NumberElement<"HasPicture">(contact.hasPicture);
    writer.Open<"PictureData">();
    writer.Raw(WTEXT("<![CDATA["));
    writer.Hex(contact.picture);
    writer.Raw(WTEXT("]]>"));
    writer.Close<"PictureData">();
    writer.Close<"ContactInfo">();
}

WString BuildContactInfo(const ContactRecord& contact, ContactForm form)
{
    CDocumentWriter writer;
    WriteContact(writer, contact, form);
    return writer.Take();
}

WString BuildContacts(WStringView declaration,
                      std::span<const ContactRecord> contacts,
                      ContactForm form)
{
    CDocumentWriter writer;
    writer.Raw(declaration);
    writer.Open<"Contacts">();
    for (const ContactRecord& contact : contacts)
    {
        WriteContact(writer, contact, form);
    }
    writer.Close<"Contacts">();
    return writer.Take();
}

} // namespace

WString BuildContactInfoXml(const ContactRecord& contact)
{
    return BuildContactInfo(contact, ContactForm::WithoutImAddress);
}

WString BuildContactInfoImXml(const ContactRecord& contact)
{
    return BuildContactInfo(contact, ContactForm::WithImAddress);
}

WString BuildContactsXml(std::span<const ContactRecord> contacts)
{
    return BuildContacts(WTEXT("<?xml version=\"1.0\" encoding=\"gb2312\"?>"),
                         contacts,
                         ContactForm::WithoutImAddress);
}

WString BuildContactsImXml(std::span<const ContactRecord> contacts)
{
    return BuildContacts(WStringView(), contacts, ContactForm::WithImAddress);
}

#include "ContactXml.h"

#include "DocumentText.h"

namespace
{

enum class ContactForm
{
    WithoutImAddress,
    WithImAddress,
};

constexpr WStringView kGap = WTEXT("\t\t\t\t\t\t   ");

template <typename Document>
void WriteContact(Document& document, const ContactRecord& contact, ContactForm form)
{
    document.template Open<"ContactInfo">();
    document.template Hex<"EntryID">(contact.entryId);
    document.template Cdata<"DisplayName">(contact.displayName);
    document.template Cdata<"EmailAddress">(contact.emailAddress);
    if (form == ContactForm::WithImAddress)
    {
        document.template Cdata<"IMAddress">(contact.imAddress);
    }
    document.template Cdata<"Title">(contact.title);
    document.template Cdata<"Company">(contact.company);
    document.template Cdata<"Tele_Work">(contact.teleWork);
    document.template Cdata<"Tele_Mobile">(contact.teleMobile);
    document.Raw(kGap);
    document.template Cdata<"Tele_Fax">(contact.teleFax);
    document.template Cdata<"Tele_home">(contact.teleHome);
    document.template Cdata<"WebSite">(contact.webSite);
    document.template Cdata<"Country">(contact.country);
    document.template Cdata<"PostalCode">(contact.postalCode);
    document.template Cdata<"State">(contact.state);
    document.template Cdata<"Street">(contact.street);
    document.template Cdata<"Locality">(contact.locality);
    document.Raw(kGap);
    document.template Cdata<"GivenName">(contact.givenName);
    document.template Cdata<"SurName">(contact.surName);
    document.template Cdata<"Department">(contact.department);
    document.template Number<"HasPicture">(contact.hasPicture);
    document.template CdataHex<"PictureData">(contact.picture);
    document.template Close<"ContactInfo">();
}

WString BuildContactInfo(const ContactRecord& contact, ContactForm form)
{
    return BuildDocument([&](auto& document) { WriteContact(document, contact, form); });
}

WString BuildContacts(WStringView declaration,
                      std::span<const ContactRecord> contacts,
                      ContactForm form)
{
    return BuildDocument([&](auto& document) {
        document.Raw(declaration);
        document.template Open<"Contacts">();
        for (const ContactRecord& contact : contacts)
        {
            WriteContact(document, contact, form);
        }
        document.template Close<"Contacts">();
    });
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

#pragma once

#include <span>

#include "ContactRecord.h"
#include "PlatformTypes.h"

/// The contact documents for the client, in two forms: only the second has the instant messaging
/// address.
///
/// Shape: UTF-16 text. Two runs of six tabs and three blanks stand between elements of a contact;
///        they belong to the document. All texts are escaped and stand in CDATA sections.

/// One <ContactInfo> of the first form.
WString BuildContactInfoXml(const ContactRecord& contact);

/// One <ContactInfo> of the second form, with <IMAddress>.
WString BuildContactInfoImXml(const ContactRecord& contact);

/// <Contacts> around the first form of each contact, behind a declaration that names gb2312
/// although the text is never converted.
WString BuildContactsXml(std::span<const ContactRecord> contacts);

/// <Contacts> around the second form of each contact, without a declaration.
WString BuildContactsImXml(std::span<const ContactRecord> contacts);

#pragma once

#include <span>

#include "MailRecord.h"
#include "PlatformTypes.h"

/// The documents of recent mails.
///
/// Shape: UTF-16 text without declaration. Six tabs and three blanks stand between two elements of a
///        mail; they belong to the document. The subject is escaped and stands in a CDATA section, the
///        message class goes in as it is. The delivery time is UTC, month first, as
///        "02/28/2024 09:05:00".

/// One <MailInfo>.
WString BuildMailInfoXml(const MailRecord& mail);

/// <Mails> around one <MailInfo> for each mail, in order, with nothing between them.
WString BuildMailsXml(std::span<const MailRecord> mails);

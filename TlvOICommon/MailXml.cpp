#include "MailXml.h"

#include "DocumentText.h"
#include "PlatformDates.h"

namespace
{

template <typename Document>
void WriteMail(Document& document, const MailRecord& mail)
{
    // A time that no calendar knows is written as zeros.
    SYSTEMTIME deliveryTime{};
    static_cast<void>(dates::FileTimeToSystemTime(mail.deliveryTime, deliveryTime));

    document.template Open<"MailInfo">();
    document.template Cdata<"Subject">(mail.subject);
    document.template Unescaped<"MessageClass">(mail.messageClass);
    document.template Number<"MessageFlag">(mail.messageFlags);
    document.Raw(WTEXT("\t\t\t\t\t\t   "));
    document.template Number<"Importance">(mail.importance);
    document.template Time<"DeliveryTime">(deliveryTime);
    document.template Hex<"EntryID">(mail.itemRef.entryId);
    document.template Close<"MailInfo">();
}

} // namespace

WString BuildMailInfoXml(const MailRecord& mail)
{
    return BuildDocument([&](auto& document) { WriteMail(document, mail); });
}

WString BuildMailsXml(std::span<const MailRecord> mails)
{
    return BuildDocument([&](auto& document) {
        document.template Open<"Mails">();
        for (const MailRecord& mail : mails)
        {
            WriteMail(document, mail);
        }
        document.template Close<"Mails">();
    });
}

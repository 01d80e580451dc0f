#pragma once

#include <map>
#include <string>
#include <vector>

/// One message of the store. Texts are UTC moments as "2026-11-02T09:00:00Z"; properties are JSON values
/// by their key, recipients and attachments JSON objects. docs/mapistore.md describes them.
struct StoreItem
{
    int id = 0;
    int folder = 0;
    std::string messageClass = "IPM.Appointment";
    std::map<std::string, std::string> properties;
    std::vector<std::string> recipients;
    std::vector<std::string> attachments;

    StoreItem& Set(const std::string& key, const std::string& json);
    /// The same for a text.
    StoreItem& SetText(const std::string& key, const std::string& text);
    StoreItem& SetTimes(const std::string& start, const std::string& end);
    [[nodiscard]] std::string Json() const;
};

/// A recurrence for StoreItem::Set: each day from `first` to `last`, 9:00 to 10:00 in the series' zone.
/// `modified` are changed instances as JSON objects, with commas between them.
std::string DailyRecurrence(const std::string& first,
                            const std::string& last,
                            const std::string& modified = "");

/// A recipient with address type SMTP.
std::string SmtpRecipient(const std::string& name,
                          const std::string& email,
                          int flags = 1,
                          int trackStatus = 0);
/// A recipient of the directory, who has no SMTP address.
std::string DirectoryRecipient(const std::string& name, const std::string& address, int flags = 1);

/// An attachment that holds the message of a changed instance.
std::string EmbeddedMessage(const StoreItem& message);

/// The document of a store with three calendars below each other, which the test fills.
class CStoreCalendar final
{
public:
    static constexpr int kCalendar = 9;
    static constexpr int kTeam = 10;
    static constexpr int kRooms = 11;

    /// The next appointment of the store, behind all others.
    StoreItem& Add(const std::string& subject,
                   const std::string& start,
                   const std::string& end,
                   int folder = kCalendar);
    /// A series by DailyRecurrence, in UTC; the clip range spans its days.
    StoreItem& AddDaily(const std::string& subject,
                        const std::string& first,
                        const std::string& last,
                        const std::string& modified = "");
    StoreItem& Item(int id);
    void Remove(int id);

    /// The document, one revision on from the last one.
    std::string Text();

    std::string storeName = "Mailbox - Ada";
    bool isPersonal = true;
    std::string tableIdentifiers = "longTerm";

private:
    std::map<int, StoreItem> m_items;
    int m_lastId = 100;
    int m_revision = 0;
};

#pragma once

#include <string>
#include <vector>

#include "CalendarTexts.h"
#include "EventInbox.h"
#include "MailStoreTest.h"
#include "OutlookCtrl.h"
#include "StoreCalendar.h"

using Texts = std::vector<std::wstring>;

/// A store with calendars that the test fills before it starts a session on it.
class CalendarStoreTest : public MailStoreTest
{
protected:
    CalendarStoreTest() : MailStoreTest(CStoreCalendar().Text()) {}

    /// Puts the calendar as the test left it on the disk.
    void Write() { WriteDocument(calendar.Text()); }

    /// Whether a message of this subject was read and put into the data store since trace.Clear().
    [[nodiscard]] bool WasRead(const std::string& subject) const;

    CStoreCalendar calendar;
};

/// Lists on the thread of the test, which is the work thread as far as the mail library can tell.
class ListingStoreTest : public CalendarStoreTest
{
protected:
    class COutlook final : public COutlookCtrl
    {
    public:
        using COutlookCtrl::m_CalendarSinks;
    };

    void TearDown() override;

    /// Writes the calendar, brings the controller up and lists once far outside of everything, after
    /// which the named properties are known and a fault plan counts the same calls in every order of
    /// the tests.
    void Start();
    /// Lists a window given in UTC; the subjects of the document.
    Texts List(const std::string& start, const std::string& end);
    /// The values of one element in the document of the last List.
    [[nodiscard]] Texts Values(const std::wstring& element) const
    {
        return ElementValues(xml, element);
    }

    COutlook outlook;
    WString xml;
    ULONG listed = 0; ///< what ListAppointment answered
};

/// One event of a change as a client hears it.
struct CalendarEvent
{
    ULONG type = 0; ///< 1 added, 2 deleted, 3 updated
    WString xml;

    [[nodiscard]] std::wstring Value(const std::wstring& element) const;
};

/// Follows changes through everything but COM: the library's own notifications, the subscription's
/// sink, the queue, the work thread with the real controller, and the event window.
class ChangeStoreTest : public CalendarStoreTest
{
protected:
    void TearDown() override;

    /// Writes the calendar and brings the work thread up on it.
    void Start();
    /// Lists a window given in UTC; the subjects of the document.
    Texts List(const std::string& start, const std::string& end);
    /// Puts the calendar on the disk and has the tables told.
    void Publish();
    /// All events of what was published so far, once they can have come: up to that of an appointment
    /// added behind it.
    std::vector<CalendarEvent> Events();
    std::vector<CalendarEvent> PublishAndHear()
    {
        Publish();
        return Events();
    }

    CEventInbox inbox;
    WString xml; ///< of the last List

private:
    int m_fences = 0;
};

/// Each event as "type subject".
Texts KindsOf(const std::vector<CalendarEvent>& events);

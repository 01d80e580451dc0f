#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "AppointmentRecords.h"
#include "BinaryBlock.h"
#include "ContactRecord.h"
#include "PlatformTypes.h"

/// Keeps what was read from the mail system, and the facts of the session it was read in.
///
/// Appointments and series are kept under the upper-case hexadecimal text of PR_ENTRYID, contacts
/// under that of their entry identifier, addresses under the name that was found. Keys compare by
/// code unit, so texts that differ in case are two entries.
///
/// Owner:  everything handed in is copied and everything handed out is a copy, but for appointments that
///         are handed over as shared records: those are kept and handed out as they are.
/// Thread: any thread. The maps have one lock and the session facts another, so that the main
///         thread can ask for the facts while the work thread is inside a map operation. No
///         operation takes both.
/// Errors: a look-up without a hit returns false and leaves the out value alone. Nothing else can
///         fail but for want of memory.
class CMapiDataStore
{
public:
    CMapiDataStore() = default;
    virtual ~CMapiDataStore() = default;
    CMapiDataStore(const CMapiDataStore&) = delete;
    CMapiDataStore& operator=(const CMapiDataStore&) = delete;

    /// Puts a record under `key`, in place of an older one; always true.
    bool AddAppointment(const WString& key, MeetingInfo record);
    bool AddAppointment(const WString& key, SharedMeeting record);
    bool GetAppointment(const WString& key, MeetingInfo& record) const;
    /// The record itself, null for an unknown key.
    SharedMeeting FindAppointment(const WString& key) const;
    bool RemoveAppointment(const WString& key);
    /// The first record in key order whose instance key reads `instanceHex`.
    bool FindAppointmentByInstance(WStringView instanceHex, MeetingInfo& record) const;
    /// The same, and the store lets go of that record.
    bool TakeAppointmentByInstance(WStringView instanceHex, MeetingInfo& record);

    /// Keeps `address` under its name unless that name is known already; always true.
    bool AddAddress(const AttendeeInfo& address);
    /// Fills the entry identifier and the four texts of `address`, and nothing else.
    bool GetAddress(const WString& name, AttendeeInfo& address) const;

    /// Keeps the contact, in place of an older one with the same entry identifier; always true.
    bool AddContact(ContactRecord contact);
    bool RemoveContact(const WString& key);
    /// The first contact in key order with this instance key, read without regard to the case of
    /// its hexadecimal digits; the store lets go of it.
    bool TakeContactByKey(WStringView instanceKey, ContactRecord& contact);

    /// Puts the changed recipients of a series under `key`, in place of older ones; always true.
    bool SetSeries(const WString& key, SeriesRecipients recipients);
    /// Whether the recipients of this series were read already, even if it has none.
    bool HasSeries(const WString& key) const;
    /// The recipients of the instance that starts at exactly `startMinutes`, UTC.
    bool GetInstance(const WString& key,
                     std::uint32_t startMinutes,
                     std::vector<AttendeeInfo>& attendees) const;
    bool RemoveSeries(const WString& key);

    /// Empties the four maps. The session facts and the releasing flag stay.
    void ClearDataStore();

    void SetLibraryPath(const WString& path);
    void SetUserFacts(const WString& email, const WString& firstName, const WString& lastName);
    void SetProfileName(const WString& name);
    void SetStoreFacts(const WString& name, const BinaryBlock& entryId, const WString& recordKey);

    WString GetLibraryPath() const;
    WString GetUserEmail() const;
    WString GetUserFirstName() const;
    WString GetUserLastName() const;
    WString GetProfileName() const;
    WString GetStoreName() const;
    BinaryBlock GetStoreEntryId() const;
    WString GetRecordKey() const;

    /// While the flag is 1 no event leaves the process and long listings stop.
    void SetReleasing(std::uint32_t releasing);
    bool IsReleasing() const;

private:
    /// By code unit, like WString's own order, but many units at a time: the keys of one store begin
    /// alike, with some fifty units that are the same in all of them.
    struct KeyOrder
    {
        bool operator()(const WString& left, const WString& right) const noexcept;
    };

    using AppointmentMap = std::map<WString, SharedMeeting, KeyOrder>;

    /// By instance key, and among equal ones by the key of the map.
    struct ByInstance
    {
        using is_transparent = void;
        bool operator()(AppointmentMap::const_iterator left,
                        AppointmentMap::const_iterator right) const noexcept;
        bool operator()(AppointmentMap::const_iterator left,
                        const BinaryBlock& instanceKey) const noexcept;
    };

    AppointmentMap::const_iterator FindByInstance(WStringView instanceHex) const;
    void Erase(AppointmentMap::const_iterator entry);

    // Both locks are recursive: a thread that dies inside an operation comes back from the crash filter
    // to set the flag and to empty the maps.

    // All guarded by m_mapLock.
    AppointmentMap m_appointments;
    std::set<AppointmentMap::const_iterator, ByInstance> m_byInstance; // each of them
    std::map<WString, AttendeeInfo> m_addresses;
    std::map<WString, ContactRecord> m_contacts;
    std::map<WString, SeriesRecipients> m_series;
    mutable std::recursive_mutex m_mapLock;

    // Guards all the members below it.
    mutable std::recursive_mutex m_factsLock;
    WString m_strUserEmail;
    WString m_strStoreName;
    WString m_strRecordKey;
    WString m_strProfileName;
    WString m_strFirstName;
    WString m_strLastName;
    WString m_strLibraryPath;
    std::uint32_t m_releasing = 0;
    BinaryBlock m_storeEntryId;
};

/// The data store of the process, null until MapiDataStore() was called for the first time.
extern std::atomic<CMapiDataStore*> g_pMapiDataStore;

/// The data store of the process, made by the first call and never destroyed: the main thread may
/// ask it for the session facts while the controllers are being taken down.
///
/// Thread: any thread.
CMapiDataStore& MapiDataStore();

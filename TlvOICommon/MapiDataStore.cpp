#include "MapiDataStore.h"

#include <algorithm>
#include <compare>
#include <cstring>
#include <memory>
#include <utility>

#include "HexText.h"

std::atomic<CMapiDataStore*> g_pMapiDataStore{nullptr};

namespace
{

constexpr WCHAR LowerHexDigit(WCHAR unit) noexcept
{
    return unit >= WTEXT('A') && unit <= WTEXT('Z')
               ? static_cast<WCHAR>(unit - WTEXT('A') + WTEXT('a'))
               : unit;
}

bool SameHexText(WStringView left, WStringView right) noexcept
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](WCHAR a, WCHAR b) {
        return LowerHexDigit(a) == LowerHexDigit(b);
    });
}

const BinaryBlock& InstanceKeyOf(const SharedMeeting& meeting) noexcept
{
    return meeting->itemRef.instanceKey;
}

} // namespace

bool CMapiDataStore::KeyOrder::operator()(const WString& left, const WString& right) const noexcept
{
    constexpr std::size_t kUnits = sizeof(std::uint64_t) / sizeof(WCHAR);
    const std::size_t common = std::min(left.size(), right.size());
    std::size_t same = 0;
    while (same + kUnits <= common &&
           std::memcmp(left.data() + same, right.data() + same, sizeof(std::uint64_t)) == 0)
    {
        same += kUnits;
    }
    return WStringView(left).substr(same) < WStringView(right).substr(same);
}

bool CMapiDataStore::ByInstance::operator()(AppointmentMap::const_iterator left,
                                            AppointmentMap::const_iterator right) const noexcept
{
    const auto order = InstanceKeyOf(left->second) <=> InstanceKeyOf(right->second);
    return std::is_eq(order) ? KeyOrder()(left->first, right->first) : std::is_lt(order);
}

bool CMapiDataStore::ByInstance::operator()(AppointmentMap::const_iterator left,
                                            const BinaryBlock& instanceKey) const noexcept
{
    return InstanceKeyOf(left->second) < instanceKey;
}

// Called with m_mapLock held.
CMapiDataStore::AppointmentMap::const_iterator CMapiDataStore::FindByInstance(
    WStringView instanceHex) const
{
    const BinaryBlock instanceKey = BytesOfHexText(instanceHex);
    const auto found = m_byInstance.lower_bound(instanceKey);
    // The text itself counts: another text can be read as the same bytes.
    return found != m_byInstance.end() && InstanceKeyOf((*found)->second) == instanceKey &&
                   IsHexTextOf(instanceHex, instanceKey)
               ? *found
               : m_appointments.end();
}

// Called with m_mapLock held.
void CMapiDataStore::Erase(AppointmentMap::const_iterator entry)
{
    m_byInstance.erase(entry);
    m_appointments.erase(entry);
}

bool CMapiDataStore::AddAppointment(const WString& key, MeetingInfo record)
{
    return AddAppointment(key, std::make_shared<const MeetingInfo>(std::move(record)));
}

bool CMapiDataStore::AddAppointment(const WString& key, SharedMeeting record)
{
    const std::scoped_lock hold(m_mapLock);
    const auto [entry, isNew] = m_appointments.try_emplace(key, record);
    if (!isNew)
    {
        // With its place in the order, which the new record may change, and without a need for memory.
        auto place = m_byInstance.extract(entry);
        entry->second = std::move(record);
        m_byInstance.insert(std::move(place));
        return true;
    }
    try
    {
        m_byInstance.insert(entry);
    }
    catch (...)
    {
        m_appointments.erase(entry);
        throw;
    }
    return true;
}

bool CMapiDataStore::GetAppointment(const WString& key, MeetingInfo& record) const
{
    const SharedMeeting found = FindAppointment(key);
    if (!found)
    {
        return false;
    }
    record = *found;
    return true;
}

SharedMeeting CMapiDataStore::FindAppointment(const WString& key) const
{
    const std::scoped_lock hold(m_mapLock);
    const auto found = m_appointments.find(key);
    return found != m_appointments.end() ? found->second : nullptr;
}

bool CMapiDataStore::RemoveAppointment(const WString& key)
{
    const std::scoped_lock hold(m_mapLock);
    const auto found = m_appointments.find(key);
    if (found == m_appointments.end())
    {
        return false;
    }
    Erase(found);
    return true;
}

bool CMapiDataStore::FindAppointmentByInstance(WStringView instanceHex, MeetingInfo& record) const
{
    const std::scoped_lock hold(m_mapLock);
    const auto found = FindByInstance(instanceHex);
    if (found == m_appointments.end())
    {
        return false;
    }
    record = *found->second;
    return true;
}

bool CMapiDataStore::TakeAppointmentByInstance(WStringView instanceHex, MeetingInfo& record)
{
    const std::scoped_lock hold(m_mapLock);
    const auto found = FindByInstance(instanceHex);
    if (found == m_appointments.end())
    {
        return false;
    }
    record = *found->second;
    Erase(found);
    return true;
}

bool CMapiDataStore::AddAddress(const AttendeeInfo& address)
{
    const std::scoped_lock hold(m_mapLock);
    m_addresses.try_emplace(address.name, address);
    return true;
}

bool CMapiDataStore::GetAddress(const WString& name, AttendeeInfo& address) const
{
    const std::scoped_lock hold(m_mapLock);
    const auto found = m_addresses.find(name);
    if (found == m_addresses.end())
    {
        return false;
    }
    address.entryId = found->second.entryId;
    address.name = found->second.name;
    address.email = found->second.email;
    address.address = found->second.address;
    address.addressType = found->second.addressType;
    return true;
}

bool CMapiDataStore::AddContact(ContactRecord contact)
{
    const std::scoped_lock hold(m_mapLock);
    m_contacts.insert_or_assign(HexTextOf(contact.entryId), std::move(contact));
    return true;
}

bool CMapiDataStore::RemoveContact(const WString& key)
{
    const std::scoped_lock hold(m_mapLock);
    return m_contacts.erase(key) != 0;
}

bool CMapiDataStore::TakeContactByKey(WStringView instanceKey, ContactRecord& contact)
{
    const std::scoped_lock hold(m_mapLock);
    const auto found = std::find_if(m_contacts.begin(), m_contacts.end(), [&](const auto& entry) {
        return SameHexText(entry.second.instanceKey, instanceKey);
    });
    if (found == m_contacts.end())
    {
        return false;
    }
    contact = std::move(found->second);
    m_contacts.erase(found);
    return true;
}

bool CMapiDataStore::SetSeries(const WString& key, SeriesRecipients recipients)
{
    const std::scoped_lock hold(m_mapLock);
    m_series.insert_or_assign(key, std::move(recipients));
    return true;
}

bool CMapiDataStore::HasSeries(const WString& key) const
{
    const std::scoped_lock hold(m_mapLock);
    return m_series.find(key) != m_series.end();
}

bool CMapiDataStore::GetInstance(const WString& key,
                                 std::uint32_t startMinutes,
                                 std::vector<AttendeeInfo>& attendees) const
{
    const std::scoped_lock hold(m_mapLock);
    const auto series = m_series.find(key);
    if (series == m_series.end())
    {
        return false;
    }
    const auto instance = series->second.find(startMinutes);
    if (instance == series->second.end())
    {
        return false;
    }
    attendees = instance->second;
    return true;
}

bool CMapiDataStore::RemoveSeries(const WString& key)
{
    const std::scoped_lock hold(m_mapLock);
    return m_series.erase(key) != 0;
}

void CMapiDataStore::ClearDataStore()
{
    const std::scoped_lock hold(m_mapLock);
    m_byInstance.clear();
    m_appointments.clear();
    m_addresses.clear();
    m_contacts.clear();
    m_series.clear();
}

void CMapiDataStore::SetLibraryPath(const WString& path)
{
    const std::scoped_lock hold(m_factsLock);
    m_strLibraryPath = path;
}

void CMapiDataStore::SetUserFacts(const WString& email,
                                  const WString& firstName,
                                  const WString& lastName)
{
    const std::scoped_lock hold(m_factsLock);
    m_strUserEmail = email;
    m_strFirstName = firstName;
    m_strLastName = lastName;
}

void CMapiDataStore::SetProfileName(const WString& name)
{
    const std::scoped_lock hold(m_factsLock);
    m_strProfileName = name;
}

void CMapiDataStore::SetStoreFacts(const WString& name,
                                   const BinaryBlock& entryId,
                                   const WString& recordKey)
{
    const std::scoped_lock hold(m_factsLock);
    m_strStoreName = name;
    m_storeEntryId = entryId;
    m_strRecordKey = recordKey;
}

WString CMapiDataStore::GetLibraryPath() const
{
    const std::scoped_lock hold(m_factsLock);
    return m_strLibraryPath;
}

WString CMapiDataStore::GetUserEmail() const
{
    const std::scoped_lock hold(m_factsLock);
    return m_strUserEmail;
}

WString CMapiDataStore::GetUserFirstName() const
{
    const std::scoped_lock hold(m_factsLock);
    return m_strFirstName;
}

WString CMapiDataStore::GetUserLastName() const
{
    const std::scoped_lock hold(m_factsLock);
    return m_strLastName;
}

WString CMapiDataStore::GetProfileName() const
{
    const std::scoped_lock hold(m_factsLock);
    return m_strProfileName;
}

WString CMapiDataStore::GetStoreName() const
{
    const std::scoped_lock hold(m_factsLock);
    return m_strStoreName;
}

BinaryBlock CMapiDataStore::GetStoreEntryId() const
{
    const std::scoped_lock hold(m_factsLock);
    return m_storeEntryId;
}

WString CMapiDataStore::GetRecordKey() const
{
    const std::scoped_lock hold(m_factsLock);
    return m_strRecordKey;
}

void CMapiDataStore::SetReleasing(std::uint32_t releasing)
{
    const std::scoped_lock hold(m_factsLock);
    m_releasing = releasing;
}

bool CMapiDataStore::IsReleasing() const
{
    const std::scoped_lock hold(m_factsLock);
    return m_releasing != 0;
}

CMapiDataStore& MapiDataStore()
{
    CMapiDataStore* store = g_pMapiDataStore.load(std::memory_order_acquire);
    if (store == nullptr)
    {
        auto made = std::make_unique<CMapiDataStore>();
        if (g_pMapiDataStore.compare_exchange_strong(store, made.get(), std::memory_order_acq_rel))
        {
            store = made.release();
        }
    }
    return *store;
}

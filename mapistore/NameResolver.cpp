#include "NameResolver.h"

#include <algorithm>
#include <cstring>

#include "FolderRow.h"
#include "MapiTags64.h"
#include "Text.h"

namespace mapistore
{
namespace
{

constexpr ULONG kUsual[] = {PR_ENTRYID,
                            PR_DISPLAY_NAME_W,
                            PR_ADDRTYPE_W,
                            PR_EMAIL_ADDRESS_W,
                            kTagSmtpAddressW,
                            PR_OBJECT_TYPE,
                            PR_DISPLAY_TYPE,
                            PR_SEARCH_KEY};

/// The properties that a caller put into an entry.
CPropertyBag Given(const ADRENTRY& entry)
{
    CPropertyBag bag;
    if (entry.cValues != 0)
    {
        RequireOut(entry.rgPropVals);
    }
    for (ULONG i = 0; i < entry.cValues; ++i)
    {
        const ULONG type = PROP_TYPE(entry.rgPropVals[i].ulPropTag);
        if (type != PT_ERROR && type != PT_NULL)
        {
            bag.Set(ReadValue(entry.rgPropVals[i]));
        }
    }
    return bag;
}

bool IsSmtpAddress(const std::wstring& text)
{
    const size_t at = text.find(L'@');
    return at != std::wstring::npos && at != 0 && at + 1 < text.size() &&
           text.find(L'@', at + 1) == std::wstring::npos && text.find(L' ') == std::wstring::npos;
}

class CBagProperties final : public IPropertySource
{
public:
    explicit CBagProperties(const CPropertyBag& bag) : m_bag(bag) {}
    const CValue* Find(ULONG id, CValue&) const override { return m_bag.Find(id); }
    const std::vector<CPropertyBag>* SubRows(ULONG) const override { return nullptr; }

private:
    const CPropertyBag& m_bag;
};

} // namespace

const Entry* CNameResolver::Find(const std::wstring& name, HRESULT& hr) const
{
    std::vector<const Entry*> answers;
    std::vector<const Entry*> exact;
    const bool isAddress = IsSmtpAddress(name);
    for (const Entry& entry : m_folder.Data().addressBook.entries)
    {
        const bool isIn = m_container == 0 || std::find(entry.containers.begin(),
                                                        entry.containers.end(),
                                                        m_container) != entry.containers.end();
        if (!isIn)
        {
            continue;
        }
        if (isAddress)
        {
            if (EqualText(entry.props.TextOf(PROP_ID(kTagSmtpAddressW)), name) ||
                EqualText(entry.props.TextOf(PROP_ID(PR_EMAIL_ADDRESS_W)), name))
            {
                exact.push_back(&entry);
            }
        }
        else if (AnswersToName(CBagProperties(entry.props), name))
        {
            answers.push_back(&entry);
            if (EqualText(entry.props.TextOf(PROP_ID(PR_DISPLAY_NAME_W)), name))
            {
                exact.push_back(&entry);
            }
        }
    }
    const std::vector<const Entry*>& best = exact.empty() ? answers : exact;
    if (best.size() > 1)
    {
        hr = MAPI_E_AMBIGUOUS_RECIP;
        return nullptr;
    }
    hr = best.empty() ? MAPI_E_NOT_FOUND : S_OK;
    return best.empty() ? nullptr : best.front();
}

HRESULT CNameResolver::Resolve(ADRLIST& list, ADRENTRY& entry, const SPropTagArray* tags)
{
    const CPropertyBag given = Given(entry);
    if (given.Find(PROP_ID(PR_ENTRYID)) != nullptr)
    {
        return S_OK;
    }
    const std::wstring name = given.TextOf(PROP_ID(PR_DISPLAY_NAME_W));
    if (name.empty())
    {
        throw CMisuse(MAPI_E_INVALID_PARAMETER, L"a recipient without PR_DISPLAY_NAME");
    }
    HRESULT hr = S_OK;
    const Entry* found = Find(name, hr);
    if (found != nullptr)
    {
        Fill(list, entry, EntryProperties(m_folder.Data().addressBook, *found), tags);
        return S_OK;
    }
    if (hr == MAPI_E_NOT_FOUND && IsSmtpAddress(name) && m_container == 0)
    {
        const OneOff oneOff{name, L"SMTP", name};
        Fill(list, entry, OneOffProperties(oneOff, MakeOneOff(oneOff)), tags);
        return S_OK;
    }
    return hr;
}

void CNameResolver::Complete(ADRLIST& list, ADRENTRY& entry, const SPropTagArray* tags)
{
    const CPropertyBag given = Given(entry);
    const CValue* id = given.Find(PROP_ID(PR_ENTRYID));
    if (id == nullptr || id->Type() != PT_BINARY)
    {
        return;
    }
    const std::string bytes = id->Bytes();
    const std::optional<EntryName> name = ReadEntryId(bytes);
    const std::optional<OneOff> oneOff = ReadOneOff(bytes);
    if (oneOff)
    {
        Fill(list, entry, OneOffProperties(*oneOff, bytes), tags);
    }
    else if (name)
    {
        const AddressBook& book = m_folder.Data().addressBook;
        const Entry* found = name->uid == book.uid ? m_folder.Data().FindEntry(name->id) : nullptr;
        if (found != nullptr)
        {
            Fill(list, entry, EntryProperties(book, *found), tags);
        }
    }
}

void CNameResolver::Fill(ADRLIST& list,
                         ADRENTRY& entry,
                         const CPropertyBag& found,
                         const SPropTagArray* tags)
{
    // What the caller gave and the address book does not know stays, such as PR_RECIPIENT_TYPE.
    CPropertyBag merged = Given(entry);
    const ULONG* wanted = tags != nullptr ? tags->aulPropTag : kUsual;
    const size_t count = tags != nullptr ? tags->cValues : sizeof(kUsual) / sizeof(kUsual[0]);
    for (size_t i = 0; i < count; ++i)
    {
        const CValue* value = found.Find(PROP_ID(wanted[i]));
        if (value != nullptr)
        {
            merged.Set(*value);
        }
    }
    buffers::Head* listHead = buffers::FindHead(&list);
    const bool linked = listHead != nullptr && entry.rgPropVals != nullptr &&
                        buffers::Owns(listHead, entry.rgPropVals);
    std::unique_ptr<CBuffer> buffer =
        linked ? std::make_unique<CBuffer>(listHead, merged.Size() * sizeof(SPropValue))
               : std::make_unique<CBuffer>(merged.Size() * sizeof(SPropValue), m_operation);
    auto* values = buffer->As<SPropValue>();
    ULONG filled = 0;
    for (const CValue& value : merged)
    {
        const ULONG type = value.Type() == PT_UNICODE && !m_unicode ? PT_STRING8 : value.Type();
        WriteValue(*buffer,
                   values[filled++],
                   &value,
                   ChangeType(value.Tag(), type),
                   m_unicode,
                   ~std::uint64_t{0});
    }
    if (!linked && entry.rgPropVals != nullptr)
    {
        std::string problem;
        if (!buffers::Free(entry.rgPropVals, problem))
        {
            Runtime().Ledger().Misuse(
                m_operation, S_OK, "the values of a recipient are no allocation of this library");
        }
    }
    entry.cValues = filled;
    entry.rgPropVals = static_cast<SPropValue*>(buffer->Detach());
}

} // namespace mapistore

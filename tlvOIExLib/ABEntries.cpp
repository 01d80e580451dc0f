// CABbase: the mail users of a container, and the addresses of one entry.

#include <string>

#include "ABbase.h"
#include "MapiMemory.h"
#include "MapiUtil.h"
#include "NarrowText.h"
#include "OrdinalText.h"
#include "PropValue.h"
#include "Trace.h"

namespace
{

unsigned Code(HRESULT status) noexcept
{
    return static_cast<unsigned>(status);
}

ENTRYID* EntryIdOf(const BinaryBlock& block) noexcept
{
    // MAPI takes identifiers as writable and does not write them.
    return reinterpret_cast<ENTRYID*>(const_cast<std::uint8_t*>(block.data()));
}

/// One walk over the mail users of a container that the directory finds for a text.
///
/// Shape: `name` is the operation's own, which stands in each of its trace lines.
class CUserWalk final
{
public:
    CUserWalk(IAddrBook* book, const char* function, const char* name) noexcept
        : m_book(book), m_function(function), m_name(name)
    {
    }

    /// False when the walk ended with a trace line; else the rows stand in Rows().
    bool Run(const BinaryBlock& containerId, ULONG tag, const WString& text)
    {
        if (m_book == nullptr)
        {
            SEND_TRACE(3, m_function, "CABbase::%s m_lpAdrBook == NULL", m_name);
            return false;
        }
        if (text.empty())
        {
            SEND_TRACE(3,
                       m_function,
                       "CABbase::%s - input parameter invalid, [%s]",
                       m_name,
                       NarrowText(text).c_str());
            return false;
        }
        return OpenTable(containerId) && RestrictTable(tag, text) && ReadRows();
    }

    [[nodiscard]] const CMapiRows& Rows() const noexcept { return m_rows; }

private:
    bool OpenTable(const BinaryBlock& containerId)
    {
        ULONG objectType = 0;
        CComRef<IUnknown> object;
        HRESULT status = m_book->OpenEntry(BlockSize(containerId),
                                           EntryIdOf(containerId),
                                           nullptr,
                                           MAPI_BEST_ACCESS,
                                           &objectType,
                                           object.Put());
        if (status != S_OK || objectType != MAPI_ABCONT || !object)
        {
            SEND_TRACE(3,
                       m_function,
                       "CABbase::%s - OpenEntry failed, result[0x%x], objecttype[%d]",
                       m_name,
                       Code(status),
                       static_cast<int>(objectType));
            return false;
        }
        m_container = CComRef<IABContainer>::Adopt(static_cast<IABContainer*>(object.Detach()));
        status = m_container->GetContentsTable(MAPI_UNICODE, m_table.Put());
        if (FAILED(status) || !m_table)
        {
            TraceFailure("GetContentsTable", status);
            return false;
        }
        return true;
    }

    bool RestrictTable(ULONG tag, const WString& text)
    {
        SPropValue value{};
        value.ulPropTag = tag;
        // The directory reads the text and does not write it.
        value.Value.lpszW = const_cast<WCHAR*>(text.c_str());
        SRestriction restriction{};
        restriction.rt = RES_PROPERTY;
        restriction.res.resProperty.relop = RELOP_EQ;
        restriction.res.resProperty.ulPropTag = tag;
        restriction.res.resProperty.lpProp = &value;
        HRESULT status = m_table->Restrict(&restriction, TBL_BATCH);
        if (FAILED(status))
        {
            TraceFailure("restrict", status);
            return false;
        }
        SizedSPropTagArray(3, columns) = {3, {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_OBJECT_TYPE}};
        status = m_table->SetColumns(reinterpret_cast<SPropTagArray*>(&columns), TBL_BATCH);
        if (FAILED(status))
        {
            TraceFailure("SetColumns", status);
            return false;
        }
        return true;
    }

    bool ReadRows()
    {
        ULONG rowCount = 0;
        HRESULT status = m_table->GetRowCount(0, &rowCount);
        if (FAILED(status) || rowCount == 0)
        {
            SEND_TRACE(3,
                       m_function,
                       "CABbase::%s - GetRowCount failed, result[0x%x], rowcount[%d]",
                       m_name,
                       Code(status),
                       static_cast<int>(rowCount));
            return false;
        }
        status = m_table->QueryRows(static_cast<LONG>(rowCount), 0, m_rows.Put());
        if (FAILED(status) || !m_rows)
        {
            TraceFailure("QueryRows", status);
            return false;
        }
        return true;
    }

    void TraceFailure(const char* step, HRESULT status) const
    {
        SEND_TRACE(
            3, m_function, "CABbase::%s - %s failed, result[0x%x]", m_name, step, Code(status));
    }

    IAddrBook* m_book;
    const char* m_function;
    const char* m_name;
    CComRef<IABContainer> m_container;
    CComRef<IMAPITable> m_table;
    CMapiRows m_rows;
};

/// What a row says of one entry.
struct UserRow
{
    BinaryBlock entryId; ///< empty without the column
    bool isMailUser = false;
};

UserRow ReadUserRow(const SRow& row)
{
    UserRow user;
    for (ULONG column = 0; column < row.cValues; ++column)
    {
        const SPropValue& value = row.lpProps[column];
        if (value.ulPropTag == PR_ENTRYID)
        {
            prop::TakeBlock(&value, user.entryId);
        }
        else if (value.ulPropTag == PR_OBJECT_TYPE)
        {
            user.isMailUser = value.Value.ul == MAPI_MAILUSER;
        }
    }
    return user;
}

/// What the directory is asked for a name: the part before the first period, and of that the part
/// before the first blank.
WString RestrictionText(const WString& name)
{
    WString text = name.substr(0, name.find(L'.'));
    return text.substr(0, text.find(L' '));
}

/// Sets `text` from a property, if the entry has it.
void ReadText(IMAPIProp* entry, ULONG tag, WString& text)
{
    CMapiBuffer<SPropValue> value;
    if (GetOneProp(entry, tag, value) == S_OK && value && value->ulPropTag == tag &&
        value->Value.lpszW != nullptr)
    {
        text = value->Value.lpszW;
    }
}

} // namespace

void CABbase::ListABEmailWithName(const BinaryBlock& containerId,
                                  const WString& name,
                                  std::vector<ABEmailEntry>& list)
{
    CUserWalk walk(m_lpAdrBook.Get(), "CABbase::ListABEmailWithName", "ListABEmailWithName");
    if (!walk.Run(containerId, PR_ANR_W, RestrictionText(name)))
    {
        return;
    }
    for (const SRow& row : walk.Rows())
    {
        const UserRow user = ReadUserRow(row);
        ABEmailEntry entry;
        if (user.isMailUser && GetABEmailAddress(user.entryId, entry) != 0 &&
            (LowerCaseText(entry.displayName).starts_with(name) ||
             LowerCaseText(entry.smtpAddress).starts_with(name)))
        {
            list.push_back(std::move(entry));
        }
    }
}

ULONG CABbase::ListABEmailWithKey(const BinaryBlock& containerId,
                                  const WString& key,
                                  ULONG tag,
                                  std::vector<ABEmailEntry>& list)
{
    CUserWalk walk(m_lpAdrBook.Get(), "CABbase::ListABEmailWithKey", "ListABEmailWithKey");
    if (!walk.Run(containerId, tag, key))
    {
        return 0;
    }
    ULONG count = 0;
    for (const SRow& row : walk.Rows())
    {
        const UserRow user = ReadUserRow(row);
        ABEmailEntry entry;
        if (user.isMailUser && GetABEmailAddress(user.entryId, entry) != 0 &&
            EqualIgnoringCase(entry.smtpAddress, key))
        {
            list.push_back(std::move(entry));
            ++count;
        }
    }
    return count;
}

ULONG CABbase::GetABEmailAddress(const BinaryBlock& entryId, ABEmailEntry& entry)
{
    if (entryId.empty())
    {
        SEND_TRACE(3,
                   "CABbase::GetABEmailAddress",
                   "CABbase::GetABEmailAddress - Invalid Entryid[NULL] !!!");
        return 0;
    }
    if (&entryId != &entry.entryId)
    {
        entry.entryId = entryId;
    }
    CComRef<IMAPIProp> user;
    if (m_lpAdrBook)
    {
        ULONG objectType = 0;
        CComRef<IUnknown> object;
        const HRESULT status = m_lpAdrBook->OpenEntry(BlockSize(entryId),
                                                      EntryIdOf(entryId),
                                                      nullptr,
                                                      MAPI_BEST_ACCESS,
                                                      &objectType,
                                                      object.Put());
        if (SUCCEEDED(status) && object)
        {
            user = CComRef<IMAPIProp>::Adopt(static_cast<IMAPIProp*>(object.Detach()));
        }
    }
    if (user)
    {
        ReadText(user.Get(), PR_DISPLAY_NAME_W, entry.displayName);
        ReadText(user.Get(), PR_ADDRTYPE_W, entry.addressType);
        ReadText(user.Get(), PR_EMAIL_ADDRESS_W, entry.nativeAddress);
    }
    if (entry.addressType == L"SMTP")
    {
        entry.smtpAddress = entry.nativeAddress;
    }
    else if (user)
    {
        ReadText(user.Get(), PR_SMTP_ADDRESS_W, entry.smtpAddress);
        if (entry.smtpAddress.empty())
        {
            ReadText(user.Get(), PR_ORIGINAL_DISPLAY_NAME_W, entry.smtpAddress);
        }
    }
    return entry.smtpAddress.empty() ? 0 : 1;
}

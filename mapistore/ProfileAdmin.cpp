#include "ProfileAdmin.h"

#include "FolderRow.h"
#include "MessageRow.h"
#include "StoreFolder.h"
#include "Table.h"

namespace mapistore
{
namespace
{

/// The name of the profile that stands in the table while the document cannot be read, so that the
/// logon is tried and tells what is wrong.
constexpr const wchar_t* kUnreadableProfile = L"mapistore";

consteval Operation Op(std::string_view method)
{
    return OperationOf("IProfAdmin", method);
}

RowPtr ProfileRow(std::uint64_t number, const std::wstring& name, bool isDefault)
{
    CPropertyBag bag;
    bag.Set(CValue::Text(PR_DISPLAY_NAME_W, name));
    bag.Set(CValue::Boolean(PR_DEFAULT_PROFILE, isDefault));
    bag.Set(MakeInstanceKey(number));
    return std::make_shared<CBagRow>(number, std::move(bag));
}

std::vector<RowPtr> ProfileRows()
{
    std::vector<RowPtr> rows;
    std::shared_ptr<CStoreFolder> folder;
    try
    {
        folder = Runtime().StoreFolder();
    }
    catch (const CMapiError& error)
    {
        if (error.Code() != MAPI_E_CORRUPT_STORE)
        {
            return rows; // no folder, no profiles
        }
        rows.push_back(ProfileRow(1, kUnreadableProfile, true));
        return rows;
    }
    const std::scoped_lock hold(folder->Lock());
    for (const Profile& profile : folder->Data().profiles)
    {
        rows.push_back(ProfileRow(rows.size() + 1, profile.name, profile.isDefault));
    }
    return rows;
}

} // namespace

CProfileAdmin::CProfileAdmin(Operation madeBy) : CObject("IProfAdmin", madeBy, nullptr) {}

bool CProfileAdmin::Supports(REFIID iid) const
{
    return iid == IID_IUnknown || iid == IID_IProfAdmin;
}

HRESULT CProfileAdmin::GetLastError(HRESULT hr, ULONG flags, MAPIERROR** error)
{
    return LastError(Op("GetLastError"), hr, flags, error);
}

HRESULT CProfileAdmin::GetProfileTable(ULONG flags, ::IMAPITable** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("GetProfileTable");
    return Run(kOp, [&]() -> HRESULT {
        // The table has no wide form of its own: the caller's columns decide.
        CheckFlags(kOp, flags, 0);
        RequireOut(out);
        CTable* table = MakeStaticTable("profiles",
                                        ProfileRows(),
                                        {PR_DISPLAY_NAME_A, PR_DEFAULT_PROFILE},
                                        false,
                                        kOp,
                                        nullptr);
        *out = reinterpret_cast<::IMAPITable*>(table);
        return S_OK;
    });
}

HRESULT CProfileAdmin::NoSupport(Operation operation) noexcept
{
    return Run(operation, [&]() -> HRESULT { return MAPI_E_NO_SUPPORT; });
}

HRESULT CProfileAdmin::CreateProfile(LPTSTR, LPTSTR, ULONG_PTR, ULONG)
{
    return NoSupport(Op("CreateProfile"));
}

HRESULT CProfileAdmin::DeleteProfile(LPTSTR, ULONG)
{
    return NoSupport(Op("DeleteProfile"));
}

HRESULT CProfileAdmin::ChangeProfilePassword(LPTSTR, LPTSTR, LPTSTR, ULONG)
{
    return NoSupport(Op("ChangeProfilePassword"));
}

HRESULT CProfileAdmin::CopyProfile(LPTSTR, LPTSTR, LPTSTR, ULONG_PTR, ULONG)
{
    return NoSupport(Op("CopyProfile"));
}

HRESULT CProfileAdmin::RenameProfile(LPTSTR, LPTSTR, LPTSTR, ULONG_PTR, ULONG)
{
    return NoSupport(Op("RenameProfile"));
}

HRESULT CProfileAdmin::SetDefaultProfile(LPTSTR, ULONG)
{
    return NoSupport(Op("SetDefaultProfile"));
}

HRESULT CProfileAdmin::AdminServices(LPTSTR, LPTSTR, ULONG_PTR, ULONG, IMsgServiceAdmin** out)
{
    ClearOut(out);
    return NoSupport(Op("AdminServices"));
}

} // namespace mapistore

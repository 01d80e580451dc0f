#include <cstring>

#include "FolderRow.h"
#include "MapiTags64.h"
#include "PropObject.h"
#include "Session.h"
#include "Table.h"

namespace mapistore
{
namespace
{

consteval Operation Op(std::string_view method)
{
    return OperationOf("IMAPISession", method);
}

/// The one profile section that this library has: the profile's own properties.
class CProfileSection final : public CBagObject<IProfSect>
{
public:
    CProfileSection(CPropertyBag bag,
                    std::shared_ptr<CStoreFolder> folder,
                    Operation madeBy,
                    Lifeline life)
        : CBagObject(std::move(bag),
                     "IProfSect",
                     OperationOf("IProfSect", "GetLastError"),
                     madeBy,
                     std::move(folder),
                     std::move(life))
    {
    }
    bool Supports(REFIID iid) const override
    {
        return iid == IID_IUnknown || iid == IID_IMAPIProp || iid == IID_IProfSect;
    }
};

} // namespace

HRESULT CSession::OpenProfileSection(MAPIUID* uid, const IID* iid, ULONG flags, IProfSect** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("OpenProfileSection");
    return Run(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, MAPI_MODIFY | MAPI_DEFERRED_ERRORS);
        RequireOut(out);
        const std::scoped_lock hold(m_folder->Lock());
        static constexpr unsigned char kOwn[16] = PS_PROFILE_PROPERTIES_INIT;
        if (uid != nullptr && std::memcmp(uid, kOwn, sizeof(kOwn)) != 0)
        {
            return MAPI_E_NOT_FOUND;
        }
        if ((flags & MAPI_MODIFY) != 0)
        {
            return MAPI_E_NO_ACCESS;
        }
        CPropertyBag bag;
        bag.Set(CValue::Text(PR_PROFILE_NAME_W, m_profile));
        bag.Set(CValue::Text(PR_DISPLAY_NAME_W, m_profile));
        bag.Set(CValue::Long(PR_OBJECT_TYPE, MAPI_PROFSECT));
        auto* section = new CProfileSection(std::move(bag), m_folder, kOp, m_life);
        CheckInterface(section, iid);
        *out = section;
        return S_OK;
    });
}

HRESULT CSession::GetStatusTable(ULONG flags, ::IMAPITable** out)
{
    ClearOut(out);
    constexpr Operation kOp = Op("GetStatusTable");
    return Run(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, MAPI_UNICODE);
        RequireOut(out);
        CPropertyBag bag;
        bag.Set(CValue::Text(PR_DISPLAY_NAME_W, L"mapistore"));
        bag.Set(CValue::Text(PR_PROVIDER_DISPLAY_W, L"mapistore"));
        bag.Set(CValue::Long(PR_RESOURCE_TYPE, MAPI_SUBSYSTEM));
        bag.Set(CValue::Long(PR_STATUS_CODE, STATUS_AVAILABLE));
        bag.Set(CValue::Long(PR_OBJECT_TYPE, MAPI_STATUS));
        std::vector<RowPtr> rows = {std::make_shared<CBagRow>(1, std::move(bag))};
        CTable* table =
            MakeStaticTable("status",
                            std::move(rows),
                            {PR_DISPLAY_NAME_W, PR_RESOURCE_TYPE, PR_STATUS_CODE, PR_OBJECT_TYPE},
                            (flags & MAPI_UNICODE) != 0,
                            kOp,
                            m_life);
        *out = reinterpret_cast<::IMAPITable*>(table);
        return S_OK;
    });
}

HRESULT CSession::EnumAdrTypes(ULONG flags, ULONG* count, LPTSTR** types)
{
    ClearOut(count);
    ClearOut(types);
    constexpr Operation kOp = Op("EnumAdrTypes");
    return Run(kOp, [&]() -> HRESULT {
        CheckFlags(kOp, flags, MAPI_UNICODE);
        RequireOut(count);
        RequireOut(types);
        const bool unicode = (flags & MAPI_UNICODE) != 0;
        CBuffer buffer(2 * sizeof(LPTSTR), kOp);
        auto** out = buffer.As<LPTSTR>();
        out[0] = static_cast<LPTSTR>(WriteText(buffer, L"SMTP", unicode));
        out[1] = static_cast<LPTSTR>(WriteText(buffer, L"EX", unicode));
        *count = 2;
        *types = static_cast<LPTSTR*>(buffer.Detach());
        return S_OK;
    });
}

HRESULT CSession::Advise(ULONG, ENTRYID*, ULONG, IMAPIAdviseSink*, mapi64::Connection* out)
{
    if (out != nullptr)
    {
        *out = 0;
    }
    return NoSupport(Op("Advise"));
}

HRESULT CSession::Unadvise(mapi64::Connection)
{
    return NoSupport(Op("Unadvise"));
}

HRESULT CSession::MessageOptions(ULONG_PTR, ULONG, LPTSTR, IMessage*)
{
    return NoSupport(Op("MessageOptions"));
}

HRESULT CSession::QueryDefaultMessageOpt(LPTSTR, ULONG, ULONG* count, SPropValue** options)
{
    ClearOut(count);
    ClearOut(options);
    return NoSupport(Op("QueryDefaultMessageOpt"));
}

HRESULT CSession::SetDefaultStore(ULONG, ULONG, ENTRYID*)
{
    return NoSupport(Op("SetDefaultStore"));
}

HRESULT CSession::AdminServices(ULONG, IMsgServiceAdmin** out)
{
    ClearOut(out);
    return NoSupport(Op("AdminServices"));
}

HRESULT CSession::ShowForm(ULONG_PTR,
                           ::IMsgStore*,
                           IMAPIFolder*,
                           const IID*,
                           ULONG_PTR,
                           IMessage*,
                           ULONG,
                           ULONG,
                           ULONG,
                           ULONG,
                           LPSTR)
{
    return NoSupport(Op("ShowForm"));
}

HRESULT CSession::PrepareForm(const IID*, IMessage*, ULONG_PTR* token)
{
    if (token != nullptr)
    {
        *token = 0;
    }
    return NoSupport(Op("PrepareForm"));
}

} // namespace mapistore

#include "PropArrays.h"
#include "PropObject.h"

namespace mapistore
{
namespace
{

PropertyName NameOf(const MAPINAMEID& given)
{
    if (given.lpguid == nullptr || given.ulKind > MNID_STRING ||
        (given.ulKind == MNID_STRING && given.Kind.lpwstrName == nullptr))
    {
        throw CMisuse(MAPI_E_INVALID_PARAMETER, L"a property name without set or name");
    }
    PropertyName name;
    name.set = *given.lpguid;
    name.isText = given.ulKind == MNID_STRING;
    if (name.isText)
    {
        name.text = given.Kind.lpwstrName;
    }
    else
    {
        name.number = given.Kind.lID;
    }
    return name;
}

// PS_MAPI: a number in it is the identifier itself.
constexpr GUID kSetMapi = {0x00020328, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

} // namespace

HRESULT CPropCore::CoreNamesFromIds(
    SPropTagArray** tags, GUID* set, ULONG flags, ULONG* count, MAPINAMEID*** names) noexcept
{
    ClearOut(count);
    ClearOut(names);
    const Operation op = PropOp(kGetNamesFromIDs);
    return Run(op, [&]() -> HRESULT {
        const std::scoped_lock hold(m_folder->Lock());
        CheckFlags(op, flags, MAPI_NO_STRINGS | MAPI_NO_IDS);
        RequireOut(tags);
        RequireOut(count);
        RequireOut(names);
        const CNameMap& map = m_folder->Data().names;
        std::vector<ULONG> ids;
        for (ULONG i = 0; *tags != nullptr && i < (*tags)->cValues; ++i)
        {
            ids.push_back(PROP_ID((*tags)->aulPropTag[i]));
        }
        if (*tags == nullptr)
        {
            for (const auto& [name, id] : map.All())
            {
                const bool inSet = set == nullptr || name.set == *set;
                const bool inKind = (flags & (name.isText ? MAPI_NO_STRINGS : MAPI_NO_IDS)) == 0;
                if (inSet && inKind)
                {
                    ids.push_back(id);
                }
            }
        }
        CBuffer buffer((ids.size() + 1) * sizeof(MAPINAMEID*), op);
        auto** out = buffer.As<MAPINAMEID*>();
        bool complete = true;
        for (size_t i = 0; i < ids.size(); ++i)
        {
            const PropertyName* name = map.NameOf(ids[i]);
            out[i] = nullptr;
            complete = complete && name != nullptr;
            if (name == nullptr)
            {
                continue;
            }
            out[i] = static_cast<MAPINAMEID*>(buffer.More(sizeof(MAPINAMEID)));
            out[i]->lpguid = static_cast<GUID*>(buffer.More(sizeof(GUID)));
            *out[i]->lpguid = name->set;
            out[i]->ulKind = name->isText ? MNID_STRING : MNID_ID;
            out[i]->Kind.lpwstrName = nullptr;
            if (name->isText)
            {
                out[i]->Kind.lpwstrName = static_cast<LPWSTR>(WriteText(buffer, name->text, true));
            }
            else
            {
                out[i]->Kind.lID = name->number;
            }
        }
        if (*tags == nullptr)
        {
            for (ULONG& id : ids)
            {
                id = PROP_TAG(PT_UNSPECIFIED, id);
            }
            *tags = WriteTags(ids, op);
        }
        *count = static_cast<ULONG>(ids.size());
        *names = static_cast<MAPINAMEID**>(buffer.Detach());
        return complete ? S_OK : MAPI_W_ERRORS_RETURNED;
    });
}

HRESULT CPropCore::CoreIdsFromNames(ULONG count,
                                    MAPINAMEID** names,
                                    ULONG flags,
                                    SPropTagArray** tags) noexcept
{
    ClearOut(tags);
    const Operation op = PropOp(kGetIDsFromNames);
    return Run(op, [&]() -> HRESULT {
        const std::scoped_lock hold(m_folder->Lock());
        CheckFlags(op, flags, MAPI_CREATE);
        RequireOut(tags);
        CNameMap& map = m_folder->Data().names;
        std::vector<ULONG> found;
        bool complete = true;
        if (count == 0 || names == nullptr)
        {
            if (count != 0)
            {
                throw CMisuse(MAPI_E_INVALID_PARAMETER, L"a null pointer");
            }
            for (const auto& [name, id] : map.All())
            {
                found.push_back(PROP_TAG(PT_UNSPECIFIED, id));
            }
        }
        for (ULONG i = 0; names != nullptr && i < count; ++i)
        {
            RequireOut(names[i]);
            const PropertyName name = NameOf(*names[i]);
            ULONG id = 0;
            if (name.set == kSetMapi && !name.isText)
            {
                id = static_cast<ULONG>(name.number) & 0xFFFF;
            }
            else
            {
                id = (flags & MAPI_CREATE) != 0 ? map.Make(name) : map.Find(name);
            }
            complete = complete && id != 0;
            found.push_back(id != 0 ? PROP_TAG(PT_UNSPECIFIED, id) : PROP_TAG(PT_ERROR, 0));
        }
        *tags = WriteTags(found, op);
        return complete ? S_OK : MAPI_W_ERRORS_RETURNED;
    });
}

} // namespace mapistore

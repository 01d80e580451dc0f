#include "PropObject.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

#include "MapiTags64.h"
#include "PropertyWriter.h"
#include "Stream.h"

namespace mapistore
{
namespace
{

constexpr ULONG kKeepFlags =
    KEEP_OPEN_READONLY | KEEP_OPEN_READWRITE | FORCE_SAVE | MAPI_DEFERRED_ERRORS;

SPropProblemArray* WriteProblems(const std::vector<SPropProblem>& problems, Operation operation)
{
    CBuffer buffer(CbNewSPropProblemArray(problems.size()), operation);
    auto* out = buffer.As<SPropProblemArray>();
    out->cProblem = static_cast<ULONG>(problems.size());
    std::copy(problems.begin(), problems.end(), out->aProblem);
    return static_cast<SPropProblemArray*>(buffer.Detach());
}

SPropTagArray* WriteTags(const std::vector<ULONG>& tags, Operation operation)
{
    CBuffer buffer(CbNewSPropTagArray(tags.size()), operation);
    auto* out = buffer.As<SPropTagArray>();
    out->cValues = static_cast<ULONG>(tags.size());
    std::copy(tags.begin(), tags.end(), out->aulPropTag);
    return static_cast<SPropTagArray*>(buffer.Detach());
}

Subjects SubjectsOf(const SPropTagArray* tags)
{
    Subjects subjects;
    for (ULONG i = 0; tags != nullptr && i < tags->cValues; ++i)
    {
        subjects.push_back(TagText(tags->aulPropTag[i]));
    }
    return subjects;
}

PropertyName NameOf(const MAPINAMEID& given)
{
    if (given.lpguid == nullptr || given.ulKind > MNID_STRING ||
        (given.ulKind == MNID_STRING && given.Kind.lpwstrName == nullptr))
    {
        throw CMapiError(MAPI_E_INVALID_PARAMETER, L"a property name without set or name");
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

std::string TagText(ULONG tag)
{
    char text[16];
    std::snprintf(text, sizeof(text), "0x%08lX", tag);
    return text;
}

void CPropCore::Change(const PropertyChange&)
{
    throw CMapiError(MAPI_E_NO_ACCESS);
}

HRESULT CPropCore::Save(ULONG)
{
    return S_OK;
}

IUnknown* CPropCore::OpenObject(ULONG, const IID&, ULONG, ULONG)
{
    throw CMapiError(MAPI_E_NOT_FOUND);
}

SCODE CPropCore::ProblemOf(ULONG) const
{
    return S_OK;
}

void CPropCore::CopyParts(IUnknown*, const std::vector<ULONG>&)
{
    // Only a message has parts.
}

HRESULT CPropCore::CoreLastError(HRESULT hr, ULONG flags, MAPIERROR** error) noexcept
{
    return LastError(PropOp(kGetLastError), hr, flags, error);
}

HRESULT CPropCore::CoreSaveChanges(ULONG flags) noexcept
{
    return Run(PropOp(kSaveChanges), [&]() -> HRESULT {
        const std::scoped_lock hold(m_folder->Lock());
        CheckFlags(PropOp(kSaveChanges), flags, kKeepFlags);
        constexpr ULONG kBoth = KEEP_OPEN_READONLY | KEEP_OPEN_READWRITE;
        if ((flags & kBoth) == kBoth)
        {
            Refuse(PropOp(kSaveChanges), MAPI_E_INVALID_PARAMETER, "both ways of keeping open");
        }
        return Save(flags);
    });
}

std::vector<ULONG> CPropCore::TagsOf(SPropTagArray* tags, bool unicode)
{
    if (tags != nullptr)
    {
        if (tags->cValues == 0)
        {
            Refuse(PropOp(kGetProps), MAPI_E_INVALID_PARAMETER, "no properties asked for");
        }
        return std::vector<ULONG>(tags->aulPropTag, tags->aulPropTag + tags->cValues);
    }
    std::vector<ULONG> all;
    AddTags(all);
    std::set<ULONG> seen;
    std::vector<ULONG> result;
    for (const ULONG tag : all)
    {
        if (seen.insert(PROP_ID(tag)).second)
        {
            // The width follows the flag, as for a tag that leaves it open.
            const bool isText = PROP_TYPE(tag) == PT_UNICODE && !unicode;
            result.push_back(isText ? ChangeType(tag, PT_STRING8) : tag);
        }
    }
    return result;
}

HRESULT CPropCore::CoreGetProps(SPropTagArray* tags,
                                ULONG flags,
                                ULONG* count,
                                SPropValue** values) noexcept
{
    ClearOut(count);
    ClearOut(values);
    const Operation op = PropOp(kGetProps);
    return Run(
        op,
        [&]() -> HRESULT {
            const std::scoped_lock hold(m_folder->Lock());
            CheckFlags(op, flags, MAPI_UNICODE);
            RequireOut(count);
            RequireOut(values);
            const bool unicode = (flags & MAPI_UNICODE) != 0;
            const std::vector<ULONG> wanted = TagsOf(tags, unicode);
            const std::uint64_t limit = m_folder->Data().largeValueBytes;
            CBuffer buffer(wanted.size() * sizeof(SPropValue), op);
            auto* out = buffer.As<SPropValue>();
            bool complete = true;
            for (size_t i = 0; i < wanted.size(); ++i)
            {
                CValue scratch;
                const CValue* value = FindValue(PROP_ID(wanted[i]), scratch);
                CValue forced;
                for (const auto& [tag, code] : Outcome().errors)
                {
                    if (PROP_ID(tag) == PROP_ID(wanted[i]))
                    {
                        forced = CValue::Error(tag, code);
                        value = &forced;
                    }
                }
                const bool good = WriteValue(buffer, out[i], value, wanted[i], unicode, limit);
                complete = complete && good;
            }
            *count = static_cast<ULONG>(wanted.size());
            *values = static_cast<SPropValue*>(buffer.Detach());
            return complete ? S_OK : MAPI_W_ERRORS_RETURNED;
        },
        SubjectsOf(tags));
}

HRESULT CPropCore::CoreGetPropList(ULONG flags, SPropTagArray** tags) noexcept
{
    ClearOut(tags);
    const Operation op = PropOp(kGetPropList);
    return Run(op, [&]() -> HRESULT {
        const std::scoped_lock hold(m_folder->Lock());
        CheckFlags(op, flags, MAPI_UNICODE);
        RequireOut(tags);
        *tags = WriteTags(TagsOf(nullptr, (flags & MAPI_UNICODE) != 0), op);
        return S_OK;
    });
}

IUnknown* CPropCore::OpenStream(ULONG tag, ULONG flags, Operation operation)
{
    const ULONG type = PROP_TYPE(tag);
    if (type != PT_UNICODE && type != PT_STRING8 && type != PT_BINARY)
    {
        throw CMapiError(MAPI_E_INTERFACE_NOT_SUPPORTED, L"no stream of this type");
    }
    const bool create = (flags & MAPI_CREATE) != 0;
    const bool write = create || (flags & MAPI_MODIFY) != 0;
    std::function<void(CValue)> target = write ? StreamTarget() : nullptr;
    if (write && (!Writable() || !target))
    {
        throw CMapiError(MAPI_E_NO_ACCESS, L"the object is open for reading only");
    }
    std::string content;
    CValue scratch;
    const CValue* value = FindValue(PROP_ID(tag), scratch);
    if (value != nullptr && value->Type() != PT_ERROR && !create)
    {
        content = StreamBytes(*value, type);
    }
    else if (!create)
    {
        throw CMapiError(MAPI_E_NOT_FOUND);
    }
    return new CStream(std::move(content), tag, std::move(target), operation, Life());
}

HRESULT CPropCore::CoreOpenProperty(
    ULONG tag, const IID* iid, ULONG interfaceFlags, ULONG flags, IUnknown** out) noexcept
{
    ClearOut(out);
    const Operation op = PropOp(kOpenProperty);
    return Run(op,
               [&]() -> HRESULT {
                   const std::scoped_lock hold(m_folder->Lock());
                   CheckFlags(op, flags, MAPI_MODIFY | MAPI_CREATE | MAPI_DEFERRED_ERRORS);
                   RequireOut(out);
                   RequireOut(iid);
                   if (PROP_TYPE(tag) != PT_OBJECT && *iid == IID_IStream)
                   {
                       *out = OpenStream(tag, flags, op);
                   }
                   else
                   {
                       *out = OpenObject(tag, *iid, interfaceFlags, flags);
                   }
                   return S_OK;
               },
               {TagText(tag)});
}

SCODE CPropCore::CheckedProblem(const SPropValue& value) const
{
    const ULONG id = PROP_ID(value.ulPropTag);
    if (id >= CNameMap::kFirst && m_folder->Data().names.NameOf(id) == nullptr)
    {
        return MAPI_E_UNEXPECTED_ID;
    }
    const double real = PROP_TYPE(value.ulPropTag) == PT_R4 ? static_cast<double>(value.Value.flt)
                                                            : value.Value.dbl;
    switch (PROP_TYPE(value.ulPropTag))
    {
    case PT_R4:
    case PT_DOUBLE:
    case PT_APPTIME:
        if (!std::isfinite(real))
        {
            return MAPI_E_BAD_VALUE;
        }
        break;
    case PT_SYSTIME:
        // The document holds times to the end of the year 9999.
        if (static_cast<std::uint64_t>(value.Value.li.QuadPart) >= 2650467744000000000ULL)
        {
            return MAPI_E_BAD_VALUE;
        }
        break;
    case PT_OBJECT:
        return MAPI_E_INVALID_TYPE;
    default:
        break;
    }
    return ProblemOf(id);
}

HRESULT CPropCore::CoreSetProps(ULONG count,
                                SPropValue* values,
                                SPropProblemArray** problems) noexcept
{
    ClearOut(problems);
    const Operation op = PropOp(kSetProps);
    return Run(op, [&]() -> HRESULT {
        const std::scoped_lock hold(m_folder->Lock());
        RequireOut(values);
        if (count == 0)
        {
            Refuse(op, MAPI_E_INVALID_PARAMETER, "no properties given");
        }
        if (!Writable())
        {
            throw CMapiError(MAPI_E_NO_ACCESS, L"the object is open for reading only");
        }
        PropertyChange change;
        std::vector<SPropProblem> found;
        for (ULONG i = 0; i < count; ++i)
        {
            const ULONG tag = values[i].ulPropTag;
            const ULONG type = PROP_TYPE(tag);
            if (type == PT_ERROR || type == PT_NULL)
            {
                continue; // the interface says to pass over them
            }
            const SCODE problem = CheckedProblem(values[i]);
            if (problem != S_OK)
            {
                found.push_back({i, tag, problem});
                continue;
            }
            change.set.push_back(ReadValue(values[i]));
        }
        if (!change.set.empty())
        {
            Change(change);
        }
        if (!found.empty() && problems != nullptr)
        {
            *problems = WriteProblems(found, op);
        }
        return S_OK;
    });
}

HRESULT CPropCore::CoreDeleteProps(SPropTagArray* tags, SPropProblemArray** problems) noexcept
{
    ClearOut(problems);
    const Operation op = PropOp(kDeleteProps);
    return Run(op, [&]() -> HRESULT {
        const std::scoped_lock hold(m_folder->Lock());
        RequireOut(tags);
        if (tags->cValues == 0)
        {
            Refuse(op, MAPI_E_INVALID_PARAMETER, "no properties given");
        }
        if (!Writable())
        {
            throw CMapiError(MAPI_E_NO_ACCESS, L"the object is open for reading only");
        }
        PropertyChange change;
        std::vector<SPropProblem> found;
        for (ULONG i = 0; i < tags->cValues; ++i)
        {
            const ULONG id = PROP_ID(tags->aulPropTag[i]);
            CValue scratch;
            SCODE problem = ProblemOf(id);
            if (problem == S_OK && FindValue(id, scratch) == nullptr)
            {
                problem = MAPI_E_NOT_FOUND;
            }
            if (problem != S_OK)
            {
                found.push_back({i, tags->aulPropTag[i], problem});
                continue;
            }
            change.removed.push_back(id);
        }
        if (!change.removed.empty())
        {
            Change(change);
        }
        if (!found.empty() && problems != nullptr)
        {
            *problems = WriteProblems(found, op);
        }
        return S_OK;
    });
}

HRESULT CPropCore::CopyTags(const std::vector<ULONG>& tags,
                            const IID* iid,
                            void* target,
                            ULONG flags,
                            SPropProblemArray** problems)
{
    constexpr ULONG kFlags = MAPI_MOVE | MAPI_NOREPLACE | MAPI_DECLINE_OK | MAPI_DIALOG;
    CheckFlags(PropOp(kCopyTo), flags, kFlags);
    RequireOut(target);
    RequireOut(iid);
    // The caller says that `target` has the interface `iid`; every one that is taken derives from
    // IMAPIProp.
    auto* prop = static_cast<IMAPIProp*>(target);
    const std::uint64_t limit = ~std::uint64_t{0};
    CBuffer buffer(tags.size() * sizeof(SPropValue), kNoOperation, false);
    auto* values = buffer.As<SPropValue>();
    ULONG filled = 0;
    for (const ULONG tag : tags)
    {
        CValue scratch;
        const CValue* value = FindValue(PROP_ID(tag), scratch);
        const bool good = value != nullptr && ProblemOf(PROP_ID(tag)) == S_OK &&
                          WriteValue(buffer, values[filled], value, tag, true, limit);
        if (!good)
        {
            continue;
        }
        SPropTagArray one{1, {tag}};
        ULONG count = 0;
        SPropValue* held = nullptr;
        const bool isThere =
            (flags & MAPI_NOREPLACE) != 0 && prop->GetProps(&one, 0, &count, &held) == S_OK;
        std::string problem;
        if (held != nullptr)
        {
            buffers::Free(held, problem);
        }
        filled += isThere ? 0U : 1U;
    }
    return filled != 0 ? prop->SetProps(filled, values, problems) : S_OK;
}

HRESULT CPropCore::CoreCopyTo(ULONG ciidExclude,
                              const IID* iidExclude,
                              SPropTagArray* exclude,
                              const IID* iid,
                              void* target,
                              ULONG flags,
                              SPropProblemArray** problems) noexcept
{
    ClearOut(problems);
    const Operation op = PropOp(kCopyTo);
    return Run(op, [&]() -> HRESULT {
        const std::scoped_lock hold(m_folder->Lock());
        if (ciidExclude != 0 && iidExclude == nullptr)
        {
            throw CMapiError(MAPI_E_INVALID_PARAMETER);
        }
        std::vector<ULONG> excluded;
        for (ULONG i = 0; exclude != nullptr && i < exclude->cValues; ++i)
        {
            excluded.push_back(PROP_ID(exclude->aulPropTag[i]));
        }
        std::vector<ULONG> tags = TagsOf(nullptr, true);
        tags.erase(std::remove_if(tags.begin(),
                                  tags.end(),
                                  [&](ULONG tag) {
                                      return std::find(excluded.begin(),
                                                       excluded.end(),
                                                       PROP_ID(tag)) != excluded.end();
                                  }),
                   tags.end());
        const HRESULT hr = CopyTags(tags, iid, target, flags, problems);
        if (SUCCEEDED(hr))
        {
            CopyParts(static_cast<IUnknown*>(target), excluded);
        }
        return hr;
    });
}

HRESULT CPropCore::CoreCopyProps(SPropTagArray* include,
                                 const IID* iid,
                                 void* target,
                                 ULONG flags,
                                 SPropProblemArray** problems) noexcept
{
    ClearOut(problems);
    const Operation op = PropOp(kCopyProps);
    return Run(op, [&]() -> HRESULT {
        const std::scoped_lock hold(m_folder->Lock());
        RequireOut(include);
        const std::vector<ULONG> tags(include->aulPropTag, include->aulPropTag + include->cValues);
        return CopyTags(tags, iid, target, flags, problems);
    });
}

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
                throw CMapiError(MAPI_E_INVALID_PARAMETER);
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

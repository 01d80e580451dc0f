#include <algorithm>
#include <cmath>

#include "PropObject.h"

namespace mapistore
{
namespace
{

SPropProblemArray* WriteProblems(const std::vector<SPropProblem>& problems, Operation operation)
{
    CBuffer buffer(CbNewSPropProblemArray(problems.size()), operation);
    auto* out = buffer.As<SPropProblemArray>();
    out->cProblem = static_cast<ULONG>(problems.size());
    std::copy(problems.begin(), problems.end(), out->aProblem);
    return static_cast<SPropProblemArray*>(buffer.Detach());
}

} // namespace

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

HRESULT CPropCore::CopyTags(Operation operation,
                            const std::vector<ULONG>& tags,
                            const IID* iid,
                            void* target,
                            ULONG flags,
                            SPropProblemArray** problems)
{
    constexpr ULONG kFlags = MAPI_MOVE | MAPI_NOREPLACE | MAPI_DECLINE_OK | MAPI_DIALOG;
    CheckFlags(operation, flags, kFlags);
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
            throw CMisuse(MAPI_E_INVALID_PARAMETER, L"a null pointer");
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
        const HRESULT hr = CopyTags(op, tags, iid, target, flags, problems);
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
        return CopyTags(op, tags, iid, target, flags, problems);
    });
}

} // namespace mapistore

#include "PropObject.h"

#include <set>

#include "MapiTags64.h"
#include "PropArrays.h"
#include "Stream.h"

namespace mapistore
{
namespace
{

constexpr ULONG kKeepFlags =
    KEEP_OPEN_READONLY | KEEP_OPEN_READWRITE | FORCE_SAVE | MAPI_DEFERRED_ERRORS;

Subjects SubjectsOf(const SPropTagArray* tags)
{
    Subjects subjects;
    for (ULONG i = 0; tags != nullptr && i < tags->cValues; ++i)
    {
        subjects.push_back(TagText(tags->aulPropTag[i]));
    }
    return subjects;
}

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

} // namespace mapistore

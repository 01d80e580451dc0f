#include "Stream.h"

#include <algorithm>
#include <cstring>

#include "MapiTags64.h"
#include "Text.h"

namespace mapistore
{
namespace
{

consteval Operation Op(std::string_view method)
{
    return OperationOf("IStream", method);
}

constexpr std::uint64_t kMaxSize = 0x7FFFFFFF;

std::string WideBytes(const std::wstring& text)
{
    return std::string(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(wchar_t));
}

} // namespace

std::string StreamBytes(const CValue& value, ULONG type)
{
    const bool isText = value.Type() == PT_UNICODE;
    const bool isHtml = value.Id() == kIdHtml;
    if (!isText && (value.Type() != PT_BINARY || (type != PT_BINARY && !isHtml)))
    {
        throw CMapiError(MAPI_E_NOT_FOUND, L"the property has another type");
    }
    if (type == PT_UNICODE)
    {
        return WideBytes(isText ? value.AsText() : FromUtf8(value.Bytes()));
    }
    if (type == PT_STRING8)
    {
        return isText ? ToAnsi(value.AsText()) : value.Bytes();
    }
    if (isText)
    {
        if (!isHtml)
        {
            throw CMapiError(MAPI_E_NOT_FOUND, L"the property has another type");
        }
        return ToUtf8(value.AsText());
    }
    return value.Bytes();
}

CValue StreamValue(ULONG tag, const std::string& bytes)
{
    switch (PROP_TYPE(tag))
    {
    case PT_UNICODE: {
        std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
        return CValue::Text(tag, text);
    }
    case PT_STRING8:
        return CValue::Text(tag, FromAnsi(bytes));
    default:
        return CValue::Binary(tag, bytes);
    }
}

CStream::CStream(std::string content, ULONG tag, Target target, Operation madeBy, Lifeline life)
    : CObject("IStream", madeBy, std::move(life)), m_content(std::move(content)), m_tag(tag),
      m_target(std::move(target))
{
    if (m_target)
    {
        m_committed = m_content;
    }
}

bool CStream::Supports(REFIID iid) const
{
    return iid == IID_IUnknown || iid == IID_ISequentialStream || iid == IID_IStream;
}

void CStream::Dispose() noexcept
{
    try
    {
        Flush();
    }
    catch (...)
    {
        OutputDebugStringA("mapistore: a stream's content is lost for want of memory\n");
    }
    m_target = nullptr;
    std::string().swap(m_content);
    std::string().swap(m_committed);
}

void CStream::Flush()
{
    if (m_dirty && m_target)
    {
        m_target(StreamValue(m_tag, m_content));
        m_committed = m_content;
        m_dirty = false;
    }
}

HRESULT CStream::Read(void* buffer, ULONG cb, ULONG* cbRead)
{
    ClearOut(cbRead);
    return Run(Op("Read"), [&]() -> HRESULT {
        if (buffer == nullptr)
        {
            return STG_E_INVALIDPOINTER;
        }
        if (Outcome().bytes >= 0)
        {
            cb = std::min(cb, static_cast<ULONG>(Outcome().bytes));
        }
        const std::uint64_t left =
            m_position < m_content.size() ? m_content.size() - m_position : 0;
        const auto take = static_cast<ULONG>(std::min<std::uint64_t>(left, cb));
        if (take != 0)
        {
            std::memcpy(buffer, m_content.data() + m_position, take);
        }
        m_position += take;
        if (cbRead != nullptr)
        {
            *cbRead = take;
        }
        return S_OK;
    });
}

HRESULT CStream::Write(const void* buffer, ULONG cb, ULONG* cbWritten)
{
    ClearOut(cbWritten);
    return Run(Op("Write"), [&]() -> HRESULT {
        if (!m_target)
        {
            return STG_E_ACCESSDENIED;
        }
        if (buffer == nullptr)
        {
            return STG_E_INVALIDPOINTER;
        }
        if (m_position + cb > kMaxSize)
        {
            return STG_E_MEDIUMFULL;
        }
        if (m_content.size() < m_position + cb)
        {
            m_content.resize(m_position + cb);
        }
        std::memcpy(m_content.data() + m_position, buffer, cb);
        m_position += cb;
        m_dirty = true;
        if (cbWritten != nullptr)
        {
            *cbWritten = cb;
        }
        return S_OK;
    });
}

HRESULT CStream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position)
{
    return Run(Op("Seek"), [&]() -> HRESULT {
        std::int64_t base = 0;
        if (origin == STREAM_SEEK_CUR)
        {
            base = static_cast<std::int64_t>(m_position);
        }
        else if (origin == STREAM_SEEK_END)
        {
            base = static_cast<std::int64_t>(m_content.size());
        }
        else if (origin != STREAM_SEEK_SET)
        {
            return STG_E_INVALIDFUNCTION;
        }
        // Both ends: `base` is never negative, so only a move forward can leave the numbers.
        if (move.QuadPart > INT64_MAX - base || base + move.QuadPart < 0)
        {
            return STG_E_INVALIDFUNCTION;
        }
        const std::int64_t to = base + move.QuadPart;
        m_position = static_cast<std::uint64_t>(to);
        if (position != nullptr)
        {
            position->QuadPart = m_position;
        }
        return S_OK;
    });
}

HRESULT CStream::SetSize(ULARGE_INTEGER size)
{
    return Run(Op("SetSize"), [&]() -> HRESULT {
        if (!m_target)
        {
            return STG_E_ACCESSDENIED;
        }
        if (size.QuadPart > kMaxSize)
        {
            return STG_E_MEDIUMFULL;
        }
        m_content.resize(size.QuadPart);
        m_dirty = true;
        return S_OK;
    });
}

HRESULT CStream::CopyTo(IStream* target,
                        ULARGE_INTEGER cb,
                        ULARGE_INTEGER* cbRead,
                        ULARGE_INTEGER* cbWritten)
{
    return Run(Op("CopyTo"), [&]() -> HRESULT {
        if (target == nullptr)
        {
            return STG_E_INVALIDPOINTER;
        }
        // A copy: the target may be this stream.
        const std::string piece =
            m_content.substr(std::min<std::uint64_t>(m_position, m_content.size()), cb.QuadPart);
        const auto take = static_cast<ULONG>(piece.size());
        m_position += take;
        ULONG written = 0;
        const HRESULT hr = target->Write(piece.data(), take, &written);
        if (cbRead != nullptr)
        {
            cbRead->QuadPart = take;
        }
        if (cbWritten != nullptr)
        {
            cbWritten->QuadPart = written;
        }
        return hr;
    });
}

HRESULT CStream::Commit(DWORD)
{
    return Run(Op("Commit"), [&]() -> HRESULT {
        Flush();
        return S_OK;
    });
}

HRESULT CStream::Revert()
{
    return Run(Op("Revert"), [&]() -> HRESULT {
        if (m_target)
        {
            m_content = m_committed;
            m_dirty = false;
        }
        return S_OK;
    });
}

HRESULT CStream::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD)
{
    return Run(Op("LockRegion"), [&]() -> HRESULT { return STG_E_INVALIDFUNCTION; });
}

HRESULT CStream::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD)
{
    return Run(Op("UnlockRegion"), [&]() -> HRESULT { return STG_E_INVALIDFUNCTION; });
}

HRESULT CStream::Stat(STATSTG* stat, DWORD flags)
{
    return Run(Op("Stat"), [&]() -> HRESULT {
        if (stat == nullptr)
        {
            return STG_E_INVALIDPOINTER;
        }
        if (flags > STATFLAG_NONAME)
        {
            return STG_E_INVALIDFLAG;
        }
        *stat = STATSTG();
        stat->type = STGTY_STREAM;
        stat->cbSize.QuadPart = m_content.size();
        stat->grfMode = m_target ? STGM_READWRITE : STGM_READ;
        return S_OK;
    });
}

HRESULT CStream::Clone(IStream** out)
{
    ClearOut(out);
    return Run(Op("Clone"), [&]() -> HRESULT {
        if (out == nullptr)
        {
            return STG_E_INVALIDPOINTER;
        }
        // Two writers of one property would overwrite each other; a clone only reads.
        auto* clone = new CStream(m_content, m_tag, nullptr, Op("Clone"), Life());
        clone->m_position = m_position;
        *out = clone;
        return S_OK;
    });
}

} // namespace mapistore

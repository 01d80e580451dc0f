#include <algorithm>
#include <cstring>

#include "FakeObjects.h"

ULONG CFakeStream::AddRef()
{
    return static_cast<ULONG>(++references.held);
}
ULONG CFakeStream::Release()
{
    return static_cast<ULONG>(--references.held);
}
HRESULT CFakeStream::Read(void* buffer, ULONG cb, ULONG* cbRead)
{
    reads.push_back(cb);
    if (static_cast<int>(reads.size()) - 1 == failingRead)
    {
        return STG_E_READFAULT;
    }
    const std::size_t count = std::min<std::size_t>(cb, bytes.size() - m_at);
    std::memcpy(buffer, bytes.data() + m_at, count);
    m_at += count;
    *cbRead = static_cast<ULONG>(count);
    return S_OK;
}
HRESULT CFakeStream::Stat(STATSTG* facts, DWORD)
{
    std::memset(facts, 0, sizeof(*facts));
    facts->cbSize.QuadPart = statedSize != 0 ? statedSize : bytes.size();
    return stat;
}

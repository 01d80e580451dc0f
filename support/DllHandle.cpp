#include "DllHandle.h"

#include <windows.h>

#include <shlwapi.h>

#include "LastErrorGuard.h"

CDLLHandle::~CDLLHandle()
{
    if (m_hModule != nullptr && m_bOwner)
    {
        const CLastErrorGuard keep;
        FreeLibrary(m_hModule);
    }
}

bool CDLLHandle::LoadSystemLibrary(const WCHAR* fileName) noexcept
{
    if (m_hModule != nullptr)
    {
        return true;
    }
    WCHAR path[MAX_PATH] = {};
    const UINT cch = GetSystemDirectoryW(path, MAX_PATH);
    if (cch == 0 || cch >= MAX_PATH || !PathAppendW(path, fileName))
    {
        return false;
    }
    m_hModule = LoadLibraryExW(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    m_bOwner = m_hModule != nullptr;
    return m_bOwner;
}

// COutlookCtrl: finding, loading and starting the mail client's MAPI library.

#include <array>

#include "FileVersion.h"
#include "MapiDataStore.h"
#include "MAPIPathIterator.h"
#include "NarrowText.h"
#include "OutlookCtrl.h"
#include "ProcAddress.h"
#include "RegisterUtil.h"
#include "Trace.h"

WStringView FileNameOfPath(WStringView path) noexcept
{
    const std::size_t separator = path.find_last_of(L"/\\:");
    return separator == WStringView::npos ? path : path.substr(separator + 1);
}

bool COutlookCtrl::SetStub()
{
    std::array<WCHAR, MAX_PATH> path{};
    const DWORD count = GetModuleFileNameW(nullptr, path.data(), MAX_PATH);
    return WriteStub(FileNameOfPath(WStringView(path.data(), count)));
}

bool COutlookCtrl::WriteStub(WStringView fileName) const
{
    if (fileName.empty())
    {
        SEND_TRACE(0, "COutlookCtrl::SetStub", "Write stub failed");
        return false;
    }
    // The terminator is not counted: that is how the list has always been written.
    (void)CRegisterUtil::WriteReg(HKEY_LOCAL_MACHINE,
                                  m_strStubKey.c_str(),
                                  WString(fileName).c_str(),
                                  REG_SZ,
                                  m_strMailClient.c_str(),
                                  static_cast<DWORD>(m_strMailClient.size() * sizeof(WCHAR)));
    return true;
}

bool COutlookCtrl::LoadLib()
{
    constexpr const char* kFunction = "COutlookCtrl::LoadLib";
    bool isLoaded = false;
    if (!m_hMAPIDll)
    {
        MAPIPathIterator paths;
        while (!isLoaded)
        {
            WString path;
            paths.GetNextMAPIPath(path);
            if (path.empty())
            {
                SEND_TRACE(3, kFunction, "CMapiCtrl::LoadLib - Fail to get MAPI dll path!!");
                break;
            }
            isLoaded = LoadCandidate(path);
        }
    }
    if (!isLoaded)
    {
        SEND_TRACE(0, kFunction, "CMapiCtrl::LoadLib, MAPI dll load failed");
    }
    return isLoaded;
}

bool COutlookCtrl::LoadCandidate(const WString& path)
{
    constexpr const char* kFunction = "COutlookCtrl::LoadLib";
    // Long form and version are for the trace alone; the library is loaded by the path as it came.
    std::array<WCHAR, MAX_PATH> longPath{};
    const DWORD count = GetLongPathNameW(path.c_str(), longPath.data(), MAX_PATH);
    if (count >= MAX_PATH)
    {
        longPath[0] = 0;
    }
    WString version;
    (void)GetFileVersionText(path.c_str(), version);
    SEND_TRACE(3,
               kFunction,
               "CMapiCtrl::LoadLib -try to load MAPI Dll path is [%s], full path [%s], file "
               "version [%s]",
               NarrowText(path).c_str(),
               NarrowText(longPath.data()).c_str(),
               NarrowText(version).c_str());
    m_hMAPIDll = CLoadedModule(LoadLibraryW(path.c_str()));
    if (!m_hMAPIDll)
    {
        const DWORD error = GetLastError();
        SEND_TRACE(3,
                   kFunction,
                   "CMapiCtrl::LoadLib - load error=0x%x, hRes=0x%8x",
                   static_cast<unsigned>(error),
                   static_cast<unsigned>(HRESULT_FROM_WIN32(error)));
        return false;
    }
    SEND_TRACE(3, kFunction, "CMapiCtrl::LoadLib - MAPI dll load success");
    MapiDataStore().SetLibraryPath(path);
    return true;
}

bool COutlookCtrl::MAPIXInit()
{
    constexpr const char* kFunction = "COutlookCtrl::MAPIXInit";
    if (!m_hMAPIDll)
    {
        SEND_TRACE(0, kFunction, "CMapiCtrl::MAPIXInit - hMAPIDll is NULL");
        return false;
    }
    // A test for completeness alone: the calls go through the system's MAPI32.dll.
    for (const char* const name : {"MAPIInitialize",
                                   "MAPILogonEx",
                                   "MAPIAdminProfiles",
                                   "MAPIUninitialize",
                                   "MAPIAllocateBuffer",
                                   "MAPIFreeBuffer"})
    {
        if (ProcAddress<void (*)()>(m_hMAPIDll.Get(), name) == nullptr)
        {
            SEND_TRACE(
                0, kFunction, "CMapiCtrl::MAPIXInit - simple MAPI functions are unavailable");
            return false;
        }
    }
    if (bMAPIXInited != 0 || bMAPIX == 0)
    {
        SEND_TRACE(0,
                   kFunction,
                   "CMapiCtrl::MAPIXInit - bMAPIInited[%d], bMAPIX[%d]",
                   static_cast<int>(bMAPIXInited),
                   static_cast<int>(bMAPIX));
        return false;
    }
    SEND_TRACE(2, kFunction, "COutlookCtrl::MAPIXInit Before call MAPIInitialize");
    // Notifications come on a thread of the library's own, not through this thread's messages.
    MAPIINIT_0 start{MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
    const HRESULT status = MAPIInitialize(&start);
    SEND_TRACE(2, kFunction, "COutlookCtrl::MAPIXInit After call MAPIInitialize");
    if (status != S_OK)
    {
        SEND_TRACE(2, kFunction, "CMapiCtrl::MAPIXInit - MAPIInitialize failed");
        return false;
    }
    SEND_TRACE(2, kFunction, "CMapiCtrl::MAPIXInit - MAPIInitialize successful");
    bMAPIXInited = 1;
    return true;
}

void COutlookCtrl::MAPIUninit()
{
    constexpr const char* kFunction = "COutlookCtrl::MAPIUninit";
    if (bMAPIXInited == 0)
    {
        SEND_TRACE(3,
                   kFunction,
                   "CMapiCtrl::MAPIUninit - bMAPIXInited[%d]",
                   static_cast<int>(bMAPIXInited));
        return;
    }
    MAPIUninitialize();
    bMAPIXInited = 0;
    SEND_TRACE(3, kFunction, "CMapiCtrl::MAPIUninit - MAPIUninitialize");
}

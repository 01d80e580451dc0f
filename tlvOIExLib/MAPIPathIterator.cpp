#include "MAPIPathIterator.h"

#include <array>
#include <string>

#include "LoadedModule.h"
#include "NarrowText.h"
#include "ProcAddress.h"
#include "RegKey.h"
#include "Trace.h"

namespace
{

enum Source : ULONG
{
    SourceInstaller = 0,
    SourceDllPathEx = 1,
    SourceDllPath = 2,
    SourceSystemDirectory = 3,
    SourceNone = 4,
};

constexpr const WCHAR* kMailClientKey = L"Software\\Clients\\Mail\\Microsoft Outlook";
constexpr DWORD kPathBytes = 520;
constexpr DWORD kExpandedUnits = 520;
constexpr DWORD kComponentBytes = 260;

unsigned Code(DWORD error) noexcept
{
    return static_cast<unsigned>(error);
}

unsigned ResultOf(DWORD error) noexcept
{
    return static_cast<unsigned>(HRESULT_FROM_WIN32(error));
}

WString Expanded(const WCHAR* text)
{
    std::array<WCHAR, kExpandedUnits + 1> expanded{};
    const DWORD count = ExpandEnvironmentStringsW(text, expanded.data(), kExpandedUnits);
    if (count == 0 || count > kExpandedUnits)
    {
        const DWORD error = GetLastError();
        SEND_TRACE(2,
                   "MAPIPathIterator::RegQueryWszExpand",
                   "RegQueryWszExpand: ExpandEnvironmentStrings error,cch=%d,Err=0x%x, ret=0x%8x",
                   static_cast<int>(count),
                   Code(error),
                   ResultOf(error));
        return {};
    }
    return expanded.data();
}

WString RegQueryWszExpand(HKEY key, const WCHAR* name)
{
    // One character more than is read: a text that fills the buffer comes without its terminator.
    std::array<WCHAR, kPathBytes / sizeof(WCHAR) + 1> text{};
    DWORD type = REG_NONE;
    DWORD cbText = kPathBytes;
    const LSTATUS error =
        RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &cbText);
    if (error != ERROR_SUCCESS)
    {
        SEND_TRACE(2,
                   "MAPIPathIterator::RegQueryWszExpand",
                   "RegQueryWszExpand: Err = 0x%08X",
                   static_cast<unsigned>(error));
        return {};
    }
    switch (type)
    {
    case REG_SZ:
        return text.data();
    case REG_EXPAND_SZ:
        return Expanded(text.data());
    default:
        return {};
    }
}

/// Narrow, because the component look-up takes narrow text.
bool ReadNarrowValue(HKEY key,
                     const char* name,
                     std::array<char, kComponentBytes + 1>& text) noexcept
{
    text.fill(0);
    DWORD cbText = kComponentBytes;
    const LSTATUS error = RegQueryValueExA(
        key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(text.data()), &cbText);
    if (error != ERROR_SUCCESS)
    {
        SEND_TRACE(3,
                   "MAPIPathIterator::GetMailClientFromMSIData",
                   "GetMailClientFromMSIData:fail to query Outlook Mapi Client key value[%s], "
                   "error = 0x%x",
                   name,
                   static_cast<unsigned>(error));
        return false;
    }
    return true;
}

/// Asks the system's MAPI library where the component lies, without installing anything.
bool GetComponentPath(const char* component, const char* qualifier, char* path, DWORD cbPath)
{
    constexpr const char* kFunction = "MAPIPathIterator::GetComponentPath";
    using ComponentPathFn = BOOL(STDAPICALLTYPE*)(const char*, const char*, char*, DWORD, BOOL);
    SEND_TRACE(2,
               kFunction,
               "GetComponentPath: szComponent[%s], szQualifier[%s], cchBufferSize[0x%08X]",
               component,
               qualifier,
               Code(cbPath));
    bool isFound = false;
    CLoadedModule library(LoadLibraryW(L"mapi32.dll"));
    if (!library)
    {
        library = CLoadedModule(LoadLibraryW(L"mapistub.dll"));
    }
    if (library)
    {
        if (const auto find = ProcAddress<ComponentPathFn>(library.Get(), "FGetComponentPath"))
        {
            // The function answers in the low byte alone.
            isFound = (find(component, qualifier, path, cbPath, FALSE) & 0xFF) != 0;
        }
    }
    SEND_TRACE(2, kFunction, "GetComponentPath: bReturn[%d]", isFound ? 1 : 0);
    return isFound;
}

} // namespace

void MAPIPathIterator::GetNextMAPIPath(WString& path)
{
    constexpr const char* kFunction = "MAPIPathIterator::GetNextMAPIPath";
    SEND_TRACE(2, kFunction, "GetNextMAPIPath:CurrentSource[%d]", static_cast<int>(CurrentSource));
    m_path.clear();
    while (CurrentSource != SourceNone && m_path.empty())
    {
        switch (CurrentSource)
        {
        case SourceInstaller:
            GetRegisteredMapiClient(false, false);
            break;
        case SourceDllPathEx:
            GetRegisteredMapiClient(true, true);
            break;
        case SourceDllPath:
            GetRegisteredMapiClient(true, false);
            break;
        default:
            GetMAPISystemDir();
            break;
        }
        ++CurrentSource;
    }
    SEND_TRACE(3, kFunction, "GetNextMAPIPath:full MAPI path[%s]", NarrowText(m_path).c_str());
    path = m_path;
}

void MAPIPathIterator::GetRegisteredMapiClient(bool bDLL, bool bDLLEx)
{
    constexpr const char* kFunction = "MAPIPathIterator::GetRegisteredMapiClient";
    SEND_TRACE(
        3, kFunction, "GetRegisteredMapiClient:bDLL[%d],bDLLEx[%d]", bDLL ? 1 : 0, bDLLEx ? 1 : 0);
    CRegKey key;
    const LSTATUS error = RegOpenKeyExW(HKEY_LOCAL_MACHINE, kMailClientKey, 0, KEY_READ, key.Put());
    if (error != ERROR_SUCCESS)
    {
        SEND_TRACE(3,
                   kFunction,
                   "GetRegisteredMapiClient:fail to open Outlook Mapi Client key, error = 0x%x",
                   static_cast<unsigned>(error));
        return;
    }
    if (bDLL)
    {
        GetMailClientFromDllPath(key.Get(), bDLLEx);
    }
    else
    {
        GetMailClientFromMSIData(key.Get());
    }
}

void MAPIPathIterator::GetMailClientFromDllPath(HKEY key, bool bDLLEx)
{
    constexpr const char* kFunction = "MAPIPathIterator::GetMailClientFromDllPath";
    SEND_TRACE(2,
               kFunction,
               "GetMailClientFromDllPath: hkeyMapiClient[%p], bDLLEx[%d]",
               static_cast<void*>(key),
               bDLLEx ? 1 : 0);
    m_path = RegQueryWszExpand(key, bDLLEx ? L"DllPathEx" : L"DllPath");
    SEND_TRACE(3, kFunction, "GetMailClientFromDllPath: szPath = %s", NarrowText(m_path).c_str());
}

void MAPIPathIterator::GetMailClientFromMSIData(HKEY key)
{
    constexpr const char* kFunction = "MAPIPathIterator::GetMailClientFromMSIData";
    // One byte more than is read, so that the texts always end.
    std::array<char, kComponentBytes + 1> component{};
    std::array<char, kComponentBytes + 1> qualifier{};
    if (!ReadNarrowValue(key, "MSIComponentID", component) ||
        !ReadNarrowValue(key, "MSIApplicationLCID", qualifier))
    {
        return;
    }
    std::array<char, kComponentBytes + 1> path{};
    if (!GetComponentPath(component.data(), qualifier.data(), path.data(), kComponentBytes))
    {
        SEND_TRACE(2, kFunction, "GetMailClientFromMSIData: GetComponentPath failed");
        return;
    }
    m_path = WidenText(path.data());
    SEND_TRACE(2, kFunction, "GetMailClientFromMSIData: szPath = %s", path.data());
}

void MAPIPathIterator::GetMAPISystemDir()
{
    constexpr const char* kFunction = "MAPIPathIterator::GetMAPISystemDir";
    SEND_TRACE(3, kFunction, "GetMAPISystemDir");
    std::array<WCHAR, MAX_PATH> directory{};
    const UINT count = GetSystemDirectoryW(directory.data(), MAX_PATH);
    if (count == 0 || count >= MAX_PATH)
    {
        const DWORD error = GetLastError();
        SEND_TRACE(2,
                   kFunction,
                   "GetPathFromSystemDir: Fail to Get system directory ,dwErr=0x%x, hRes=0x%8x",
                   Code(error),
                   ResultOf(error));
        return;
    }
    m_path = WString(directory.data(), count) + L"\\mapi32.dll";
}

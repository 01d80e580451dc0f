#include "TraceLoader.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include "LastErrorGuard.h"

namespace
{

constexpr std::wstring_view kLibraryName = L"tlvtraceX64.dll";
/// Names this component to the trace library.
constexpr const char* kTag = "OI";
constexpr std::size_t kReportBytes = 1024;

/// Any function of this module: its address tells which file the code was loaded from.
void AnchorFunction() noexcept {}

template <typename Function>
Function EntryPoint(HMODULE library, const char* name) noexcept
{
    // By way of a type that converts to every function pointer.
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(library, name)));
}

const char* BaseName(const char* path) noexcept
{
    const char* const slash = std::strrchr(path, '\\');
    return slash != nullptr ? slash + 1 : path;
}

/// The file name of the module that holds this code.
void ReadModuleName(char (&name)[MAX_PATH]) noexcept
{
    MEMORY_BASIC_INFORMATION region{};
    char path[MAX_PATH] = {};
    if (VirtualQuery(reinterpret_cast<const void*>(&AnchorFunction), &region, sizeof region) != 0 &&
        GetModuleFileNameA(static_cast<HMODULE>(region.AllocationBase), path, MAX_PATH - 1) != 0)
    {
        std::snprintf(name, sizeof name, "%s", BaseName(path));
    }
}

/// The path that the library has if it stands beside the program. Wide, since the program may stand in a
/// folder that the code page has no letters for. Empty when it would not fit.
void ReadLibraryPath(WCHAR (&path)[MAX_PATH]) noexcept
{
    path[0] = L'\0';
    WCHAR program[MAX_PATH] = {};
    const DWORD cchProgram = GetModuleFileNameW(nullptr, program, MAX_PATH);
    if (cchProgram == 0 || cchProgram == MAX_PATH) // unknown, or cut at whatever folder
    {
        return;
    }
    const std::wstring_view whole(program, cchProgram);
    const std::size_t cchFolder = whole.rfind(L'\\') + 1; // 0 without a folder
    if (cchFolder + kLibraryName.size() < MAX_PATH)
    {
        whole.copy(path, cchFolder);
        kLibraryName.copy(path + cchFolder, kLibraryName.size());
        path[cchFolder + kLibraryName.size()] = L'\0';
    }
}

template <typename Pointer>
unsigned LowHalf(Pointer pointer) noexcept
{
    return static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(pointer));
}

} // namespace

void CTraceLoader::Load() noexcept
{
    const CLastErrorGuard keep;
    AcquireSRWLockExclusive(&m_tableLock);
    m_hasLooked = true;
    if (m_library == nullptr)
    {
        ReadModuleName(m_moduleName);
        ReadLibraryPath(m_libraryPath);
        m_library = LoadLibraryExW(m_libraryPath, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        if (m_library != nullptr)
        {
            m_raw = EntryPoint<RawFunction>(m_library, "TLVTRACERAWA");
            m_resident = EntryPoint<ResidentFunction>(m_library, "TLVTRACERAWA_RESIDENT");
            m_dllResident =
                EntryPoint<DllResidentFunction>(m_library, "TLVTRACERAWADLLNAME_RESIDENT");
            m_flush = EntryPoint<FlushFunction>(m_library, "TLVTRACEFLUSH");
        }
    }
    Report("InitTLVTRACER");
    ReleaseSRWLockExclusive(&m_tableLock);
}

void CTraceLoader::LoadOnce() noexcept
{
    if (!m_hasLooked.load())
    {
        Load();
    }
}

void CTraceLoader::Unload() noexcept
{
    const CLastErrorGuard keep;
    // A thread that is inside the library now may stay there for long: then it stays loaded.
    if (TryAcquireSRWLockExclusive(&m_tableLock) == FALSE)
    {
        return;
    }
    Report("UninitTLVTRACER");
    const HMODULE library = m_library;
    m_library = nullptr;
    m_raw = nullptr;
    m_resident = nullptr;
    m_dllResident = nullptr;
    m_flush = nullptr;
    ReleaseSRWLockExclusive(&m_tableLock);
    if (library != nullptr)
    {
        FreeLibrary(library);
    }
}

void CTraceLoader::Send(int code, const char* text) noexcept
{
    AcquireSRWLockShared(&m_tableLock);
    if (m_dllResident != nullptr)
    {
        m_dllResident(code, m_moduleName, kTag, 0, text);
    }
    else if (m_resident != nullptr)
    {
        m_resident(code, kTag, 0, text);
    }
    else if (m_raw != nullptr)
    {
        m_raw(code, m_moduleName, 0, text);
    }
    else
    {
        OutputDebugStringA("Trace lib invalid\n");
        OutputDebugStringA(text);
    }
    ReleaseSRWLockShared(&m_tableLock);
}

void CTraceLoader::Flush(unsigned timeoutMs) noexcept
{
    AcquireSRWLockShared(&m_tableLock);
    if (m_flush != nullptr)
    {
        m_flush(timeoutMs);
    }
    ReleaseSRWLockShared(&m_tableLock);
}

void CTraceLoader::Report(const char* which) const noexcept
{
    char path[2 * MAX_PATH] = {};
    WideCharToMultiByte(
        CP_ACP, 0, m_libraryPath, -1, path, static_cast<int>(sizeof path), nullptr, nullptr);
    char text[kReportBytes];
    std::snprintf(text,
                  sizeof text,
                  "TKTvf70643 %s: g_pfnTLVTRACEA=0x%08X, g_pfnTlvTraceResident=0x%08X, "
                  "g_pfnTlvTraceDllResident=0x%08X,g_hTlvTracer=0x%08X, szInstancePath=%s\r\n",
                  which,
                  LowHalf(m_raw),
                  LowHalf(m_resident),
                  LowHalf(m_dllResident),
                  LowHalf(m_library),
                  path);
    OutputDebugStringA(text);
}

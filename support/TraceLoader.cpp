#include "TraceLoader.h"

#include <cstdio>
#include <cstring>

#include "LastErrorGuard.h"

namespace
{

constexpr const char* kLibraryName = "tlvtraceX64.dll";
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

/// The path that the library has if it stands beside the program. Empty when it would not fit.
void ReadLibraryPath(char (&path)[MAX_PATH]) noexcept
{
    char program[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameA(nullptr, program, MAX_PATH - 1);
    const std::size_t cbDirectory = static_cast<std::size_t>(BaseName(program) - program);
    path[0] = '\0';
    if (length != 0 && cbDirectory + std::strlen(kLibraryName) < sizeof path)
    {
        std::memcpy(path, program, cbDirectory);
        std::memcpy(path + cbDirectory, kLibraryName, std::strlen(kLibraryName) + 1);
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
        m_library = LoadLibraryExA(m_libraryPath, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
        if (m_library != nullptr)
        {
            m_raw = EntryPoint<RawFunction>(m_library, "TLVTRACERAWA");
            m_resident = EntryPoint<ResidentFunction>(m_library, "TLVTRACERAWA_RESIDENT");
            m_dllResident =
                EntryPoint<DllResidentFunction>(m_library, "TLVTRACERAWADLLNAME_RESIDENT");
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

void CTraceLoader::Report(const char* which) const noexcept
{
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
                  m_libraryPath);
    OutputDebugStringA(text);
}

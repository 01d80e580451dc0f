// A process that uses a MAPI library which it loads by name, as an application does, and writes down
// what the library answers: the other side of the tests of the DLL.
//
// usage: mapistore_caller LIBRARY OUTPUT
//   LIBRARY: mapi32.dll, or the path of a library to load directly.
#include <cstdio>
#include <string>

#include "Mapi64.h"
#include "MapiTags64.h"

namespace
{

std::FILE* g_out = nullptr;

void Say(const char* what, HRESULT hr)
{
    std::fprintf(g_out, "%s 0x%08lX\n", what, static_cast<unsigned long>(hr));
}

/// The functions of the library, by their names or by those with the decoration of 32-bit days.
class CLibrary
{
public:
    explicit CLibrary(const wchar_t* path) : m_module(LoadLibraryW(path)) {}

    bool Loaded() const { return m_module != nullptr; }
    template <class Function>
    Function* Find(const char* name, int cbArguments)
    {
        const std::string decorated = std::string(name) + "@" + std::to_string(cbArguments);
        FARPROC found = GetProcAddress(m_module, name);
        found = found != nullptr ? found : GetProcAddress(m_module, decorated.c_str());
        if (found == nullptr)
        {
            std::fprintf(g_out, "%s is missing\n", name);
            std::fclose(g_out);
            ExitProcess(3);
        }
        return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(found));
    }

private:
    HMODULE m_module;
};

#define FIND(library, name, cbArguments) (library).Find<decltype(::name)>(#name, cbArguments)

class CSink final : public IMAPIAdviseSink
{
public:
    HRESULT WINAPI QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG WINAPI AddRef() override { return ++m_refs; }
    ULONG WINAPI Release() override { return --m_refs; }
    ULONG WINAPI OnNotify(ULONG, NOTIFICATION*) override { return 0; }

private:
    ULONG m_refs = 1;
};

void UseBuffers(CLibrary& library)
{
    const auto free = FIND(library, MAPIFreeBuffer, 4);
    void* head = nullptr;
    void* more = nullptr;
    Say("MAPIAllocateBuffer", FIND(library, MAPIAllocateBuffer, 8)(64, &head));
    Say("MAPIAllocateMore", FIND(library, MAPIAllocateMore, 12)(64, head, &more));
    Say("MAPIFreeBuffer", static_cast<HRESULT>(free(head)));
    Say("MAPIFreeBuffer again", static_cast<HRESULT>(free(head)));
}

void UseUtilities(CLibrary& library, const std::wstring& file)
{
    Say("ScInitMapiUtil", FIND(library, ScInitMapiUtil, 4)(0));
    FIND(library, DeinitMapiUtil, 0)();
    CSink sink;
    IMAPIAdviseSink* wrapped = nullptr;
    Say("HrThisThreadAdviseSink", FIND(library, HrThisThreadAdviseSink, 8)(&sink, &wrapped));
    std::fprintf(g_out, "the sink itself: %d\n", wrapped == &sink ? 1 : 0);
    wrapped->Release();
    IMalloc* allocator = FIND(library, MAPIGetDefaultMalloc, 0)();
    std::fprintf(g_out, "allocator: %d\n", allocator != nullptr ? 1 : 0);
    allocator->Release();
    IStream* stream = nullptr;
    Say("WrapCompressedRTFStream", FIND(library, WrapCompressedRTFStream, 12)(nullptr, 0, &stream));
    const auto open = FIND(library, OpenStreamOnFile, 24);
    const auto allocate = FIND(library, MAPIAllocateBuffer, 8);
    const auto free = FIND(library, MAPIFreeBuffer, 4);
    std::wstring path = file + L".stream";
    Say("OpenStreamOnFile missing", open(allocate, free, STGM_READ, path.data(), nullptr, &stream));
    Say("OpenStreamOnFile",
        open(allocate, free, STGM_CREATE | STGM_READWRITE, path.data(), nullptr, &stream));
    if (stream != nullptr)
    {
        ULONG cb = 0;
        Say("Write", stream->Write("text", 4, &cb));
        stream->Release();
    }
}

void ShowRows(CLibrary& library, const char* title, IMAPITable* table, ULONG tag)
{
    SPropTagArray tags{1, {tag}};
    SSortOrderSet order{1, 0, 0, {{tag, TABLE_SORT_DESCEND}}};
    SRowSet* rows = nullptr;
    const HRESULT hr = FIND(library, HrQueryAllRows, 24)(table, &tags, nullptr, &order, 0, &rows);
    Say(title, hr);
    for (ULONG i = 0; SUCCEEDED(hr) && i < rows->cRows; ++i)
    {
        std::fprintf(g_out, "  %s\n", rows->aRow[i].lpProps[0].Value.lpszA);
    }
    FIND(library, FreeProws, 4)(rows);
}

void UseStore(CLibrary& library, mapi64::IMAPISession* session)
{
    const auto free = FIND(library, MAPIFreeBuffer, 4);
    mapi64::IMAPITable* stores = nullptr;
    SRowSet* rows = nullptr;
    mapi64::IMsgStore* store = nullptr;
    Say("GetMsgStoresTable",
        session->GetMsgStoresTable(0, reinterpret_cast<IMAPITable**>(&stores)));
    Say("QueryRows", stores->QueryRows(1, 0, &rows));
    const SBinary id = rows->aRow[0].lpProps[0].Value.bin;
    Say("OpenMsgStore",
        session->OpenMsgStore(0,
                              id.cb,
                              reinterpret_cast<ENTRYID*>(id.lpb),
                              nullptr,
                              MAPI_BEST_ACCESS,
                              reinterpret_cast<IMsgStore**>(&store)));
    FIND(library, FreeProws, 4)(rows);
    stores->Release();
    ULONG cb = 0;
    ULONG type = 0;
    ENTRYID* inboxId = nullptr;
    IMAPIFolder* inbox = nullptr;
    IMAPITable* contents = nullptr;
    Say("GetReceiveFolder", store->GetReceiveFolder(nullptr, MAPI_UNICODE, &cb, &inboxId, nullptr));
    Say("OpenEntry",
        store->OpenEntry(cb, inboxId, nullptr, 0, &type, reinterpret_cast<IUnknown**>(&inbox)));
    free(inboxId);
    Say("GetContentsTable", inbox->GetContentsTable(0, &contents));
    ShowRows(library, "inbox", contents, PR_SUBJECT_A);
    contents->Release();
    inbox->Release();
    store->Release();
}

/// The last line of the ledger of the library that answered in the end.
void ShowLedger()
{
    HMODULE module = GetModuleHandleW(L"mapistore64.dll");
    if (module == nullptr)
    {
        std::fputs("mapistore64.dll is not loaded\n", g_out);
        return;
    }
    using GetReport = ULONG(WINAPI*)(char*, ULONG);
    const auto report = reinterpret_cast<GetReport>(
        reinterpret_cast<void (*)()>(GetProcAddress(module, "MapiStoreGetReport")));
    std::string text(report(nullptr, 0), '\0');
    report(text.data(), static_cast<ULONG>(text.size()));
    std::fputs(text.c_str() + text.find('\n') + 1,
               g_out); // the first line has the process's number
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    if (count != 3)
    {
        return 2;
    }
    g_out = _wfopen(arguments[2], L"wb");
    CLibrary library(arguments[1]);
    if (g_out == nullptr || !library.Loaded())
    {
        return 4;
    }
    MAPIINIT_0 init{MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
    Say("MAPIInitialize", FIND(library, MAPIInitialize, 4)(&init));
    UseBuffers(library);
    UseUtilities(library, arguments[2]);
    IProfAdmin* admin = nullptr;
    IMAPITable* profiles = nullptr;
    Say("MAPIAdminProfiles", FIND(library, MAPIAdminProfiles, 8)(0, &admin));
    Say("GetProfileTable", admin->GetProfileTable(0, &profiles));
    ShowRows(library, "profiles", profiles, PR_DISPLAY_NAME_A);
    profiles->Release();
    admin->Release();
    mapi64::IMAPISession* session = nullptr;
    Say("MAPILogonEx",
        FIND(library, MAPILogonEx, 20)(0,
                                       nullptr,
                                       nullptr,
                                       MAPI_EXTENDED | MAPI_NEW_SESSION | MAPI_USE_DEFAULT,
                                       reinterpret_cast<IMAPISession**>(&session)));
    UseStore(library, session);
    Say("Logoff", session->Logoff(0, 0, 0));
    session->Release();
    FIND(library, MAPIUninitialize, 0)();
    ShowLedger();
    std::fclose(g_out);
    return 0;
}

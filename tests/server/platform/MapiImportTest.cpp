#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>

#include "MapiHeaders.h"

namespace
{

struct Imports
{
    std::set<WORD> ordinals;
    std::set<std::string> names;
};

/// What this program binds from a library, read from its own image in memory.
Imports ImportsFrom(const char* library)
{
    Imports imports;
    const auto* const base = reinterpret_cast<const BYTE*>(GetModuleHandleW(nullptr));
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    const DWORD place =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + place);
         entry->Name != 0;
         ++entry)
    {
        if (_stricmp(reinterpret_cast<const char*>(base + entry->Name), library) != 0)
        {
            continue;
        }
        for (const auto* thunk =
                 reinterpret_cast<const IMAGE_THUNK_DATA64*>(base + entry->OriginalFirstThunk);
             thunk->u1.AddressOfData != 0;
             ++thunk)
        {
            if ((thunk->u1.Ordinal & IMAGE_ORDINAL_FLAG64) != 0)
            {
                imports.ordinals.insert(static_cast<WORD>(thunk->u1.Ordinal & 0xFFFF));
            }
            else
            {
                const auto* const name =
                    reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + thunk->u1.AddressOfData);
                imports.names.insert(&name->Name[0]);
            }
        }
    }
    return imports;
}

} // namespace

TEST(MapiImport, AllFunctionsAreBoundByOrdinal)
{
    // Named, so that each of them is bound by this program.
    const void* const used[] = {reinterpret_cast<const void*>(&MAPILogonEx),
                                reinterpret_cast<const void*>(&MAPIAllocateBuffer),
                                reinterpret_cast<const void*>(&MAPIAllocateMore),
                                reinterpret_cast<const void*>(&MAPIFreeBuffer),
                                reinterpret_cast<const void*>(&MAPIAdminProfiles),
                                reinterpret_cast<const void*>(&MAPIInitialize),
                                reinterpret_cast<const void*>(&MAPIUninitialize),
                                reinterpret_cast<const void*>(&FreeProws)};
    for (const void* const function : used)
    {
        ASSERT_NE(function, nullptr);
    }

    const Imports imports = ImportsFrom("mapi32.dll");

    EXPECT_EQ(imports.ordinals, (std::set<WORD>{11, 13, 15, 17, 19, 21, 23, 140}));
    EXPECT_EQ(imports.names, std::set<std::string>{});
}

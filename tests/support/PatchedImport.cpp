#include "PatchedImport.h"

#include <gtest/gtest.h>

#include <cstring>

namespace
{

void Write(ULONG_PTR* place, ULONG_PTR value)
{
    DWORD before = 0;
    ASSERT_NE(VirtualProtect(place, sizeof *place, PAGE_READWRITE, &before), FALSE);
    *place = value;
    DWORD ignored = 0;
    ASSERT_NE(VirtualProtect(place, sizeof *place, before, &ignored), FALSE);
}

/// Where the program keeps the addresses of the functions that it binds under `name`.
std::vector<ULONG_PTR*> PlacesOf(const char* name)
{
    std::vector<ULONG_PTR*> places;
    auto* const base = reinterpret_cast<BYTE*>(GetModuleHandleW(nullptr));
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    const DWORD table =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* entry = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + table);
         entry->Name != 0;
         ++entry)
    {
        const auto* names =
            reinterpret_cast<const IMAGE_THUNK_DATA64*>(base + entry->OriginalFirstThunk);
        auto* bound = reinterpret_cast<IMAGE_THUNK_DATA64*>(base + entry->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++bound)
        {
            if ((names->u1.Ordinal & IMAGE_ORDINAL_FLAG64) != 0)
            {
                continue;
            }
            const auto* const import =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(&import->Name[0], name) == 0)
            {
                places.push_back(&bound->u1.Function);
            }
        }
    }
    return places;
}

} // namespace

CPatchedImport::CPatchedImport(const char* name, ULONG_PTR replacement)
{
    for (ULONG_PTR* const bound : PlacesOf(name))
    {
        m_places.push_back({bound, *bound});
        Write(bound, replacement);
    }
    EXPECT_FALSE(m_places.empty()) << name << " is not bound by this program";
}

CPatchedImport::~CPatchedImport()
{
    for (const Place& place : m_places)
    {
        Write(place.bound, place.before);
    }
}

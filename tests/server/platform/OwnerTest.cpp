#include <gtest/gtest.h>

#include <utility>

#include "ComRef.h"
#include "Handle.h"
#include "LoadedModule.h"
#include "RegKey.h"

namespace
{

class CCounted final : public IUnknown
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override
    {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_count; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        SetLastError(0x7777);
        return --m_count;
    }

    ULONG m_count = 1;
};

} // namespace

TEST(ComRef, AdoptTakesTheCallersReference)
{
    CCounted object;

    {
        const auto reference = CComRef<CCounted>::Adopt(&object);
        EXPECT_EQ(object.m_count, 1U);
    }

    EXPECT_EQ(object.m_count, 0U);
}

TEST(ComRef, ShareAddsAReferenceOfItsOwn)
{
    CCounted object;

    {
        const auto reference = CComRef<CCounted>::Share(&object);
        EXPECT_EQ(object.m_count, 2U);
    }

    EXPECT_EQ(object.m_count, 1U);
}

TEST(ComRef, CopiesHoldOneReferenceEach)
{
    CCounted object;
    auto first = CComRef<CCounted>::Adopt(&object);

    CComRef<CCounted> second(first);
    CComRef<CCounted> third;
    third = second;
    EXPECT_EQ(object.m_count, 3U);

    second = nullptr;
    third.Reset();
    EXPECT_EQ(object.m_count, 1U);
}

TEST(ComRef, MovingLeavesTheSourceEmptyAndTheCountAlone)
{
    CCounted object;
    auto first = CComRef<CCounted>::Adopt(&object);

    CComRef<CCounted> second(std::move(first));

    EXPECT_EQ(second.Get(), &object);
    EXPECT_EQ(object.m_count, 1U);
}

TEST(ComRef, OutSlotReleasesWhatWasHeld)
{
    CCounted object;
    auto reference = CComRef<CCounted>::Adopt(&object);

    CCounted** const slot = reference.Put();

    EXPECT_EQ(*slot, nullptr);
    EXPECT_EQ(object.m_count, 0U);
}

TEST(ComRef, DetachGivesTheReferenceAway)
{
    CCounted object;
    auto reference = CComRef<CCounted>::Adopt(&object);

    EXPECT_EQ(reference.Detach(), &object);

    EXPECT_FALSE(reference);
    EXPECT_EQ(object.m_count, 1U);
}

TEST(ComRef, ReleasingKeepsTheLastError)
{
    CCounted object;
    auto reference = CComRef<CCounted>::Adopt(&object);
    SetLastError(5);

    reference.Reset();

    EXPECT_EQ(GetLastError(), 5U);
}

TEST(Handle, IsClosedAtTheEndOfItsLife)
{
    HANDLE raw = nullptr;
    {
        const CHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
        ASSERT_TRUE(event);
        raw = event.Get();
    }

    DWORD flags = 0;
    EXPECT_FALSE(GetHandleInformation(raw, &flags));
}

TEST(FileHandle, InvalidHandleValueIsEmpty)
{
    const CFileHandle file(
        CreateFileW(L"C:\\no\\such\\file", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));

    EXPECT_FALSE(file);
}

TEST(RegKey, OutSlotTakesTheOpenedKey)
{
    CRegKey key;

    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software", 0, KEY_READ, key.Put()),
              ERROR_SUCCESS);

    EXPECT_TRUE(key);
}

TEST(LoadedModule, MovingLeavesTheSourceEmpty)
{
    CLoadedModule first(LoadLibraryW(L"version.dll"));
    const HMODULE raw = first.Get();

    CLoadedModule second;
    second = std::move(first);

    EXPECT_TRUE(second);
    EXPECT_EQ(second.Get(), raw);
}

TEST(LoadedModule, IsFreedAtTheEndOfItsLife)
{
    ASSERT_EQ(GetModuleHandleW(L"msvfw32.dll"), nullptr);

    {
        const CLoadedModule library(LoadLibraryW(L"msvfw32.dll"));
        ASSERT_TRUE(library);
    }

    EXPECT_EQ(GetModuleHandleW(L"msvfw32.dll"), nullptr);
}

#include "StoreTest.h"

#include <cstdio>

#include "MailClientEnvironment.h"
#include "MapiDataStore.h"
#include "ProcAddress.h"
#include "StoreText.h"

namespace
{

constexpr const wchar_t* kLibrary = L"mapistore64.dll";

HMODULE Library()
{
    return GetModuleHandleW(kLibrary);
}

template <typename Fn>
Fn Function(const char* name)
{
    const Fn function = ProcAddress<Fn>(Library(), name);
    EXPECT_NE(function, nullptr) << name;
    return function;
}

std::wstring StoreFolder()
{
    return ProgramFolder() + L"\\bringup-store";
}

[[maybe_unused]] const testing::Environment* const g_environment =
    testing::AddGlobalTestEnvironment(new CMailClientEnvironment(L"..", kLibrary));

} // namespace

void StoreTest::SetUp()
{
    ASSERT_NE(Library(), nullptr);
    CreateDirectoryW(StoreFolder().c_str(), nullptr);
    WriteDocument(kStoreDocument);
    const auto configure = Function<decltype(&MapiStoreConfigure)>("MapiStoreConfigure");
    ASSERT_EQ(configure(L"Folder", StoreFolder().c_str()), S_OK);
    ASSERT_EQ(configure(L"Guard", L"1"), S_OK);
    ASSERT_EQ(configure(L"Watch", L"0"), S_OK);
    SetFaults("");
    for (HKEY const hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE})
    {
        RegDeleteTreeW(hive, L"SOFTWARE\\Policies\\VantorTalvo");
        RegDeleteTreeW(hive, L"SOFTWARE\\Talvo\\DeskTools");
    }
    MapiDataStore().ClearDataStore();
    MapiDataStore().SetReleasing(0);
    trace.Clear();
}

void StoreTest::TearDown()
{
    ExpectCleanLedger();
    SetFaults("");
}

void StoreTest::WriteDocument(const std::string& text)
{
    const std::wstring path = StoreFolder() + L"\\store.json";
    FILE* const file = _wfopen(path.c_str(), L"wb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(std::fwrite(text.data(), 1, text.size(), file), text.size());
    EXPECT_EQ(std::fclose(file), 0);
}

std::string StoreTest::DocumentWith(const std::string& from, const std::string& to)
{
    std::string text = kStoreDocument;
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

void StoreTest::SetFaults(const std::string& plan)
{
    const std::wstring wide(plan.begin(), plan.end());
    ASSERT_EQ(
        Function<decltype(&MapiStoreConfigure)>("MapiStoreConfigure")(L"Faults", wide.c_str()),
        S_OK);
}

MapiStoreCounts StoreTest::Counts()
{
    MapiStoreCounts counts{};
    Function<decltype(&MapiStoreGetCounts)>("MapiStoreGetCounts")(&counts);
    return counts;
}

std::string StoreTest::Report()
{
    const auto get = Function<decltype(&MapiStoreGetReport)>("MapiStoreGetReport");
    std::string text(get(nullptr, 0), '\0');
    get(text.data(), static_cast<ULONG>(text.size()));
    return text.c_str();
}

void StoreTest::Refresh()
{
    ASSERT_EQ(Function<decltype(&MapiStoreRefresh)>("MapiStoreRefresh")(), S_OK);
}

void StoreTest::ExpectCleanLedger()
{
    const MapiStoreCounts counts = Counts();
    if (counts.interfacesLeft + counts.buffersLeft + counts.connectionsLeft + counts.misuse != 0)
    {
        ADD_FAILURE() << Report();
    }
}

#include "MailStoreTest.h"

#include <cstdio>

#include "MailClientEnvironment.h"
#include "MapiDataStore.h"
#include "ProcAddress.h"

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

/// Beside the program and named after it, so that no two programs share one.
std::wstring StoreFolder()
{
    std::wstring path(MAX_PATH, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
    return path.substr(0, path.find_last_of(L'.')) + L"-store";
}

[[maybe_unused]] const testing::Environment* const g_environment =
    testing::AddGlobalTestEnvironment(new CMailClientEnvironment(L"..", kLibrary));

} // namespace

void MailStoreTest::SetUp()
{
    ASSERT_NE(Library(), nullptr);
    CreateDirectoryW(StoreFolder().c_str(), nullptr);
    WriteDocument(m_document);
    Configure(L"Folder", StoreFolder().c_str());
    Configure(L"Guard", L"1");
    Configure(L"Watch", L"0");
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

void MailStoreTest::TearDown()
{
    ExpectCleanLedger();
    SetFaults("");
}

void MailStoreTest::Configure(const wchar_t* name, const wchar_t* value)
{
    ASSERT_EQ(Function<decltype(&MapiStoreConfigure)>("MapiStoreConfigure")(name, value), S_OK);
}

void MailStoreTest::WriteDocument(const std::string& text)
{
    const std::wstring path = StoreFolder() + L"\\store.json";
    FILE* const file = _wfopen(path.c_str(), L"wb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(std::fwrite(text.data(), 1, text.size(), file), text.size());
    EXPECT_EQ(std::fclose(file), 0);
}

std::string MailStoreTest::DocumentWith(const std::string& from, const std::string& to) const
{
    std::string text = m_document;
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

void MailStoreTest::SetFaults(const std::string& plan)
{
    Configure(L"Faults", std::wstring(plan.begin(), plan.end()).c_str());
}

void MailStoreTest::SetFaultsAtOnce(const std::string& plan)
{
    ASSERT_EQ(Function<decltype(&MapiStoreSetFaults)>("MapiStoreSetFaults")(plan.c_str()), S_OK);
}

MapiStoreCounts MailStoreTest::Counts()
{
    MapiStoreCounts counts{};
    Function<decltype(&MapiStoreGetCounts)>("MapiStoreGetCounts")(&counts);
    return counts;
}

std::string MailStoreTest::Report()
{
    const auto get = Function<decltype(&MapiStoreGetReport)>("MapiStoreGetReport");
    std::string text(get(nullptr, 0), '\0');
    get(text.data(), static_cast<ULONG>(text.size()));
    return text.c_str();
}

void MailStoreTest::Refresh()
{
    ASSERT_EQ(Function<decltype(&MapiStoreRefresh)>("MapiStoreRefresh")(), S_OK);
}

void MailStoreTest::DropShells()
{
    Function<decltype(&MapiStoreDropShells)>("MapiStoreDropShells")();
}

void MailStoreTest::ExpectCleanLedger()
{
    const MapiStoreCounts counts = Counts();
    if (counts.interfacesLeft + counts.buffersLeft + counts.connectionsLeft + counts.misuse != 0)
    {
        ADD_FAILURE() << Report();
    }
}

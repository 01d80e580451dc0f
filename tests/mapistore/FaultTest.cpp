#include <algorithm>
#include <thread>

#include "OperationFixture.h"

using namespace mapitest;

namespace
{

constexpr HRESULT kPlanned = MAPI_E_UNKNOWN_LCID; // no operation answers this by itself

class FaultTest : public OperationTest
{
protected:
    static void Plan(const std::string& plan)
    {
        ASSERT_EQ(MapiStoreSetFaults(plan.c_str()), S_OK) << Report();
    }
};

TEST_F(FaultTest, EveryListedOperationCanBeMadeToFail)
{
    EveryObject all = OpenAll();
    const Calls calls = AllCalls(TargetsOf(all));
    const std::vector<std::string> listed = ListedOperations();
    ASSERT_GT(listed.size(), 200U);
    size_t tried = 0;
    for (const std::string& name : listed)
    {
        if (name == "MAPIUninitialize")
        {
            continue; // has no status
        }
        ASSERT_EQ(calls.count(name), 1U) << name;
        Plan(name + " every fail MAPI_E_UNKNOWN_LCID");
        EXPECT_EQ(calls.at(name)(), kPlanned) << name;
        ++tried;
    }
    EXPECT_EQ(tried, calls.size());
}

TEST_F(FaultTest, CallsAreCountedPerStatement)
{
    const TableRef table = Contents(4);
    Plan("IMAPITable::GetRowCount call 2 fail MAPI_E_BUSY\n"
         "IMAPITable::GetRowCount calls 4-5 fail E_FAIL; # behind a separator\n"
         "IMAPITable::GetRowCount from 7 fail 0x80040115");
    ULONG count = 0;
    std::vector<HRESULT> got;
    for (int i = 0; i < 8; ++i)
    {
        got.push_back(table->GetRowCount(0, &count));
    }
    EXPECT_EQ(got,
              (std::vector<HRESULT>{S_OK,
                                    MAPI_E_BUSY,
                                    S_OK,
                                    E_FAIL,
                                    E_FAIL,
                                    S_OK,
                                    MAPI_E_NETWORK_ERROR,
                                    MAPI_E_NETWORK_ERROR}));
    EXPECT_NE(
        Report().find("fault applied 2 of 8 calls: IMAPITable::GetRowCount calls 4-5 fail E_FAIL"),
        std::string::npos)
        << Report();
}

TEST_F(FaultTest, RandomShareIsTheSameForTheSameSeed)
{
    const TableRef table = Contents(4);
    const auto run = [&](const char* plan) {
        Plan(plan);
        std::string pattern;
        for (int i = 0; i < 1000; ++i)
        {
            ULONG count = 0;
            pattern += table->GetRowCount(0, &count) == S_OK ? '.' : 'x';
        }
        return pattern;
    };
    const std::string first = run("IMAPITable::GetRowCount share 10% seed 7 fail E_FAIL");
    EXPECT_EQ(first, run("IMAPITable::GetRowCount share 10% seed 7 fail E_FAIL"));
    EXPECT_NE(first, run("IMAPITable::GetRowCount share 10% seed 8 fail E_FAIL"));
    const auto failed = std::count(first.begin(), first.end(), 'x');
    EXPECT_GT(failed, 60);
    EXPECT_LT(failed, 140);
}

TEST_F(FaultTest, StatementMaySayWhatTheCallIsAbout)
{
    const FolderRef top = OpenFolder(3);
    TableRef hierarchy;
    ASSERT_EQ(top->GetHierarchyTable(0, hierarchy.PutAs<::IMAPITable>()), S_OK);
    const TableRef contents = Contents(4);
    Plan("IMAPITable::GetRowCount(hierarchy) every fail E_FAIL;"
         "IMessage::GetProps(0x1000001F) every fail E_FAIL;"
         "IMAPIFolder::OpenEntry(message) every fail E_FAIL");
    ULONG count = 0;
    EXPECT_EQ(hierarchy->GetRowCount(0, &count), E_FAIL);
    EXPECT_EQ(contents->GetRowCount(0, &count), S_OK);
    const MessageRef message = OpenMessage(100);
    CTags body{PR_BODY_W};
    CTags subject{PR_SUBJECT_W};
    CHeld<SPropValue> values;
    EXPECT_EQ(message->GetProps(body, 0, &count, values.Put()), E_FAIL);
    EXPECT_EQ(message->GetProps(subject, 0, &count, values.Put()), S_OK);
    std::string id = MessageId(100);
    MessageRef other;
    EXPECT_EQ(
        top->OpenEntry(
            32, reinterpret_cast<ENTRYID*>(id.data()), nullptr, 0, &count, other.PutAs<IUnknown>()),
        E_FAIL);
}

TEST_F(FaultTest, BaseInterfaceMeansEveryOneThatHasTheOperation)
{
    Plan("IMAPIProp::GetProps every fail E_FAIL");
    ULONG count = 0;
    CHeld<SPropValue> values;
    EXPECT_EQ(OpenMessage(100)->GetProps(nullptr, 0, &count, values.Put()), E_FAIL);
    EXPECT_EQ(OpenFolder(4)->GetProps(nullptr, 0, &count, values.Put()), E_FAIL);
    EXPECT_EQ(store->GetProps(nullptr, 0, &count, values.Put()), E_FAIL);
}

TEST_F(FaultTest, PartialResultsAreCutAsPlanned)
{
    const TableRef table = Contents(4);
    const MessageRef message = OpenMessage(100);
    Plan("IMAPITable::QueryRows every rows 2\n"
         "IStream::Read every bytes 3\n"
         "IMAPIProp::GetProps every error 0x1000001F E_OUTOFMEMORY\n"
         "IMAPITable::QueryRows every error 0x0037001F MAPI_E_NOT_FOUND");
    const CRows rows = AllRows(table);
    ASSERT_EQ(rows.Count(), 2U);
    EXPECT_EQ(TextColumn(table, PR_SUBJECT_W), (std::vector<std::wstring>{L"<none>", L"<none>"}));
    CTags tags{PR_BODY_W, PR_SUBJECT_W};
    ULONG count = 0;
    CHeld<SPropValue> values;
    EXPECT_EQ(message->GetProps(tags, 0, &count, values.Put()), MAPI_W_ERRORS_RETURNED);
    EXPECT_EQ(values[0].Value.err, E_OUTOFMEMORY);
    EXPECT_EQ(values[1].ulPropTag, PR_SUBJECT_W);
    CRef<IStream> stream;
    ASSERT_EQ(message->OpenProperty(PR_BODY_W, &IID_IStream, 0, 0, stream.PutAs<IUnknown>()), S_OK);
    char bytes[16] = {};
    ASSERT_EQ(stream->Read(bytes, 8, &count), S_OK);
    EXPECT_EQ(count, 3U);
}

TEST_F(FaultTest, GivenStatusReplacesTheOperationsOwn)
{
    Plan("IMAPISession::OpenMsgStore every give MAPI_W_ERRORS_RETURNED");
    std::string id = EntryId(MAPI_STORE, storeUid, 1);
    StoreRef other;
    EXPECT_EQ(session->OpenMsgStore(0,
                                    32,
                                    reinterpret_cast<ENTRYID*>(id.data()),
                                    nullptr,
                                    MAPI_BEST_ACCESS,
                                    other.PutAs<::IMsgStore>()),
              MAPI_W_ERRORS_RETURNED);
    EXPECT_NE(other.Get(), nullptr);
}

TEST_F(FaultTest, FailedCallEmptiesItsOutParameters)
{
    const TableRef table = Contents(4);
    Plan("IMAPITable::QueryRows every fail E_FAIL; IMAPITable::GetRowCount every fail E_FAIL");
    ULONG count = 77;
    EXPECT_EQ(table->GetRowCount(0, &count), E_FAIL);
    EXPECT_EQ(count, 0U);
    SRowSet* rows = reinterpret_cast<SRowSet*>(1);
    EXPECT_EQ(table->QueryRows(5, 0, &rows), E_FAIL);
    EXPECT_EQ(rows, nullptr);
}

TEST_F(FaultTest, HangingCallSaysSoAndWaitsToBeTold)
{
    const TableRef table = Contents(4);
    const std::wstring name = L"MapiStore.test" + std::to_wstring(GetCurrentProcessId());
    HANDLE release = CreateEventW(nullptr, TRUE, FALSE, name.c_str());
    HANDLE reached = CreateEventW(nullptr, TRUE, FALSE, (name + L".reached").c_str());
    Plan("IMAPITable::GetRowCount call 1 hang test" + std::to_string(GetCurrentProcessId()));
    HRESULT hr = E_FAIL;
    ULONG count = 0;
    std::thread other([&] {
        MAPIINIT_0 init{MAPI_INIT_VERSION, 0};
        MAPIInitialize(&init);
        hr = table->GetRowCount(0, &count);
        MAPIUninitialize();
    });
    EXPECT_EQ(WaitForSingleObject(reached, INFINITE), WAIT_OBJECT_0);
    ULONG own = 0;
    EXPECT_EQ(table->GetRowCount(0, &own), S_OK); // a hanging call holds no lock
    EXPECT_EQ(own, 3U);
    SetEvent(release);
    other.join();
    EXPECT_EQ(hr, S_OK);
    EXPECT_EQ(count, 3U);
    CloseHandle(release);
    CloseHandle(reached);
}

TEST_F(FaultTest, WaitMakesTheCallTakeAtLeastSoLong)
{
    const TableRef table = Contents(4);
    Plan("IMAPITable::GetRowCount call 1 wait 60");
    ULONG count = 0;
    const ULONGLONG before = GetTickCount64();
    EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
    // The tick count moves in steps of up to 16 ms.
    EXPECT_GE(GetTickCount64() - before, 40U);
}

TEST_F(FaultTest, PlanThatCannotBeReadIsRefusedWithItsLine)
{
    const std::pair<const char*, const char*> kBad[] = {
        {"IMAPITable::Nothing every fail E_FAIL", "line 1: unknown operation IMAPITable::Nothing"},
        {"\n\nIMAPITable::Abort sometimes fail E_FAIL", "line 3: expected: every, call N"},
        {"IMAPITable::Abort call 0 fail E_FAIL", "line 1: expected: every, call N"},
        {"IMAPITable::Abort calls 5-4 fail E_FAIL", "line 1: expected: every, call N"},
        {"IMAPITable::Abort share 10 seed 1 fail E_FAIL", "line 1: expected: every, call N"},
        {"IMAPITable::Abort share 101% seed 1 fail E_FAIL", "line 1: expected: every, call N"},
        {"IMAPITable::Abort share -1% seed 1 fail E_FAIL", "line 1: expected: every, call N"},
        {"IMAPITable::Abort share nan% seed 1 fail E_FAIL", "line 1: expected: every, call N"},
        {"IMAPITable::Abort every explode", "line 1: expected: fail STATUS"},
        {"IMAPITable::Abort every fail MAPI_E_NO_SUCH", "line 1: expected: fail STATUS"},
        {"IMAPITable::Abort every crash now", "line 1: unexpected now"}};
    for (const auto& [plan, text] : kBad)
    {
        EXPECT_EQ(MapiStoreSetFaults(plan), E_INVALIDARG) << plan;
        EXPECT_NE(Report().find(std::string("note fault plan, ") + text), std::string::npos)
            << plan << "\n"
            << Report();
    }
    const TableRef table = Contents(4);
    EXPECT_EQ(table->Abort(), S_OK);
}

TEST_F(FaultTest, PlanOfTheSettingsIsReadFromAFileAndABadOneStopsMapi)
{
    Stop();
    WriteFileText(StorePath() + L"\\plan.txt", "MAPIAdminProfiles every fail E_FAIL\n");
    ASSERT_EQ(MapiStoreConfigure(L"Faults", (L"@" + StorePath() + L"\\plan.txt").c_str()), S_OK);
    ASSERT_EQ(MAPIInitialize(nullptr), S_OK);
    CRef<IProfAdmin> admin;
    EXPECT_EQ(MAPIAdminProfiles(0, admin.Put()), E_FAIL);
    MAPIUninitialize();
    WriteFileText(StorePath() + L"\\plan.txt", "nonsense\n");
    EXPECT_EQ(MAPIInitialize(nullptr), MAPI_E_UNCONFIGURED);
    ASSERT_EQ(MapiStoreConfigure(L"Faults", L"@Z:\\nowhere\\plan.txt"), S_OK);
    EXPECT_EQ(MAPIInitialize(nullptr), MAPI_E_UNCONFIGURED);
    ASSERT_EQ(MapiStoreConfigure(L"Faults", nullptr), S_OK);
    Start();
}

} // namespace

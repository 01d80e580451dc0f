// Every single call of a session fails once, and nothing is lost or broken.

#include <cstdlib>
#include <map>
#include <regex>

#include "StoreTest.h"

namespace
{

constexpr const char* kOperations[] = {"MAPIInitialize",
                                       "MAPIAdminProfiles",
                                       "MAPILogonEx",
                                       "IProfAdmin::GetProfileTable",
                                       "IMAPITable::SetColumns",
                                       "IMAPITable::QueryRows",
                                       "IMAPITable::GetRowCount",
                                       "IMAPITable::Restrict",
                                       "IMAPITable::Advise",
                                       "IMAPITable::Unadvise",
                                       "IMAPISession::QueryIdentity",
                                       "IMAPISession::OpenEntry",
                                       "IMAPISession::GetMsgStoresTable",
                                       "IMAPISession::OpenMsgStore",
                                       "IMAPISession::OpenAddressBook",
                                       "IMAPISession::Logoff",
                                       "IMailUser::GetProps",
                                       "IMsgStore::GetProps",
                                       "IMsgStore::OpenEntry",
                                       "IMsgStore::GetReceiveFolder",
                                       "IMsgStore::StoreLogoff",
                                       "IMAPIFolder::OpenProperty",
                                       "IMAPIFolder::OpenEntry",
                                       "IMAPIFolder::GetProps",
                                       "IMAPIFolder::GetContentsTable",
                                       "IAddrBook::OpenEntry",
                                       "IABContainer::GetHierarchyTable",
                                       "IABContainer::GetContentsTable"};

constexpr const char* kStatuses[] = {"E_FAIL", "MAPI_E_NETWORK_ERROR", "MAPI_E_NOT_ENOUGH_MEMORY"};

} // namespace

class FaultSweepTest : public StoreTest
{
protected:
    /// One session: both kinds of folders, the common folders, the address book, and the way down.
    static ULONG RunSession()
    {
        CBroughtUp outlook;
        const ULONG result = outlook.Init(1);
        outlook.Init(2);
        outlook.GetInboxFolder();
        outlook.GetOutboxFolder();
        std::vector<ABContainerInfo> containers;
        std::vector<ABEmailEntry> entries;
        outlook.ListABContainerByType(1, containers);
        for (const ABContainerInfo& container : containers)
        {
            outlook.ListABEmailWithName(container.entryId, L"bo", entries);
            outlook.ListABEmailWithKey(
                container.entryId, L"bo.lind@nordlys.example", PR_SMTP_ADDRESS_W, entries);
        }
        outlook.FreeLib();
        return result;
    }

    /// How many calls of each operation one session makes, as the ledger counts them.
    static std::map<std::string, int> CountCalls()
    {
        std::string plan;
        for (const char* const operation : kOperations)
        {
            plan += std::string(operation) + " call 1000000 fail E_FAIL\n";
        }
        SetFaults(plan);
        EXPECT_EQ(RunSession(), 0U);
        std::map<std::string, int> counts;
        const std::string report = Report();
        const std::regex line(R"(fault applied 0 of (\d+) calls: (\S+) call)");
        for (std::sregex_iterator found(report.begin(), report.end(), line), end; found != end;
             ++found)
        {
            counts[(*found)[2]] = std::atoi((*found)[1].str().c_str());
        }
        return counts;
    }
};

TEST_F(FaultSweepTest, EachCallOfASessionFailsOnceWithThreeStatuses)
{
    const std::map<std::string, int> counts = CountCalls();
    ASSERT_EQ(counts.size(), std::size(kOperations));
    int runs = 0;
    for (const auto& [operation, count] : counts)
    {
        EXPECT_GT(count, 0) << operation << " is not called at all";
        for (int call = 1; call <= count; ++call)
        {
            for (const char* const status : kStatuses)
            {
                const std::string plan =
                    operation + " call " + std::to_string(call) + " fail " + status;
                SCOPED_TRACE(plan);
                SetFaults(plan);

                const ULONG result = RunSession();

                EXPECT_TRUE(result == 0 || (result >= 0x80080002 && result <= 0x80080004))
                    << result;
                EXPECT_NE(Report().find("fault applied 1 of"), std::string::npos);
                ExpectCleanLedger();
                ++runs;
            }
        }
    }
    RecordProperty("sessions", runs);
    std::printf("%d sessions, each with one failing call\n", runs);
}

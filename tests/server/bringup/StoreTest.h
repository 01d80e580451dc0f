#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MapiStoreControl.h"
#include "OutlookCtrl.h"
#include "TraceCapture.h"

using Strings = std::vector<std::string>;

/// The controller with what the tests look at in reach.
class CBroughtUp : public COutlookCtrl
{
public:
    using CABbase::GetABEmailAddress;
    using CABbase::ListABContainerByType;
    using CABbase::ListABEmailWithKey;
    using CABbase::ListABEmailWithName;
    using CMailCtrl::m_hrInit;
    using CMessageStoreBase::GetInboxFolder;
    using CMessageStoreBase::GetOutboxFolder;
    using CMessageStoreBase::m_bNeedRealEntryID;
    using CMessageStoreBase::m_OutboxEid;
    using CMessageStoreBase::m_SentEid;
    using COutlookCtrl::m_CalendarSinks;
    using COutlookCtrl::m_ContactSinks;

    [[nodiscard]] std::vector<std::wstring> CalendarPaths() const { return Paths(m_CalendarSinks); }
    [[nodiscard]] std::vector<std::wstring> ContactPaths() const { return Paths(m_ContactSinks); }

private:
    static std::vector<std::wstring> Paths(const std::vector<MAPI_TBLSinkInfo>& sinks)
    {
        std::vector<std::wstring> paths;
        for (const MAPI_TBLSinkInfo& sink : sinks)
        {
            paths.push_back(sink.folderInfo.path);
        }
        return paths;
    }
};

/// The whole controller over the file-backed mail library: registered as the mail client, buffers
/// guarded by inaccessible pages, calls of the wrong thread refused. After each test its ledger has
/// to be empty and free of misuse.
class StoreTest : public testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    /// Replaces the document of the store, as another program would.
    static void WriteDocument(const std::string& text);
    /// The document with `from` replaced by `to`, which must be there.
    static std::string DocumentWith(const std::string& from, const std::string& to);
    /// Sets the fault plan of the next session.
    static void SetFaults(const std::string& plan);
    /// What the ledger says of the last session.
    static MapiStoreCounts Counts();
    static std::string Report();
    /// Reads a changed document at once, and returns when the tables know of it.
    static void Refresh();
    /// Expects that everything was given back and nothing was misused.
    static void ExpectCleanLedger();

    CTraceCapture trace;
};

#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MailStoreTest.h"
#include "OutlookCtrl.h"
#include "StoreText.h"

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

/// The whole controller over the store of StoreText.h.
class StoreTest : public MailStoreTest
{
protected:
    StoreTest() : MailStoreTest(kStoreDocument) {}
};

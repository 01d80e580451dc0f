#pragma once

#include "ControllerTest.h"

/// An open address book with one global container "People", and one user in it.
class AddressBookTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        LogOn(outlook);
        ASSERT_EQ(outlook.OpenAddressbook(), 1U);
        mapi.addressBook.children = {{.name = L"People",
                                      .displayType = DT_GLOBAL,
                                      .entries = {Entry("ada", L"Ada Stone", L"EX")}}};
        trace.Clear();
    }
    void TearDown() override
    {
        outlook.FreeLib();
        ControllerTest::TearDown();
    }

    /// A mail user "<id>@example.org" as row and as opened entry.
    static FakeProps Entry(const std::string& id,
                           const std::wstring& displayName,
                           const std::wstring& addressType,
                           LONG objectType = MAPI_MAILUSER)
    {
        const std::wstring wideId(id.begin(), id.end());
        return {{PR_DISPLAY_NAME_W, displayName},
                {PR_ENTRYID, BinaryBlock(id.begin(), id.end())},
                {PR_OBJECT_TYPE, objectType},
                {PR_ADDRTYPE_W, addressType},
                {PR_EMAIL_ADDRESS_W,
                 addressType == L"SMTP" ? wideId + L"@native.example" : L"/o=Example/cn=" + wideId},
                {PR_SMTP_ADDRESS_W, wideId + L"@Example.org"}};
    }
    std::vector<FakeProps>& Entries() { return mapi.addressBook.children[0].entries; }
    std::vector<std::wstring> NamesFor(const WString& name)
    {
        std::vector<ABEmailEntry> list;
        outlook.ListABEmailWithName(FakeAddressId(L"People"), name, list);
        std::vector<std::wstring> names;
        for (const ABEmailEntry& entry : list)
        {
            names.push_back(entry.displayName);
        }
        return names;
    }

    CTestOutlook outlook;
};

using Names = std::vector<std::wstring>;
using Tags = std::vector<ULONG>;

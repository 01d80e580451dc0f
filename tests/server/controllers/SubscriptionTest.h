#pragma once

#include "ControllerTest.h"

/// An open store with two calendars and a contact folder, none of them watched yet.
class SubscriptionTest : public ControllerTest
{
protected:
    void SetUp() override
    {
        ControllerTest::SetUp();
        OpenStore(outlook);
        mapi.folders = {{.name = L"First", .containerClass = "IPF.Appointment"},
                        {.name = L"Second", .containerClass = "IPF.Appointment"},
                        {.name = L"People", .containerClass = "IPF.Contact"}};
        trace.Clear();
    }
    void TearDown() override
    {
        outlook.FreeLib();
        ControllerTest::TearDown();
    }

    CTestOutlook outlook;
};

#include <gtest/gtest.h>

#include "FakeObjects.h"
#include "MapiUtil.h"

namespace
{

using Calls = std::vector<std::string>;

TEST(GetOneProp, AsksForTheOneTagAsWideText)
{
    CFakeMessage message;
    message.props.text = L"plan";
    CMapiBuffer<SPropValue> value;

    EXPECT_EQ(GetOneProp(&message, PR_SUBJECT_W, value), S_OK);

    ASSERT_TRUE(value);
    EXPECT_EQ(value->ulPropTag, PR_SUBJECT_W);
    EXPECT_STREQ(value->Value.lpszW, L"plan");
    EXPECT_EQ(message.props.calls, Calls{"GetProps 37001F flags 80000000"});
}

TEST(GetOneProp, ANullObjectIsOne)
{
    CMapiBuffer<SPropValue> value;

    EXPECT_EQ(GetOneProp(nullptr, PR_SUBJECT_W, value), 1);
    EXPECT_FALSE(value);
}

TEST(GetOneProp, EveryRefusalIsNotFoundWhateverTheObjectSaid)
{
    CMapiBuffer<SPropValue> value;
    for (const HRESULT status : {E_OUTOFMEMORY, MAPI_E_NETWORK_ERROR, MAPI_W_ERRORS_RETURNED})
    {
        CFakeMessage message;
        message.props.propStatus = status;

        EXPECT_EQ(GetOneProp(&message, PR_SUBJECT_W, value), MAPI_E_NOT_FOUND);
        EXPECT_FALSE(value);
    }
}

struct FolderClassCase
{
    const char* name;
    ULONG kind;
};

TEST(ClassifyFolder, TheClassTellsTheKind)
{
    const FolderClassCase cases[] = {{"IPF.Note", 11},
                                     {"IPM.Note", 11},
                                     {"IPF.Imap", 11},
                                     {"IPF.Appointment", 5},
                                     {"IPF.Appointment.Birthdays", 5},
                                     {"IPM.Appointment", 5},
                                     {"IPM.Contact", 6},
                                     {"IPF.Contact.Recipients", 6},
                                     {"IPF.Journal", 7},
                                     {"IPF.StickyNote", 8},
                                     {"IPF.Task", 9},
                                     {"IPF.Whatever", 10},
                                     {"IPX.Appointment", 5},
                                     {"IPF.", 10},
                                     {"IPF", 12},
                                     {"IP..", 10},
                                     {"IPFAppointment", 12},
                                     {"ipf.appointment", 12},
                                     {"IPF.appointment", 10},
                                     {"Appointment", 12},
                                     {"", 12}};
    for (const FolderClassCase& one : cases)
    {
        CFakeContainer folder;
        folder.props.narrowText = one.name;

        // The classifier reads properties alone, and that part all containers have in common.
        EXPECT_EQ(ClassifyFolder(nullptr, reinterpret_cast<IMAPIFolder*>(&folder)), one.kind)
            << one.name;
        EXPECT_EQ(folder.props.calls, Calls{"GetProps 3613001E flags 80000000"});
    }
}

TEST(ClassifyFolder, AFolderWithoutAClassIsUnknown)
{
    CFakeContainer folder;
    folder.props.propStatus = MAPI_E_NOT_FOUND;

    EXPECT_EQ(ClassifyFolder(nullptr, reinterpret_cast<IMAPIFolder*>(&folder)), 12U);
    EXPECT_EQ(ClassifyFolder(nullptr, nullptr), 12U);
}

} // namespace

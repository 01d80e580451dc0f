#include <gtest/gtest.h>

#include "FakeObjects.h"
#include "MapiUtil.h"
#include "TraceCapture.h"

namespace
{

using Calls = std::vector<std::string>;

constexpr const char* kOpening = "3 CMAPIMessageBase::GetContactPicture";
constexpr const char* kStreams = "3 CUtil::GetContactPicture - Using streams";

/// A contact whose photo is attachment 7.
class ContactPictureTest : public testing::Test
{
protected:
    ContactPictureTest()
    {
        m_message.attachmentTable = &m_table;
        m_message.attachment = &m_attachment;
        m_table.batches = {{S_OK, {FakeRow::WithAttachment(7), FakeRow::WithAttachment(8)}}};
        m_attachment.data = {0xFF, 0xD8, 0x01};
        m_attachment.stream = &m_stream;
    }
    ~ContactPictureTest() override
    {
        EXPECT_EQ(m_table.references.held, 0);
        EXPECT_EQ(m_attachment.references.held, 0);
        EXPECT_EQ(m_stream.references.held, 0);
    }

    ULONG Read() { return CUtil::GetContactPicture(&m_message, m_picture); }
    /// The data does not fit into an answer.
    void MakeTooLong(std::vector<BYTE> bytes)
    {
        m_attachment.status = MAPI_W_ERRORS_RETURNED;
        m_attachment.error = MAPI_E_NOT_ENOUGH_MEMORY;
        m_stream.bytes = std::move(bytes);
    }

    CFakeStream m_stream;
    CFakeAttach m_attachment;
    CFakeTable m_table;
    CFakeMessage m_message;
    BinaryBlock m_picture = {0xEE};
    CTraceCapture m_trace;
};

TEST_F(ContactPictureTest, TheFirstMarkedAttachmentIsThePhoto)
{
    EXPECT_EQ(Read(), 1U);

    EXPECT_EQ(m_picture, (BinaryBlock{0xFF, 0xD8, 0x01}));
    EXPECT_EQ(m_message.props.calls,
              (Calls{"GetAttachmentTable flags 80000000", "OpenAttach 7 null flags 10"}));
    EXPECT_EQ(m_table.calls,
              (Calls{"SetColumns E210003 7FFF000B flags 0",
                     "Restrict flags 2",
                     "QueryRows FFFFFFF flags 0"}));
    EXPECT_EQ(m_table.lastRestriction.rt, ULONG{RES_PROPERTY});
    EXPECT_EQ(m_table.lastRestriction.res.resProperty.relop, ULONG{RELOP_EQ});
    EXPECT_EQ(m_table.lastRestriction.res.resProperty.ulPropTag, 0x7FFF000BU);
    EXPECT_EQ(m_table.lastValue.ulPropTag, 0x7FFF000BU);
    EXPECT_EQ(m_table.lastValue.Value.b, 1);
    EXPECT_EQ(m_attachment.calls, Calls{"GetProps 37010102 flags 80000000"});
    EXPECT_EQ(m_trace.Messages(), Calls{kOpening});
}

TEST_F(ContactPictureTest, ANullMessageHasNone)
{
    EXPECT_EQ(CUtil::GetContactPicture(nullptr, m_picture), 0U);

    EXPECT_EQ(m_trace.Messages(), Calls{kOpening});
}

TEST_F(ContactPictureTest, ABusyTableIsAskedAgain)
{
    m_table.batches = {{MAPI_E_BUSY, {}}, {S_OK, {FakeRow::WithAttachment(7)}}};

    EXPECT_EQ(Read(), 1U);

    EXPECT_EQ(m_trace.Messages(), (Calls{kOpening, "3 QueryAllRows hResult==MAPI_E_BUSY"}));
}

TEST_F(ContactPictureTest, EachStepOnTheWayToTheDataMayFail)
{
    m_message.attachmentTable = nullptr;
    EXPECT_EQ(Read(), 0U);
    m_message.attachmentTable = &m_table;

    m_table.batches.assign(1, {MAPI_E_CALL_FAILED, {}});
    EXPECT_EQ(Read(), 0U);
    EXPECT_EQ(Read(), 0U) << "no attachment is marked";

    m_table.batches.assign(3, {S_OK, {FakeRow::WithoutEntryId(), FakeRow::WithAttachment(7)}});
    EXPECT_EQ(Read(), 0U) << "the first row has no number";

    m_table.batches.assign(20, {S_OK, {FakeRow::WithAttachment(7)}});
    m_message.attachment = nullptr;
    EXPECT_EQ(Read(), 0U);
    m_message.attachment = &m_attachment;

    m_attachment.status = MAPI_E_NETWORK_ERROR;
    EXPECT_EQ(Read(), 0U);

    EXPECT_EQ(m_picture, BinaryBlock{0xEE});
    EXPECT_EQ(m_trace.Messages(), Calls(6, kOpening));
}

TEST_F(ContactPictureTest, DataThatIsTooLongForAnAnswerComesByAStream)
{
    MakeTooLong(std::vector<BYTE>(100'000, 0x5A));

    EXPECT_EQ(Read(), 1U);

    EXPECT_EQ(m_picture, BinaryBlock(100'000, 0x5A));
    EXPECT_EQ(m_stream.reads, std::vector<ULONG>{100'000}) << "read at once";
    EXPECT_EQ(m_attachment.calls,
              (Calls{"GetProps 37010102 flags 80000000", "OpenProperty 37010102 IStream flags 0"}));
    EXPECT_EQ(
        m_trace.Messages(),
        (Calls{kOpening, kStreams, "3 CUtil::GetContactPicture - Photo retrieved via streams"}));
}

TEST_F(ContactPictureTest, OnlyWantOfMemoryLeadsToTheStream)
{
    MakeTooLong({1});
    m_attachment.error = MAPI_E_NOT_FOUND;

    EXPECT_EQ(Read(), 0U);

    EXPECT_EQ(m_trace.Messages(), Calls{kOpening});
}

TEST_F(ContactPictureTest, AStreamThatCannotBeReadWholeGivesNothing)
{
    MakeTooLong({1, 2, 3});
    m_attachment.openProperty = MAPI_E_NO_ACCESS;
    EXPECT_EQ(Read(), 0U);
    m_attachment.openProperty = S_OK;

    m_table.batches.assign(10, {S_OK, {FakeRow::WithAttachment(7)}});
    m_stream.stat = E_FAIL;
    EXPECT_EQ(Read(), 0U);
    m_stream.stat = S_OK;

    m_stream.statedSize = 0x100000000;
    EXPECT_EQ(Read(), 0U);
    EXPECT_TRUE(m_stream.reads.empty());

    m_stream.statedSize = 4;
    EXPECT_EQ(Read(), 0U) << "a byte is missing";
    m_stream.statedSize = 0;
    m_stream.failingRead = 1;
    EXPECT_EQ(Read(), 0U);

    EXPECT_EQ(m_picture, BinaryBlock{0xEE});
    EXPECT_EQ(m_trace.Count("CUtil::GetContactPicture - Using streams"), 5U);
    EXPECT_EQ(m_trace.Count("CUtil::GetContactPicture - Photo retrieved via streams"), 0U);
}

} // namespace

#include <gtest/gtest.h>

#include <cstring>

#include "FakeObjects.h"
#include "MapiUtil.h"
#include "TraceCapture.h"

namespace
{

using Calls = std::vector<std::string>;

class StreamTextTest : public testing::Test
{
protected:
    StreamTextTest() { m_message.stream = &m_stream; }
    ~StreamTextTest() override { EXPECT_EQ(m_stream.references.held, 0); }

    void Fill(const std::wstring& text)
    {
        m_stream.bytes.resize(text.size() * sizeof(wchar_t));
        std::memcpy(m_stream.bytes.data(), text.data(), m_stream.bytes.size());
    }

    void Read() { CUtil::GetPropFromStream(&m_message, L"TalvoOI", m_text); }

    CFakeStream m_stream;
    CFakeMessage m_message;
    WString m_text;
    CTraceCapture m_trace;
};

TEST_F(StreamTextTest, TheNamedPropertyIsOpenedAsAStreamOfWideText)
{
    Fill(L"calendar");

    Read();

    EXPECT_EQ(m_text, L"calendar");
    EXPECT_EQ(m_message.props.calls,
              (Calls{"GetIDsFromNames 1 name TalvoOI set 20329 flags 0",
                     "OpenProperty 8005001F IStream flags 0"}));
    EXPECT_TRUE(m_trace.Lines().empty());
}

TEST_F(StreamTextTest, TheTextIsReadInPiecesUntilAShortOne)
{
    const std::wstring text(8192 * 2 + 5, L'x');
    Fill(text);

    Read();

    EXPECT_EQ(m_text, text);
    EXPECT_EQ(m_stream.reads, (std::vector<ULONG>{16384, 16384, 16384}));
}

TEST_F(StreamTextTest, AWholePieceIsFollowedByAnEmptyOne)
{
    const std::wstring text(8192, L'x');
    Fill(text);

    Read();

    EXPECT_EQ(m_text, text);
    EXPECT_EQ(m_stream.reads.size(), 2U);
}

TEST_F(StreamTextTest, ATerminatorEndsItsPieceOnly)
{
    std::wstring text(8192 + 3, L'x');
    text[2] = L'\0';
    Fill(text);

    Read();

    EXPECT_EQ(m_text, L"xxxxx");
}

TEST_F(StreamTextTest, TheTextIsAppended)
{
    m_text = L"before ";
    Fill(L"behind");

    Read();

    EXPECT_EQ(m_text, L"before behind");
}

TEST_F(StreamTextTest, ANullObjectDoesNothing)
{
    CUtil::GetPropFromStream(nullptr, L"TalvoOI", m_text);

    EXPECT_TRUE(m_trace.Lines().empty());
}

TEST_F(StreamTextTest, ANameThatIsNotKnownIsTraced)
{
    m_message.props.idStatus = MAPI_E_NOT_FOUND;
    Read();
    m_message.props.idStatus = MAPI_W_ERRORS_RETURNED;
    m_message.props.namedTag = PROP_TAG(PT_ERROR, 0);
    Read();
    m_message.props.idStatus = S_OK;
    Read();

    EXPECT_EQ(m_trace.Count("CUtil::GetPropFromStream, GetIDsFromNames failed"), 3U);
    EXPECT_EQ(m_trace.Lines().size(), 3U);
}

TEST_F(StreamTextTest, APropertyThatCannotBeOpenedIsTraced)
{
    m_message.openProperty = MAPI_E_NOT_FOUND;

    Read();

    EXPECT_EQ(m_trace.Messages(), Calls{"3 CUtil::GetPropFromStream, OpenProperty failed"});
}

TEST_F(StreamTextTest, AStreamWithoutASizeIsTracedAndNotRead)
{
    m_stream.stat = E_FAIL;

    Read();

    EXPECT_EQ(m_trace.Messages(), Calls{"3 CUtil::GetPropFromStream, Stat failed"});
    EXPECT_TRUE(m_stream.reads.empty());
}

TEST_F(StreamTextTest, ASizeAboveTheMaximumReadsNothing)
{
    Fill(L"calendar");
    m_stream.statedSize = 268435457;

    Read();

    EXPECT_EQ(m_trace.Messages(),
              Calls{"3 CUtil::GetPropFromStream, size is larger than the maximum"});
    EXPECT_TRUE(m_stream.reads.empty());
}

TEST_F(StreamTextTest, ASizeOfTheMaximumIsRead)
{
    Fill(L"calendar");
    m_stream.statedSize = 268435456;

    Read();

    EXPECT_EQ(m_text, L"calendar");
}

TEST_F(StreamTextTest, AFailedReadEmptiesTheText)
{
    m_text = L"before";
    Fill(std::wstring(20000, L'x'));
    m_stream.failingRead = 1;

    Read();

    EXPECT_TRUE(m_text.empty());
    EXPECT_EQ(m_trace.Messages(), Calls{"3 CUtil::GetPropFromStream, spStream Read Fail"});
}

} // namespace

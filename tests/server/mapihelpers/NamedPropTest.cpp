#include <gtest/gtest.h>

#include "FakeObjects.h"
#include "MapiUtil.h"

namespace
{

using Calls = std::vector<std::string>;

const GUID kSet = {0x00062004, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

class NamedPropTest : public testing::Test
{
protected:
    HRESULT ById(ULONG type = PT_UNICODE)
    {
        return GetNamedProp(&m_message, kSet, 0x8084, m_value, type, nullptr, true);
    }

    CFakeMessage m_message;
    CMapiBuffer<SPropValue> m_value;
};

TEST_F(NamedPropTest, AnIdentifierIsMappedAndItsPropertyRead)
{
    m_message.props.text = L"ada@example.org";

    EXPECT_EQ(ById(), S_OK);

    ASSERT_TRUE(m_value);
    EXPECT_STREQ(m_value->Value.lpszW, L"ada@example.org");
    EXPECT_EQ(
        m_message.props.calls,
        (Calls{"GetIDsFromNames 1 id 8084 set 62004 flags 0", "GetProps 8005001F flags 80000000"}));
}

TEST_F(NamedPropTest, ATextNameIsMappedByItsText)
{
    EXPECT_EQ(GetNamedProp(&m_message, kSet, 7, m_value, PT_UNICODE, L"TalvoKey", false), S_OK);

    EXPECT_EQ(m_message.props.calls[0], "GetIDsFromNames 1 name TalvoKey set 62004 flags 0");
}

TEST_F(NamedPropTest, WithoutATypeTheStoreDecides)
{
    EXPECT_EQ(ById(PT_UNSPECIFIED), S_OK);

    EXPECT_EQ(m_message.props.calls[1], "GetProps 80050000 flags 80000000");
}

TEST_F(NamedPropTest, ANullObjectIsABadPointer)
{
    EXPECT_EQ(GetNamedProp(nullptr, kSet, 1, m_value, PT_UNICODE, nullptr, true), E_POINTER);
}

TEST_F(NamedPropTest, ANameWithoutAnAnswerIsNotFound)
{
    m_message.props.idStatus = MAPI_E_NETWORK_ERROR;
    EXPECT_EQ(ById(), MAPI_E_NOT_FOUND);

    m_message.props.idStatus = S_OK;
    m_message.props.isTagsNull = true;
    EXPECT_EQ(ById(), MAPI_E_NOT_FOUND);
}

TEST_F(NamedPropTest, AnUnknownNameIsNotFoundAndNothingIsRead)
{
    m_message.props.idStatus = MAPI_W_ERRORS_RETURNED;
    m_message.props.namedTag = PROP_TAG(PT_ERROR, 0);

    EXPECT_EQ(ById(), MAPI_E_NOT_FOUND);
    EXPECT_EQ(m_message.props.calls.size(), 1U);
}

TEST_F(NamedPropTest, ASuccessWithoutAValueIsASuccess)
{
    m_message.props.isValueNull = true;

    EXPECT_EQ(ById(), S_OK);
    EXPECT_FALSE(m_value);
}

TEST_F(NamedPropTest, AMissingPropertyClearsTheErrorOfTheObjectAndIsNotFound)
{
    m_message.props.propStatus = MAPI_W_ERRORS_RETURNED;

    EXPECT_EQ(ById(), MAPI_E_NOT_FOUND);

    EXPECT_FALSE(m_value);
    EXPECT_EQ(m_message.props.calls.back(), "GetLastError 40380");
}

TEST_F(NamedPropTest, AnyOtherStatusComesBackAsItIs)
{
    m_message.props.propStatus = MAPI_E_NETWORK_ERROR;

    EXPECT_EQ(ById(), MAPI_E_NETWORK_ERROR);
    EXPECT_EQ(m_message.props.calls.size(), 2U);
}

TEST_F(NamedPropTest, TheTagAloneIsMappedWithoutReading)
{
    ULONG tag = 7;

    GetNamedTag(&m_message, kSet, 0x8232, PT_BINARY, tag);

    EXPECT_EQ(tag, 0x80050102U);
    EXPECT_EQ(m_message.props.calls, Calls{"GetIDsFromNames 1 id 8232 set 62004 flags 0"});
}

TEST_F(NamedPropTest, TheTagOfAnUnknownNameIsZero)
{
    ULONG tag = 7;
    m_message.props.namedTag = PROP_TAG(PT_ERROR, 0);

    GetNamedTag(&m_message, kSet, 0x8232, PT_BINARY, tag);
    EXPECT_EQ(tag, 0U);

    tag = 7;
    GetNamedTag(nullptr, kSet, 0x8232, PT_BINARY, tag);
    EXPECT_EQ(tag, 0U);
}

} // namespace

// Late binding of the two methods that take times as records.

#include "Bstr.h"
#include "ServerFixture.h"
#include "WorkThread.h"

namespace
{

class TimeRecordTest : public ServerTest
{
protected:
    TimeRecordTest()
    {
        CreateClient();
        CComRef<ITypeInfo> dispatch;
        EXPECT_EQ(m_client->GetTypeInfo(0, LOCALE_USER_DEFAULT, dispatch.Put()), S_OK);
        UINT index = 0;
        EXPECT_EQ(dispatch->GetContainingTypeLib(m_library.Put(), &index), S_OK);
        std::wstring name = L"oiexMapiFileTime";
        CComRef<ITypeInfo> record;
        MEMBERID member = 0;
        USHORT found = 1;
        EXPECT_EQ(m_library->FindName(name.data(), 0, record.Put(), &member, &found), S_OK);
        EXPECT_EQ(GetRecordInfoFromTypeInfo(record.Get(), m_recordInfo.Put()), S_OK);
    }

    VARIANTARG Record(oiexMapiFileTime& time, VARTYPE type = VT_RECORD | VT_BYREF)
    {
        VARIANTARG argument{};
        argument.vt = type;
        argument.pvRecord = &time;
        argument.pRecInfo = m_recordInfo.Get();
        return argument;
    }

    static VARIANTARG Text(const CBstr& text)
    {
        VARIANTARG argument{};
        argument.vt = VT_BSTR;
        argument.bstrVal = text.Get();
        return argument;
    }

    /// `arguments` come last first.
    HRESULT Call(DISPID id, std::vector<VARIANTARG> arguments)
    {
        VariantInit(&m_result);
        DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        return m_client->Invoke(id,
                                IID_NULL,
                                LOCALE_USER_DEFAULT,
                                DISPATCH_METHOD,
                                &parameters,
                                &m_result,
                                &m_exception,
                                nullptr);
    }

    CComRef<ITypeLib> m_library;
    CComRef<IRecordInfo> m_recordInfo;
    oiexMapiFileTime m_start{1, 2};
    oiexMapiFileTime m_end{3, 4};
    VARIANT m_result{};
    EXCEPINFO m_exception{};
};

TEST_F(TimeRecordTest, TimesArePassedAsRecordsByLateBinding)
{
    BringUp();
    ASSERT_EQ(Call(5, {Record(m_end), Record(m_start)}), S_OK);
    EXPECT_EQ(m_result.vt, VT_UI4);
    EXPECT_EQ(m_result.ulVal, 112U);
    PumpUntilEvents(2);

    EXPECT_EQ(m_sink.calls.at(1).values,
              (std::vector<std::wstring>{L"<appointments></appointments>", L"112"}));
    EXPECT_EQ(TheFakeMail().listStart, 0x0000000200000001U);
    EXPECT_EQ(TheFakeMail().listEnd, 0x0000000400000003U);
}

TEST_F(TimeRecordTest, AVariableThatHoldsARecordIsTakenAsWell)
{
    VARIANTARG start = Record(m_start, VT_RECORD);
    VARIANTARG variable{};
    variable.vt = VT_VARIANT | VT_BYREF;
    variable.pvarVal = &start;
    EXPECT_EQ(Call(5, {Record(m_end), variable}), S_OK);
}

TEST_F(TimeRecordTest, TheEmptyMethodWithTimesIsReached)
{
    const CBstr text(L"any");
    EXPECT_EQ(Call(6, {Record(m_end), Record(m_start), Text(text)}), S_OK);
    PumpWaiting();
    EXPECT_TRUE(m_sink.calls.empty());
}

TEST_F(TimeRecordTest, AFailureOfTheMethodIsToldAsAnException)
{
    ReleaseWorkThread(false);
    EXPECT_EQ(Call(5, {Record(m_end), Record(m_start)}), DISP_E_EXCEPTION);
    EXPECT_EQ(m_exception.scode, E_FAIL);
}

TEST_F(TimeRecordTest, WrongArgumentsAreRefused)
{
    const CBstr text(L"any");
    EXPECT_TRUE(FAILED(Call(5, {Record(m_end)})));
    EXPECT_TRUE(FAILED(Call(5, {})));
    EXPECT_TRUE(FAILED(Call(5, {Text(text), Text(text)})));
    EXPECT_TRUE(FAILED(Call(6, {Record(m_end), Record(m_start)})));
}

} // namespace

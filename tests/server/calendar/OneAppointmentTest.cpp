#include <gtest/gtest.h>

#include "TestOutlook.h"

namespace
{

using Texts = std::vector<std::wstring>;

class OneAppointmentTest : public CalendarTest
{
};

TEST_F(OneAppointmentTest, AnAppointmentIsAnsweredByItsKeyTheFirstTimeOnly)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    WString xml;

    EXPECT_NE(m_outlook.GetAppointment(L"00000001", xml), 0U);
    EXPECT_EQ(ValuesIn(xml, L"subject"), Texts{L"subject 1"});
    EXPECT_EQ(ValuesIn(xml, L"startTime"), Texts{L"03/05/2024 10:00:00"});
    EXPECT_EQ(ValuesIn(xml, L"store"), Texts{L"store"});
    EXPECT_EQ(ValuesIn(xml, L"profile"), Texts{L""});

    WString second;
    EXPECT_EQ(m_outlook.GetAppointment(L"00000001", second), 0U);
    EXPECT_EQ(second, L"");
    EXPECT_EQ(LinesWith(m_trace,
                        "name=[c3ViamVjdCAx], rectype=[0], meetingstatus=[0] "
                        "stFirst=[2024/3/5 10:0] duration=[60]")
                  .size(),
              2U);
}

TEST_F(OneAppointmentTest, AnUnknownKeyOrAControllerThatIsNotUpGivesNothing)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    WString xml = L"before";

    EXPECT_EQ(m_outlook.GetAppointment(L"00000099", xml), 0U);
    m_outlook.m_hrInit = 0x80080004;
    EXPECT_EQ(m_outlook.GetAppointment(L"00000001", xml), 0U);

    EXPECT_EQ(xml, L"before");
    EXPECT_TRUE(m_trace.Has(2, "CMyMAPICtrl::ListAppointment - hStatus [0x80080004]"));
}

TEST_F(OneAppointmentTest, AStoredAppointmentIsNotAnsweredEvenByAControllerThatIsNotUp)
{
    AddAppointment(1, "2024-03-05T10:00:00", "2024-03-05T11:00:00");
    List("2024-03-05T00:00:00", "2024-03-06T00:00:00");
    m_outlook.m_hrInit = 1;
    WString xml;

    EXPECT_EQ(m_outlook.GetAppointment(L"00000001", xml), 0U);
    EXPECT_FALSE(m_trace.Has(2, "CMyMAPICtrl::ListAppointment - hStatus [0x1]"));
}

} // namespace

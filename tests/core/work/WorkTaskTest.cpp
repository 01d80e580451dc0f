#include "WorkTask.h"

#include <gtest/gtest.h>

TEST(WorkTask, TextsTravelThroughAPayloadWordAndBack)
{
    WorkTask task;
    task.eTaskType = TaskType::GetAppointment;
    task.Param1 = TaskText(WTEXT("00AB"));

    EXPECT_EQ(TextOfParam(task.Param1), WTEXT("00AB"));
    FreeTaskTexts(task);
    EXPECT_EQ(task.Param1, 0U);
}

TEST(WorkTask, TheEmptyTextIsABlockOfItsOwn)
{
    WorkTask task;
    task.eTaskType = TaskType::DroppedText;
    task.Param1 = TaskText({});

    EXPECT_NE(task.Param1, 0U);
    EXPECT_EQ(TextOfParam(task.Param1), WString());
    FreeTaskTexts(task);
}

TEST(WorkTask, AnAbsentTextReadsAsEmpty)
{
    EXPECT_EQ(TextOfParam(0), WString());
}

TEST(WorkTask, TwoHalvesShareAPayloadWordLowHalfFirst)
{
    EXPECT_EQ(TaskHalves(1, 2), 0x0000000200000001ULL);
    EXPECT_EQ(LowHalf(0x0000000200000001ULL), 1U);
    EXPECT_EQ(HighHalf(0x0000000200000001ULL), 2U);
}

TEST(WorkTask, ATimeKeepsBothItsHalves)
{
    const FILETIME time{0x89ABCDEF, 0x01234567};

    const std::uint64_t param = TaskTime(time);

    EXPECT_EQ(param, 0x0123456789ABCDEFULL);
    EXPECT_EQ(TimeOfParam(param).dwLowDateTime, 0x89ABCDEFU);
    EXPECT_EQ(TimeOfParam(param).dwHighDateTime, 0x01234567U);
}

TEST(WorkTask, NumbersOfTheTypesAreFixed)
{
    EXPECT_EQ(static_cast<int>(TaskType::InitMapi), 0);
    EXPECT_EQ(static_cast<int>(TaskType::GetAppointments), 3);
    EXPECT_EQ(static_cast<int>(TaskType::Hibernate), 8);
    EXPECT_EQ(static_cast<int>(TaskType::Release), 9);
    EXPECT_EQ(static_cast<int>(TaskType::DeleteAppt), 10);
    EXPECT_EQ(static_cast<int>(TaskType::PostDelete), 13);
    EXPECT_EQ(static_cast<int>(TaskType::PostUpdate), 14);
    EXPECT_EQ(static_cast<int>(TaskType::PostAdd), 15);
    EXPECT_EQ(static_cast<int>(TaskType::AddContact), 18);
    EXPECT_EQ(static_cast<int>(TaskType::ResolveByPhoneNumber), 22);
}

namespace
{

/// The three words behind a task whose payload is all text, after everything owned was freed.
struct FreedParams
{
    int type;
    bool first;
    bool second;
    bool third;
};

class TaskOwnershipTest : public testing::TestWithParam<FreedParams>
{
};

std::string TypeName(const testing::TestParamInfo<FreedParams>& info)
{
    return "Type" + std::to_string(info.param.type);
}

} // namespace

TEST_P(TaskOwnershipTest, ExactlyTheOwnedTextsAreFreed)
{
    const FreedParams& expected = GetParam();
    WorkTask task;
    task.eTaskType = static_cast<TaskType>(expected.type);
    task.Param1 = TaskText(WTEXT("1"));
    task.Param2 = TaskText(WTEXT("2"));
    task.Param3 = TaskText(WTEXT("3"));
    WorkTask kept = task;

    FreeTaskTexts(task);

    EXPECT_EQ(task.Param1 == 0, expected.first);
    EXPECT_EQ(task.Param2 == 0, expected.second);
    EXPECT_EQ(task.Param3 == 0, expected.third);

    // What stayed is still readable, and is given back by hand.
    WorkTask rest;
    rest.eTaskType = TaskType::SendMail;
    rest.Param1 = task.Param1 != 0 ? kept.Param1 : 0;
    rest.Param2 = task.Param2 != 0 ? kept.Param2 : 0;
    rest.Param3 = task.Param3 != 0 ? kept.Param3 : 0;
    FreeTaskTexts(rest);
}

INSTANTIATE_TEST_SUITE_P(AllTypes,
                         TaskOwnershipTest,
                         testing::Values(FreedParams{0, false, false, false},
                                         FreedParams{1, true, true, true},
                                         FreedParams{2, true, false, false},
                                         FreedParams{3, false, false, false},
                                         FreedParams{4, false, false, true},
                                         FreedParams{5, false, true, false},
                                         FreedParams{6, true, false, false},
                                         FreedParams{7, true, false, false},
                                         FreedParams{8, false, false, false},
                                         FreedParams{9, false, false, false},
                                         FreedParams{10, false, true, true},
                                         FreedParams{11, false, true, true},
                                         FreedParams{12, false, true, true},
                                         FreedParams{13, false, true, false},
                                         FreedParams{14, false, true, false},
                                         FreedParams{15, false, true, false},
                                         FreedParams{16, false, true, true},
                                         FreedParams{17, false, true, true},
                                         FreedParams{18, false, true, true},
                                         FreedParams{19, false, false, false},
                                         FreedParams{20, true, false, false},
                                         FreedParams{21, true, false, false},
                                         FreedParams{22, true, false, false},
                                         FreedParams{23, false, false, false}),
                         TypeName);

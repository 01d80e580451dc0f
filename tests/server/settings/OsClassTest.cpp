#include "OsClass.h"

#include <gtest/gtest.h>

namespace
{

TEST(OsClass, EachGenerationHasItsNumber)
{
    constexpr DWORD kOld = VER_PLATFORM_WIN32_WINDOWS;
    constexpr DWORD kNt = VER_PLATFORM_WIN32_NT;

    EXPECT_EQ(static_cast<int>(ClassifyOs(kOld, 4, 0)), 1);
    EXPECT_EQ(static_cast<int>(ClassifyOs(kOld, 4, 10)), 2);
    EXPECT_EQ(static_cast<int>(ClassifyOs(kNt, 3, 51)), 3);
    EXPECT_EQ(static_cast<int>(ClassifyOs(kNt, 4, 0)), 3);
    EXPECT_EQ(static_cast<int>(ClassifyOs(kOld, 4, 90)), 4);
    EXPECT_EQ(static_cast<int>(ClassifyOs(kNt, 5, 0)), 5);
    EXPECT_EQ(static_cast<int>(ClassifyOs(kNt, 5, 1)), 6);
    EXPECT_EQ(static_cast<int>(ClassifyOs(kNt, 6, 0)), 8);
    EXPECT_EQ(static_cast<int>(ClassifyOs(kNt, 6, 2)), 8);
    EXPECT_EQ(static_cast<int>(ClassifyOs(kNt, 10, 0)), 8);
}

TEST(OsClass, WhatIsNotListedIsZero)
{
    EXPECT_EQ(static_cast<int>(ClassifyOs(VER_PLATFORM_WIN32_NT, 5, 2)), 0);
    EXPECT_EQ(static_cast<int>(ClassifyOs(VER_PLATFORM_WIN32_WINDOWS, 4, 50)), 0);
    EXPECT_EQ(static_cast<int>(ClassifyOs(VER_PLATFORM_WIN32s, 3, 11)), 0);
}

TEST(OsClass, ThisSystemIsVistaOrLater)
{
    EXPECT_EQ(CurrentOsClass(), OsClass::VistaOrLater);
}

} // namespace

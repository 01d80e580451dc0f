#include "EventText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "AtMemory.h"

TEST(EventText, HoldsACopyWithATerminatorBehindIt)
{
    WString source = WTEXT("abc");
    CEventText text{WStringView(source)};
    source[0] = 'x';

    EXPECT_EQ(WString(text.View()), WString(WTEXT("abc")));
    EXPECT_EQ(text.Data()[3], 0);
    EXPECT_FALSE(text.IsLost());
}

TEST(EventText, RoomIsTerminatedAndOfTheLengthThatWasAskedFor)
{
    CEventText text(std::size_t{5});
    ASSERT_FALSE(text.IsLost());
    std::fill_n(text.Data(), 5, static_cast<WCHAR>('x'));

    EXPECT_EQ(WString(text.View()), WString(5, static_cast<WCHAR>('x')));
    EXPECT_EQ(text.Data()[5], 0);
}

TEST(EventText, AnEmptyTextHasABlockAndADefaultOneHasNone)
{
    CEventText empty{WStringView()};
    CEventText none;

    ASSERT_NE(empty.Data(), nullptr);
    EXPECT_EQ(empty.Data()[0], 0);
    EXPECT_EQ(none.Data(), nullptr);
    EXPECT_FALSE(empty.IsLost());
    EXPECT_FALSE(none.IsLost());
}

TEST(EventText, WhatMemoryCannotHoldIsLost)
{
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
    for (const std::size_t length : {kMost, kMost / sizeof(WCHAR)})
    {
        CEventText text(length);
        EXPECT_TRUE(text.IsLost()) << length;
        EXPECT_EQ(text.Data(), nullptr);
        EXPECT_EQ(text.View().size(), 0U);
    }
}

TEST(EventText, AssignmentTakesTheBlockOverAndForgetsALoss)
{
    CEventText text(std::numeric_limits<std::size_t>::max());
    CEventText other{WStringView(WTEXT("other"))};
    const WCHAR* const block = other.Data();

    text = std::move(other);

    EXPECT_EQ(text.Data(), block);
    EXPECT_EQ(text.View().size(), 5U);
    EXPECT_FALSE(text.IsLost());
    CEventText third(std::move(text));
    EXPECT_EQ(third.Data(), block);
}

TEST(EventText, ReleaseHandsTheBlockToTheCaller)
{
    CEventText text{WStringView(WTEXT("abc"))};

    WCHAR* const block = text.Release();

    ASSERT_NE(block, nullptr);
    EXPECT_EQ(WString(block), WString(WTEXT("abc")));
    EXPECT_EQ(text.Data(), nullptr);
    EXPECT_EQ(text.View().size(), 0U);
    at_mem_free(block);
}

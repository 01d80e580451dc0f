#include "TaggedReader.h"

#include <gtest/gtest.h>

using dtclient::CTaggedReader;
using dtclient::TaggedValue;

TEST(TaggedReader, AValueInCDataIsToldApartFromAPlainOne)
{
    CTaggedReader reader("<a><![CDATA[x]]></a><b>y</b><c/>");
    TaggedValue value;

    ASSERT_TRUE(reader.TakeElement("a", value));
    EXPECT_EQ(value.text, "x");
    EXPECT_TRUE(value.inCData);
    ASSERT_TRUE(reader.TakeElement("b", value));
    EXPECT_EQ(value.text, "y");
    EXPECT_FALSE(value.inCData);
    ASSERT_TRUE(reader.TakeElement("c", value));
    EXPECT_EQ(value.text, "");
    EXPECT_TRUE(reader.AtEnd());
}

TEST(TaggedReader, WhiteSpaceBetweenElementsDoesNotCountButInsideItDoes)
{
    CTaggedReader reader(" \t<a> x </a>\r\n ");
    TaggedValue value;

    ASSERT_TRUE(reader.TakeElement("a", value));
    EXPECT_EQ(value.text, " x ");
    EXPECT_TRUE(reader.AtEnd());
}

TEST(TaggedReader, APlainValueEndsAtItsOwnEndTagOnly)
{
    CTaggedReader reader("<a>1<b>2</b></a>");
    TaggedValue value;

    ASSERT_TRUE(reader.TakeElement("a", value));
    EXPECT_EQ(value.text, "1<b>2</b>");
}

TEST(TaggedReader, AFailedTakeLeavesThePlace)
{
    CTaggedReader reader("<a>x");
    TaggedValue value;

    EXPECT_FALSE(reader.TakeElement("a", value));
    EXPECT_FALSE(reader.TakeElement("b", value));
    EXPECT_FALSE(reader.SkipElement("a"));
    EXPECT_FALSE(reader.TakeEnd("a"));
    EXPECT_EQ(reader.Offset(), 0U);
    EXPECT_TRUE(reader.TakeStart("a"));
    EXPECT_EQ(reader.Offset(), 3U);
}

TEST(TaggedReader, TextBetweenTheCDataAndTheEndTagIsRefused)
{
    CTaggedReader reader("<a><![CDATA[x]]>y</a>");
    TaggedValue value;

    EXPECT_FALSE(reader.TakeElement("a", value));
}

TEST(TaggedReader, AStartTagIsSeenWithoutBeingTaken)
{
    CTaggedReader reader("<ab1><x/>");
    std::string_view name;

    ASSERT_TRUE(reader.PeekStart(name));
    EXPECT_EQ(name, "ab1");
    EXPECT_EQ(reader.Offset(), 0U);
}

TEST(TaggedReader, WhatIsNoStartTagIsNotSeenAsOne)
{
    for (const char* const text : {"", "x", "<", "<>", "</a>", "<a b='c'>", "<a", "<!-- x -->"})
    {
        CTaggedReader reader(text);
        std::string_view name;
        EXPECT_FALSE(reader.PeekStart(name)) << text;
    }
}

TEST(TaggedReader, OneNameDoesNotMatchALongerOne)
{
    CTaggedReader reader("<subject>x</subject>");

    EXPECT_FALSE(reader.TakeStart("sub"));
    EXPECT_TRUE(reader.TakeStart("subject"));
}

TEST(TaggedReader, SkippingTakesAllThatIsInside)
{
    CTaggedReader reader("<a><b>1</b><b>2</b></a><c/>");

    EXPECT_TRUE(reader.SkipElement("a"));
    EXPECT_TRUE(reader.SkipElement("c"));
    EXPECT_TRUE(reader.AtEnd());
}

TEST(TaggedReader, OnlyTheThreeEscapesAreUndone)
{
    EXPECT_EQ(dtclient::UnescapeText("a &amp; b &lt;c&gt; &quot; &#65; &am"),
              "a & b <c> &quot; &#65; &am");
}

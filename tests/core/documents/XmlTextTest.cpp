#include "XmlText.h"

#include <gtest/gtest.h>

namespace
{

/// The rule, one character at a time.
WString EscapedPlainly(WStringView text)
{
    WString escaped;
    for (const WCHAR unit : text)
    {
        if (unit == WTEXT('&'))
        {
            escaped += WTEXT("&amp;");
        }
        else if (unit == WTEXT('<'))
        {
            escaped += WTEXT("&lt;");
        }
        else if (unit == WTEXT('>'))
        {
            escaped += WTEXT("&gt;");
        }
        else
        {
            escaped += unit;
        }
    }
    return escaped;
}

TEST(EscapeXmlText, TheThreeCharactersBecomeEntities)
{
    EXPECT_EQ(EscapeXmlText(WTEXT("a & b")), WTEXT("a &amp; b"));
    EXPECT_EQ(EscapeXmlText(WTEXT("<&>")), WTEXT("&lt;&amp;&gt;"));
    EXPECT_EQ(EscapeXmlText(WTEXT("]]>")), WTEXT("]]&gt;"));
}

TEST(EscapeXmlText, AnEntityIsEscapedOnceMore)
{
    EXPECT_EQ(EscapeXmlText(WTEXT("&amp;")), WTEXT("&amp;amp;"));
}

TEST(EscapeXmlText, QuotesAndEverythingElseComeBackUnchanged)
{
    EXPECT_EQ(EscapeXmlText(WTEXT("")), WTEXT(""));
    EXPECT_EQ(EscapeXmlText(WTEXT("\"plain\" 'text'\t\r\n")), WTEXT("\"plain\" 'text'\t\r\n"));
}

TEST(EscapeXmlText, CharactersThatOnlyLookLikeMarkupStay)
{
    // The same low byte, the neighbours, and the full-width forms.
    const WString text = {0x0126, 0x263C, 0x3E3E, 0x003D, 0x0025, 0x0027, 0xFF1C, 0xFF06};

    EXPECT_EQ(EscapeXmlText(text), text);
}

TEST(EscapeXmlText, MarkupIsFoundAtEveryPlaceOfALongText)
{
    for (const WCHAR markup : {WTEXT('&'), WTEXT('<'), WTEXT('>')})
    {
        for (std::size_t at = 0; at < 40; ++at)
        {
            WString text(40, WTEXT('x'));
            text[at] = markup;

            EXPECT_EQ(EscapeXmlText(text), EscapedPlainly(text)) << "at " << at;
        }
    }
}

TEST(EscapeXmlText, MarkupAloneInAVeryLongTextIsCountedWhole)
{
    const WString text(100'000, WTEXT('&'));

    EXPECT_EQ(EscapedXmlLength(text), 500'000U);
    EXPECT_EQ(EscapeXmlText(text).size(), 500'000U);
    EXPECT_TRUE(EscapeXmlText(text).ends_with(WTEXT("&amp;&amp;")));
}

TEST(EscapeXmlText, EveryCodeUnitIsTreatedAsTheRuleSays)
{
    for (std::uint32_t unit = 0; unit < 0x10000; ++unit)
    {
        const WString text(11, static_cast<WCHAR>(unit));

        ASSERT_EQ(EscapeXmlText(text), EscapedPlainly(text)) << "code unit " << unit;
        ASSERT_EQ(EscapedXmlLength(text), EscapedPlainly(text).size()) << "code unit " << unit;
    }
}

} // namespace

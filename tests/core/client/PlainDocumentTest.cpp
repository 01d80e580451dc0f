#include "PlainDocument.h"

#include <gtest/gtest.h>

using dtclient::DocumentError;
using dtclient::ParsePlainDocument;
using dtclient::PlainDocument;

namespace
{
constexpr const char* kProfile =
    "<CurrentOLProfile><ProfileName><![CDATA[R&amp;D]]></ProfileName>"
    "<EmailAddress><![CDATA[ana@example.org]]></EmailAddress>\t\t\t\t\t\t\t  "
    "<StoreEid>01AB</StoreEid><FirstName>A&lt;n&gt;a</FirstName><LastName></LastName>"
    "</CurrentOLProfile>";

PlainDocument Parse(const std::string& text)
{
    PlainDocument document;
    DocumentError error;
    EXPECT_TRUE(ParsePlainDocument(text, document, error)) << error.what;
    return document;
}

std::string ErrorOf(const std::string& text)
{
    PlainDocument document;
    DocumentError error;
    EXPECT_FALSE(ParsePlainDocument(text, document, error));
    return error.what;
}
} // namespace

TEST(PlainDocument, ValuesKeepTheirOrderAndLoseTheirEscaping)
{
    const PlainDocument profile = Parse(kProfile);

    EXPECT_EQ(profile.root, "CurrentOLProfile");
    ASSERT_EQ(profile.values.size(), 5U);
    EXPECT_EQ(profile.values[0], (std::pair<std::string, std::string>("ProfileName", "R&D")));
    EXPECT_EQ(profile.Find("FirstName"), "A<n>a");
    EXPECT_EQ(profile.Find("LastName"), "");
    EXPECT_EQ(profile.Find("Other"), "");
}

TEST(PlainDocument, ADeclarationInFrontIsPassedOver)
{
    EXPECT_EQ(Parse("<?xml version=\"1.0\" encoding=\"gb2312\"?><Contacts></Contacts>").root,
              "Contacts");
}

TEST(PlainDocument, WhatIsNoDocumentIsRefused)
{
    EXPECT_EQ(ErrorOf(""), "the document does not begin with a tag");
    EXPECT_EQ(ErrorOf("<A><B>x</A>"), "<B> has no end");
    EXPECT_EQ(ErrorOf("<A><B>x</B>"), "expected </A>");
    EXPECT_EQ(ErrorOf("<A></A>more"), "text behind the end of the document");
}

TEST(PlainDocument, TheTableHasALineForEachValue)
{
    EXPECT_EQ(dtclient::PlainDocumentTable(Parse(kProfile)),
              "ProfileName   R&D\n"
              "EmailAddress  ana@example.org\n"
              "StoreEid      01AB\n"
              "FirstName     A<n>a\n"
              "LastName\n");
}

TEST(PlainDocument, JsonIsNamedAfterTheRoot)
{
    EXPECT_EQ(dtclient::PlainDocumentJson(Parse("<P><A>1</A><B>x</B></P>")),
              "{\n  \"P\": {\n    \"A\": \"1\",\n    \"B\": \"x\"\n  }\n}");
}

TEST(PlainDocument, AHeartbeatIsOneJsonLine)
{
    EXPECT_EQ(dtclient::TextEventJson("OnTrace", "line", "[a:1][f]:\"x\""),
              "{\"event\":\"OnTrace\",\"line\":\"[a:1][f]:\\\"x\\\"\"}");
}

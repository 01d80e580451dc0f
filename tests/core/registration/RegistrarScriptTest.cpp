#include "RegistrarScript.h"

#include <gtest/gtest.h>

namespace
{

struct Parsed
{
    std::optional<ScriptError> error;
    std::vector<ScriptTree> trees;
};

Parsed Parse(WStringView script, const ScriptReplacements& replacements = {})
{
    Parsed parsed;
    parsed.error = ParseRegistrarScript(script, replacements, parsed.trees);
    return parsed;
}

std::string ReasonOf(WStringView script)
{
    const Parsed parsed = Parse(script);
    return parsed.error ? parsed.error->reason : "";
}

TEST(RegistrarScript, KeysValuesAndModifiersAreRead)
{
    const Parsed parsed = Parse(WTEXT("HKCR\n{\n"
                                      "  Plain = s 'a text'\n"
                                      "  {\n"
                                      "    val Name = s 'value'\n"
                                      "    Child\n"
                                      "  }\n"
                                      "  NoRemove Shared { ForceRemove Own = s 'x' }\n"
                                      "  Delete Old\n"
                                      "}\n"));

    ASSERT_FALSE(parsed.error) << parsed.error->reason;
    ASSERT_EQ(parsed.trees.size(), 1U);
    EXPECT_EQ(parsed.trees[0].root, ScriptRoot::ClassesRoot);
    const std::vector<ScriptKey>& keys = parsed.trees[0].keys;
    ASSERT_EQ(keys.size(), 3U);
    EXPECT_EQ(keys[0].name, WTEXT("Plain"));
    EXPECT_FALSE(keys[0].forceRemove || keys[0].noRemove || keys[0].deleteOnly);
    ASSERT_EQ(keys[0].values.size(), 2U);
    EXPECT_EQ(keys[0].values[0].name, WTEXT(""));
    EXPECT_EQ(keys[0].values[0].text, WTEXT("a text"));
    EXPECT_EQ(keys[0].values[1].name, WTEXT("Name"));
    EXPECT_EQ(keys[0].values[1].text, WTEXT("value"));
    ASSERT_EQ(keys[0].keys.size(), 1U);
    EXPECT_EQ(keys[0].keys[0].name, WTEXT("Child"));
    EXPECT_TRUE(keys[1].noRemove);
    ASSERT_EQ(keys[1].keys.size(), 1U);
    EXPECT_TRUE(keys[1].keys[0].forceRemove);
    EXPECT_TRUE(keys[2].deleteOnly);
}

TEST(RegistrarScript, EveryRootIsKnownByBothNamesInAnyCase)
{
    const Parsed parsed = Parse(WTEXT("HKCR { } hkcu { } HKLM { } HKU { } HKCC { }\n"
                                      "HKEY_CLASSES_ROOT { } HKEY_CURRENT_USER { }\n"
                                      "HKEY_LOCAL_MACHINE { } HKEY_USERS { }\n"
                                      "HKEY_CURRENT_CONFIG { }"));

    ASSERT_FALSE(parsed.error) << parsed.error->reason;
    const std::vector<ScriptRoot> expected = {ScriptRoot::ClassesRoot,
                                              ScriptRoot::CurrentUser,
                                              ScriptRoot::LocalMachine,
                                              ScriptRoot::Users,
                                              ScriptRoot::CurrentConfig};
    ASSERT_EQ(parsed.trees.size(), 10U);
    for (std::size_t i = 0; i < parsed.trees.size(); i++)
    {
        EXPECT_EQ(parsed.trees[i].root, expected[i % 5]) << i;
    }
}

TEST(RegistrarScript, EveryKindOfValueIsRead)
{
    const Parsed parsed = Parse(WTEXT("HKCU { K { val S = s 'text' val E = e '%%TEMP%%'\n"
                                      "val M = m 'one\\0two\\0' val D = d 4294967295\n"
                                      "val H = d 0xfF val B = b 00a1FF } }"));

    ASSERT_FALSE(parsed.error) << parsed.error->reason;
    const std::vector<ScriptValue>& values = parsed.trees.at(0).keys.at(0).values;
    ASSERT_EQ(values.size(), 6U);
    EXPECT_EQ(values[0].kind, ScriptValueKind::Text);
    EXPECT_EQ(values[1].kind, ScriptValueKind::ExpandText);
    EXPECT_EQ(values[1].text, WTEXT("%TEMP%"));
    EXPECT_EQ(values[2].kind, ScriptValueKind::MultiText);
    EXPECT_EQ(values[2].text, WString(WTEXT("one\0two\0"), 8));
    EXPECT_EQ(values[3].kind, ScriptValueKind::Number);
    EXPECT_EQ(values[3].number, 4294967295U);
    EXPECT_EQ(values[4].number, 255U);
    EXPECT_EQ(values[5].kind, ScriptValueKind::Bytes);
    EXPECT_EQ(values[5].bytes, (std::vector<std::uint8_t>{0x00, 0xA1, 0xFF}));
}

TEST(RegistrarScript, ReplacementsStandInNamesAndData)
{
    const Parsed parsed =
        Parse(WTEXT("HKCR { '%APPID%' { val Path = s 'at %MODULE%, %MODULE%' } }"),
              {{WTEXT("APPID"), WTEXT("{GUID}")}, {WTEXT("MODULE"), WTEXT("C:\\it's.exe")}});

    ASSERT_FALSE(parsed.error) << parsed.error->reason;
    const ScriptKey& key = parsed.trees.at(0).keys.at(0);
    EXPECT_EQ(key.name, WTEXT("{GUID}"));
    EXPECT_EQ(key.values.at(0).text, WTEXT("at C:\\it's.exe, C:\\it's.exe"));
}

TEST(RegistrarScript, AReplacedTextIsNotReplacedAgain)
{
    const Parsed parsed = Parse(WTEXT("HKCR { %A% }"), {{WTEXT("A"), WTEXT("%A%")}});

    ASSERT_FALSE(parsed.error) << parsed.error->reason;
    EXPECT_EQ(parsed.trees.at(0).keys.at(0).name, WTEXT("%A%"));
}

TEST(RegistrarScript, TwoApostrophesAreOneAndKeywordsInQuotesAreNames)
{
    const Parsed parsed = Parse(WTEXT("HKCR { 'NoRemove' = s 'it''s' 'val' '}' }"));

    ASSERT_FALSE(parsed.error) << parsed.error->reason;
    const std::vector<ScriptKey>& keys = parsed.trees.at(0).keys;
    ASSERT_EQ(keys.size(), 3U);
    EXPECT_EQ(keys[0].name, WTEXT("NoRemove"));
    EXPECT_EQ(keys[0].values.at(0).text, WTEXT("it's"));
    EXPECT_EQ(keys[1].name, WTEXT("val"));
    EXPECT_EQ(keys[2].name, WTEXT("}"));
}

TEST(RegistrarScript, BracesWithinANameBelongToIt)
{
    const Parsed parsed = Parse(WTEXT("HKCR { NoRemove CLSID { ForceRemove {1234} } }"));

    ASSERT_FALSE(parsed.error) << parsed.error->reason;
    EXPECT_EQ(parsed.trees.at(0).keys.at(0).keys.at(0).name, WTEXT("{1234}"));
}

TEST(RegistrarScript, AnEmptyScriptHasNoTrees)
{
    EXPECT_TRUE(Parse(WTEXT("")).trees.empty());
    EXPECT_TRUE(Parse(WTEXT(" \r\n\t")).trees.empty());
    EXPECT_FALSE(Parse(WTEXT("")).error);
}

TEST(RegistrarScript, WhatIsWrongIsSaidWithItsLine)
{
    const Parsed parsed = Parse(WTEXT("HKCR\n{\n  Key = q 'x'\n}\n"));

    ASSERT_TRUE(parsed.error);
    EXPECT_STREQ(parsed.error->reason, "unknown kind of value");
    EXPECT_EQ(parsed.error->line, 3U);
}

TEST(RegistrarScript, BrokenScriptsAreRefused)
{
    EXPECT_EQ(ReasonOf(WTEXT("HKXX { }")), "unknown root key");
    EXPECT_EQ(ReasonOf(WTEXT("'HKCR' { }")), "unknown root key");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR Key")), "a block must follow the root key");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR")), "a block must follow the root key");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { Key")), "a block does not end");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { Key {")), "a block does not end");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { 'Key }")), "a quoted text does not end");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { ForceRemove }")), "a key needs a name");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { ForceRemove '' }")), "a key needs a name");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { = s x }")), "a key needs a name");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { Key = s")), "the script ends too early");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { Key = 's' x }")), "unknown kind of value");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { K { val Name s x } }")), "a value needs \"=\"");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { Key = d 4294967296 }")), "not a 32-bit number");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { Key = d 12a }")), "not a 32-bit number");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { Key = d '' }")), "not a 32-bit number");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { Key = b 123 }")), "not bytes in hexadecimal");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { Key = b xx }")), "not bytes in hexadecimal");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { %NAME% }")), "unknown replacement");
    EXPECT_EQ(ReasonOf(WTEXT("HKCR { %NAME }")), "a replacement does not end");
}

TEST(RegistrarScript, NestingHasAnEnd)
{
    WString deep = WTEXT("HKCR {");
    for (int i = 0; i < 31; i++)
    {
        deep += WTEXT(" K {");
    }

    EXPECT_EQ(ReasonOf(deep), "a block does not end");
    EXPECT_EQ(ReasonOf(deep + WTEXT(" K {")), "keys are nested too deep");
}

} // namespace

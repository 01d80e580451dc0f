#include <cstring>

#include "RandomRestriction.h"

using namespace mapitest;

namespace
{

class RestrictionTest : public StoreTest
{
protected:
    /// How many of the inbox's messages match.
    ULONG Matching(SRestriction& res)
    {
        const TableRef table = Contents(4);
        EXPECT_EQ(table->Restrict(&res, 0), S_OK);
        ULONG count = 77;
        EXPECT_EQ(table->GetRowCount(0, &count), S_OK);
        return count;
    }
};

TEST_F(RestrictionTest, ThousandsOfRandomRestrictionsAgreeWithAPlainEvaluation)
{
    Rng rng(20261102);
    std::vector<Sample> samples;
    std::string messages;
    for (int i = 0; i < 120; ++i)
    {
        samples.push_back(MakeSample(rng));
        messages += (messages.empty() ? "" : ",\n") + MessageJson(1000 + i, samples.back());
    }
    WriteDocument(UsualDocument(messages));
    Start();
    const TableRef table = Contents(4);
    CTags columns{PR_INSTANCE_KEY};
    ASSERT_EQ(table->SetColumns(columns, 0), S_OK);
    size_t matched = 0;
    for (int round = 0; round < 4000; ++round)
    {
        const auto made = MakeRestriction(rng, 0);
        ASSERT_EQ(table->Restrict(&made->res, round % 2 == 0 ? 0 : TBL_BATCH), S_OK) << round;
        const CRows rows = AllRows(table);
        std::vector<int> got;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            ULONG64 id = 0;
            std::memcpy(&id, rows[i].lpProps[0].Value.bin.lpb + 4, sizeof(id));
            got.push_back(static_cast<int>(id) - 1000);
        }
        std::vector<int> expected;
        for (size_t i = 0; i < samples.size(); ++i)
        {
            if (made->means(samples[i]))
            {
                expected.push_back(static_cast<int>(i));
            }
        }
        ASSERT_EQ(got, expected) << "round " << round;
        matched += expected.size();
    }
    // The restrictions have to tell rows apart, or the comparison says nothing.
    EXPECT_GT(matched, 4000U * 120U / 10U);
    EXPECT_LT(matched, 4000U * 120U * 9U / 10U);
}

TEST_F(RestrictionTest, WhatTheLibraryDoesNotDoIsRefused)
{
    WriteDocument(UsualDocument(""));
    Start();
    const TableRef table = Contents(4);
    SPropValue value{};
    value.ulPropTag = PR_IMPORTANCE;
    SRestriction res{};
    res.rt = RES_PROPERTY;
    res.res.resProperty = {RELOP_RE, PR_IMPORTANCE, &value};
    EXPECT_EQ(table->Restrict(&res, 0), MAPI_E_TOO_COMPLEX);
    res.res.resProperty = {9, PR_IMPORTANCE, &value};
    EXPECT_EQ(table->Restrict(&res, 0), MAPI_E_INVALID_PARAMETER);
    res.res.resProperty = {RELOP_EQ, PR_SUBJECT_W, &value};
    EXPECT_EQ(table->Restrict(&res, 0), MAPI_E_INVALID_TYPE);
    res.res.resProperty = {RELOP_EQ, PR_IMPORTANCE, nullptr};
    EXPECT_EQ(table->Restrict(&res, 0), MAPI_E_INVALID_PARAMETER);
    res.rt = 77;
    EXPECT_EQ(table->Restrict(&res, 0), MAPI_E_INVALID_PARAMETER);
    res.rt = RES_AND;
    res.res.resAnd = {2, nullptr};
    EXPECT_EQ(table->Restrict(&res, 0), MAPI_E_INVALID_PARAMETER);
    std::vector<SRestriction> deep(300);
    for (size_t i = 0; i + 1 < deep.size(); ++i)
    {
        deep[i].rt = RES_NOT;
        deep[i].res.resNot = {0, &deep[i + 1]};
    }
    deep.back().rt = RES_EXIST;
    deep.back().res.resExist = {0, PR_SUBJECT_W, 0};
    EXPECT_EQ(table->Restrict(deep.data(), 0), MAPI_E_TOO_COMPLEX);
}

TEST_F(RestrictionTest, NarrowTextIsComparedAsText)
{
    WriteDocument(UsualDocument(
        R"({ "id": 100, "folder": 4, "class": "IPM.Note", "properties": { "PR_SUBJECT_W": "\u00c4rger" } })"));
    Start();
    const TableRef table = Contents(4);
    char text[] = "\xE4rger";
    SPropValue value{};
    value.ulPropTag = PR_SUBJECT_A;
    value.Value.lpszA = text;
    SRestriction res{};
    res.rt = RES_PROPERTY;
    res.res.resProperty = {RELOP_EQ, PR_SUBJECT_A, &value};
    ASSERT_EQ(table->Restrict(&res, 0), S_OK);
    ULONG count = 0;
    ASSERT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 1U);
}

TEST_F(RestrictionTest, OneOfSeveralValuesIsEnough)
{
    WriteDocument(UsualDocument(
        R"({ "id": 100, "folder": 4, "class": "IPM.Note", "properties": { "0x66061003": [1, 5] } })"));
    Start();
    const TableRef table = Contents(4);
    SPropValue value{};
    value.ulPropTag = 0x66060003;
    value.Value.l = 5;
    SRestriction res{};
    res.rt = RES_PROPERTY;
    res.res.resProperty = {RELOP_EQ, 0x66061003, &value};
    ASSERT_EQ(table->Restrict(&res, 0), S_OK);
    ULONG count = 0;
    ASSERT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 1U);
}

TEST_F(RestrictionTest, CommentStandsForTheRestrictionInIt)
{
    WriteDocument(UsualDocument(
        R"({ "id": 100, "folder": 4, "class": "IPM.Note", "properties": { "PR_IMPORTANCE": 1 } },
           { "id": 101, "folder": 4, "class": "IPM.Note", "properties": {} })"));
    Start();
    SRestriction inner{};
    inner.rt = RES_EXIST;
    inner.res.resExist = {0, PR_IMPORTANCE, 0};
    SRestriction res{};
    res.rt = RES_COMMENT;
    res.res.resComment = {0, &inner, nullptr};
    EXPECT_EQ(Matching(res), 1U);
    res.res.resComment.lpRes = nullptr; // a comment alone restricts nothing
    EXPECT_EQ(Matching(res), 2U);
}

TEST_F(RestrictionTest, BytesAreFoundByTheirContent)
{
    WriteDocument(UsualDocument(
        R"({ "id": 100, "folder": 4, "class": "IPM.Note", "properties": { "0x66010102": "00112233" } },
           { "id": 101, "folder": 4, "class": "IPM.Note", "properties": { "0x66010102": "1122" } },
           { "id": 102, "folder": 4, "class": "IPM.Note", "properties": { "0x66010102": "112244" } })"));
    Start();
    BYTE bytes[] = {0x11, 0x22};
    SPropValue value{};
    value.ulPropTag = 0x66010102;
    value.Value.bin = {2, bytes};
    SRestriction res{};
    res.rt = RES_CONTENT;
    for (const auto& [level, matching] :
         {std::pair<ULONG, ULONG>{FL_SUBSTRING, 3}, {FL_PREFIX, 2}, {FL_FULLSTRING, 1}})
    {
        res.res.resContent = {level, 0x66010102, &value};
        EXPECT_EQ(Matching(res), matching) << level;
    }
}

TEST_F(RestrictionTest, SizeCountsTheBytesOfEveryType)
{
    WriteDocument(UsualDocument(
        R"({ "id": 100, "folder": 4, "class": "IPM.Note", "properties": { "0x66010002": 1, "0x66020003": 1,
             "0x6603000B": true, "0x66040014": 1, "0x66050005": 1.5, "0x66060048": "{00020329-0000-0000-C000-000000000046}",
             "0x66070102": "001122", "0x6608001F": "abc", "0x66091003": [1, 2, 3],
             "PR_CLIENT_SUBMIT_TIME": "2026-01-01T00:00:00Z" } })"));
    Start();
    const std::pair<ULONG, ULONG> sizes[] = {{0x66010002, 2},
                                             {0x66020003, 4},
                                             {0x6603000B, 2},
                                             {0x66040014, 8},
                                             {0x66050005, 8},
                                             {0x66060048, 16},
                                             {0x66070102, 3},
                                             {0x6608001F, 8},
                                             {PR_CLIENT_SUBMIT_TIME, 8},
                                             {0x66091003, 4}}; // of one of several values
    SRestriction res{};
    res.rt = RES_SIZE;
    for (const auto& [tag, cb] : sizes)
    {
        res.res.resSize = {RELOP_EQ, tag, cb};
        EXPECT_EQ(Matching(res), 1U) << std::hex << tag;
        res.res.resSize = {RELOP_GT, tag, cb};
        EXPECT_EQ(Matching(res), 0U) << std::hex << tag;
        res.res.resSize = {RELOP_LT, tag, cb + 1};
        EXPECT_EQ(Matching(res), 1U) << std::hex << tag;
    }
}

TEST_F(RestrictionTest, SubrestrictionLooksAtAttachmentsToo)
{
    WriteDocument(UsualDocument(
        R"({ "id": 100, "folder": 4, "class": "IPM.Note", "properties": {}, "attachments": [
             { "properties": { "PR_ATTACH_METHOD": 1 } }, { "properties": { "PR_ATTACH_METHOD": 2 } } ] },
           { "id": 101, "folder": 4, "class": "IPM.Note", "properties": {} })"));
    Start();
    SPropValue method = NumberValue(PR_ATTACH_METHOD, 2);
    SRestriction inner{};
    inner.rt = RES_PROPERTY;
    inner.res.resProperty = {RELOP_EQ, PR_ATTACH_METHOD, &method};
    SRestriction res{};
    res.rt = RES_SUBRESTRICTION;
    res.res.resSub = {PR_MESSAGE_ATTACHMENTS, &inner};
    EXPECT_EQ(Matching(res), 1U);
    method.Value.l = 5;
    EXPECT_EQ(Matching(res), 0U);
    res.res.resSub = {PR_CONTAINER_CONTENTS, &inner}; // no subobject of a message
    EXPECT_EQ(Matching(res), 0U);
}

} // namespace

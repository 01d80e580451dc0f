#include <shlwapi.h>

#include "StoreFixture.h"

using namespace mapitest;

extern "C" HRESULT WINAPI DllGetClassObject(REFCLSID, REFIID, void**);
extern "C" HRESULT WINAPI MAPIOpenLocalFormContainer(void**);
extern "C" WINBOOL WINAPI FGetComponentPath(LPCSTR, LPCSTR, LPSTR, DWORD, WINBOOL);

namespace
{

/// The functions beside the interfaces.
class UtilityTest : public StoreTest
{
protected:
    void SetUp() override
    {
        StoreTest::SetUp();
        WriteDocument(UsualDocument(R"({ "id": 100, "folder": 4, "class": "IPM.Note",
            "properties": { "PR_SUBJECT_W": "pear", "PR_IMPORTANCE": 2 } },
          { "id": 101, "folder": 4, "class": "IPM.Note", "properties": { "PR_SUBJECT_W": "fig", "PR_IMPORTANCE": 2 } },
          { "id": 102, "folder": 4, "class": "IPM.Note", "properties": { "PR_SUBJECT_W": "apple" } })"));
        Start();
    }
    static ::IMAPITable* Plain(const TableRef& table)
    {
        return reinterpret_cast<::IMAPITable*>(table.Get());
    }
    static std::vector<std::wstring> Texts(const CRows& rows)
    {
        std::vector<std::wstring> texts;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            texts.emplace_back(rows[i].lpProps[0].Value.lpszW);
        }
        return texts;
    }
    static std::string ReadAll(IStream* stream)
    {
        char text[64] = {};
        ULONG cb = 0;
        EXPECT_GE(stream->Read(text, sizeof(text), &cb), S_OK);
        return std::string(text, cb);
    }
};

TEST_F(UtilityTest, AllRowsComeWithColumnsRestrictionAndOrder)
{
    const TableRef table = Contents(4);
    CTags columns{PR_SUBJECT_W};
    SPropValue two = NumberValue(PR_IMPORTANCE, 2);
    SRestriction res{};
    res.rt = RES_PROPERTY;
    res.res.resProperty = {RELOP_EQ, PR_IMPORTANCE, &two};
    SSortOrderSet order{1, 0, 0, {{PR_SUBJECT_W, TABLE_SORT_ASCEND}}};
    CRows rows;
    ASSERT_EQ(HrQueryAllRows(Plain(table), columns, &res, &order, 0, rows.Put()), S_OK);
    EXPECT_EQ(Texts(rows), (std::vector<std::wstring>{L"fig", L"pear"}));
    // What is set stays; the rows come from the first one on all the same.
    ASSERT_EQ(HrQueryAllRows(Plain(table), nullptr, nullptr, nullptr, 2, rows.Put()), S_OK);
    EXPECT_EQ(Texts(rows), (std::vector<std::wstring>{L"fig", L"pear"}));
    EXPECT_EQ(HrQueryAllRows(Plain(table), nullptr, nullptr, nullptr, 1, rows.Put()),
              MAPI_E_TABLE_TOO_BIG);
    EXPECT_EQ(rows.Get(), nullptr);
    EXPECT_EQ(HrQueryAllRows(nullptr, nullptr, nullptr, nullptr, 0, rows.Put()),
              MAPI_E_INVALID_PARAMETER);
    res.rt = 77;
    EXPECT_EQ(HrQueryAllRows(Plain(table), nullptr, &res, nullptr, 0, rows.Put()),
              MAPI_E_INVALID_PARAMETER);
}

TEST_F(UtilityTest, OnePropertyIsReadAndWritten)
{
    const MessageRef message = OpenMessage(100);
    CHeld<SPropValue> value;
    ASSERT_EQ(HrGetOneProp(message.Get(), PR_SUBJECT_W, value.Put()), S_OK);
    EXPECT_STREQ(value->Value.lpszW, L"pear");
    EXPECT_EQ(HrGetOneProp(message.Get(), PR_COMMENT_W, value.Put()), MAPI_E_NOT_FOUND);
    EXPECT_EQ(value.Get(), nullptr);
    SPropValue text = TextValue(PR_COMMENT_W, L"ripe");
    ASSERT_EQ(HrSetOneProp(message.Get(), &text), S_OK);
    EXPECT_EQ(TextProp(message.Get(), PR_COMMENT_W), L"ripe");
    SPropValue computed = NumberValue(PR_OBJECT_TYPE, 1);
    EXPECT_EQ(HrSetOneProp(message.Get(), &computed), MAPI_E_COMPUTED);
    EXPECT_EQ(HrGetOneProp(nullptr, PR_SUBJECT_W, value.Put()), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(HrSetOneProp(message.Get(), nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(FPropExists(message.Get(), PR_IMPORTANCE), TRUE);
    EXPECT_EQ(FPropExists(message.Get(), PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_COMMENT_W))), TRUE);
    EXPECT_EQ(FPropExists(message.Get(), PROP_TAG(PT_BINARY, PROP_ID(PR_IMPORTANCE))), FALSE);
    EXPECT_EQ(FPropExists(message.Get(), PR_LOCATION_W), FALSE);
    EXPECT_EQ(FPropExists(nullptr, PR_SUBJECT_W), FALSE);
}

TEST_F(UtilityTest, PropertyIsFoundInAnArrayByItsTagOrItsIdentifier)
{
    SPropValue values[] = {NumberValue(PR_IMPORTANCE, 1), TextValue(PR_SUBJECT_W, L"x")};
    EXPECT_EQ(PpropFindProp(values, 2, PR_SUBJECT_W), &values[1]);
    EXPECT_EQ(PpropFindProp(values, 2, PR_SUBJECT_A), nullptr);
    EXPECT_EQ(PpropFindProp(values, 2, PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_SUBJECT_W))),
              &values[1]);
    EXPECT_EQ(PpropFindProp(values, 1, PR_SUBJECT_W), nullptr);
    EXPECT_EQ(PpropFindProp(nullptr, 2, PR_SUBJECT_W), nullptr);
    EXPECT_EQ(LpValFindProp(PR_SUBJECT_A, 2, values), &values[1]);
    EXPECT_EQ(LpValFindProp(PR_COMMENT_W, 2, values), nullptr);
}

TEST_F(UtilityTest, ReferencesAreCountedAndNoObjectIsNone)
{
    const FolderRef folder = OpenFolder(4);
    EXPECT_EQ(UlAddRef(folder.Get()), 2U);
    EXPECT_EQ(UlRelease(folder.Get()), 1U);
    EXPECT_EQ(UlAddRef(nullptr), 0U);
    EXPECT_EQ(UlRelease(nullptr), 0U);
}

TEST_F(UtilityTest, StreamOnAFileIsMadeReadAndMissed)
{
    std::wstring path = StorePath() + L"\\a file.txt";
    CRef<IStream> stream;
    EXPECT_EQ(
        OpenStreamOnFile(
            MAPIAllocateBuffer, MAPIFreeBuffer, STGM_READ, path.data(), nullptr, stream.Put()),
        MAPI_E_NOT_FOUND);
    EXPECT_EQ(stream.Get(), nullptr);
    ASSERT_EQ(OpenStreamOnFile(MAPIAllocateBuffer,
                               MAPIFreeBuffer,
                               STGM_CREATE | STGM_READWRITE,
                               path.data(),
                               nullptr,
                               stream.Put()),
              S_OK);
    ULONG cb = 0;
    EXPECT_EQ(stream->Write("twelve bytes", 12, &cb), S_OK);
    stream.Reset();
    EXPECT_EQ(ReadFileText(path), "twelve bytes");
    ASSERT_EQ(
        OpenStreamOnFile(
            MAPIAllocateBuffer, MAPIFreeBuffer, STGM_READ, path.data(), nullptr, stream.Put()),
        S_OK);
    EXPECT_EQ(ReadAll(stream.Get()), "twelve bytes");
    EXPECT_NE(stream->Write("x", 1, &cb), S_OK);
    EXPECT_EQ(OpenStreamOnFile(
                  MAPIAllocateBuffer, MAPIFreeBuffer, STGM_READ, nullptr, nullptr, stream.Put()),
              MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(OpenStreamOnFile(
                  MAPIAllocateBuffer, MAPIFreeBuffer, STGM_READ, path.data(), nullptr, nullptr),
              MAPI_E_INVALID_PARAMETER);
}

TEST_F(UtilityTest, StreamOnAUniqueFileGoesWithItsLastReference)
{
    std::wstring folder = StorePath();
    std::wstring prefix = L"uni";
    const auto count = [&] {
        int files = 0;
        WIN32_FIND_DATAW found{};
        HANDLE search = FindFirstFileW((StorePath() + L"\\uni*").c_str(), &found);
        for (bool more = search != INVALID_HANDLE_VALUE; more;
             more = FindNextFileW(search, &found) != FALSE)
        {
            ++files;
        }
        FindClose(search);
        return files;
    };
    CRef<IStream> first;
    CRef<IStream> second;
    for (CRef<IStream>* const stream : {&first, &second})
    {
        ASSERT_EQ(OpenStreamOnFile(MAPIAllocateBuffer,
                                   MAPIFreeBuffer,
                                   SOF_UNIQUEFILENAME | STGM_CREATE | STGM_READWRITE |
                                       STGM_DELETEONRELEASE,
                                   folder.data(),
                                   prefix.data(),
                                   stream->Put()),
                  S_OK);
    }
    EXPECT_EQ(count(), 2);
    ULONG cb = 0;
    EXPECT_EQ(first->Write("text", 4, &cb), S_OK);
    EXPECT_EQ(first->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(ReadAll(first.Get()), "text");
    first.Reset();
    EXPECT_EQ(count(), 1);
    second.Reset();
    EXPECT_EQ(count(), 0);
    std::wstring nowhere = StorePath() + L"\\none";
    EXPECT_EQ(OpenStreamOnFile(MAPIAllocateBuffer,
                               MAPIFreeBuffer,
                               SOF_UNIQUEFILENAME | STGM_CREATE | STGM_READWRITE,
                               nowhere.data(),
                               prefix.data(),
                               first.Put()),
              MAPI_E_INVALID_PARAMETER);
}

TEST_F(UtilityTest, WhatTheLibraryHasNotAnswersSo)
{
    void* object = this;
    EXPECT_EQ(DllGetClassObject(IID_IMessage, IID_IUnknown, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(DllGetClassObject(IID_IMessage, IID_IUnknown, nullptr), E_INVALIDARG);
    object = this;
    EXPECT_EQ(MAPIOpenLocalFormContainer(&object), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(object, nullptr);
    CRef<IStream> stream;
    EXPECT_EQ(WrapCompressedRTFStream(nullptr, 0, stream.Put()), MAPI_E_NO_SUPPORT);
    char path[MAX_PATH] = "before";
    char component[] = "{5E0C7D54-2B1F-4C7B-9E67-0A4B8F2D1C33}"; // no component of any product
    EXPECT_EQ(FGetComponentPath(component, nullptr, path, sizeof(path), FALSE), FALSE);
    EXPECT_STREQ(path, "");
    EXPECT_EQ(FGetComponentPath(nullptr, nullptr, path, sizeof(path), FALSE), FALSE);
    EXPECT_EQ(ScInitMapiUtil(0), S_OK);
    EXPECT_EQ(ScInitMapiUtil(1), MAPI_E_UNKNOWN_FLAGS);
    DeinitMapiUtil();
    CRef<IMalloc> allocator(MAPIGetDefaultMalloc());
    ASSERT_TRUE(allocator);
    void* memory = allocator->Alloc(10);
    EXPECT_NE(memory, nullptr);
    allocator->Free(memory);
}

} // namespace

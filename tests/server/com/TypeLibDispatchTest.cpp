#include "TypeLibDispatch.h"

#include <gtest/gtest.h>

#include "Bstr.h"
#include "dtOIEx64_i.h"
#include "ModulePath.h"

namespace
{

class TypeLibDispatchTest : public testing::Test
{
protected:
    DISPID IdOf(const wchar_t* name)
    {
        std::wstring text = name;
        LPOLESTR pointer = text.data();
        DISPID id = DISPID_UNKNOWN;
        EXPECT_EQ(m_dispatch.GetIDsOfNames(IID_NULL, &pointer, 1, &id), S_OK) << name;
        return id;
    }

    CTypeLibDispatch m_dispatch{ModulePath(nullptr), IID_IMapiDtClient};
};

TEST_F(TypeLibDispatchTest, TheFifteenMethodsHaveTheirIdsInOrder)
{
    EXPECT_EQ(IdOf(L"Initialize"), 1);
    EXPECT_EQ(IdOf(L"GetCurProfileInfo"), 2);
    EXPECT_EQ(IdOf(L"SendMail"), 3);
    EXPECT_EQ(IdOf(L"ResolveName"), 4);
    EXPECT_EQ(IdOf(L"ListAppointment"), 5);
    EXPECT_EQ(IdOf(L"ListRecurrentInstance"), 6);
    EXPECT_EQ(IdOf(L"ListRecentEmail"), 7);
    EXPECT_EQ(IdOf(L"GetAppointment"), 8);
    EXPECT_EQ(IdOf(L"GetContactDetail"), 9);
    EXPECT_EQ(IdOf(L"GetPersonalContact"), 10);
    EXPECT_EQ(IdOf(L"SearchForContacts"), 11);
    EXPECT_EQ(IdOf(L"ResolveByUri"), 12);
    EXPECT_EQ(IdOf(L"ResolveByPhoneNumber"), 13);
    EXPECT_EQ(IdOf(L"ReleaseApp"), 14);
    EXPECT_EQ(IdOf(L"PostEvent"), 15);
}

TEST_F(TypeLibDispatchTest, NamesKnowNoCase)
{
    EXPECT_EQ(IdOf(L"INITIALIZE"), 1);
}

TEST_F(TypeLibDispatchTest, AnUnknownNameIsRefused)
{
    std::wstring name = L"Terminate";
    LPOLESTR pointer = name.data();
    DISPID id = 0;
    EXPECT_EQ(m_dispatch.GetIDsOfNames(IID_NULL, &pointer, 1, &id), DISP_E_UNKNOWNNAME);
}

TEST_F(TypeLibDispatchTest, OneTypeInfoIsGiven)
{
    UINT count = 0;
    EXPECT_EQ(m_dispatch.GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);

    CComRef<ITypeInfo> info;
    EXPECT_EQ(m_dispatch.GetTypeInfo(0, info.Put()), S_OK);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, IID_IMapiDtClient);
    EXPECT_EQ(attributes->cFuncs, 7 + 15); // those of IDispatch first
    EXPECT_NE(attributes->wTypeFlags & TYPEFLAG_FDUAL, 0);
    info->ReleaseTypeAttr(attributes);
    EXPECT_EQ(m_dispatch.GetTypeInfo(1, info.Put()), DISP_E_BADINDEX);
}

TEST_F(TypeLibDispatchTest, WrongArgumentsAreRefused)
{
    EXPECT_EQ(m_dispatch.GetTypeInfoCount(nullptr), E_POINTER);
    EXPECT_EQ(m_dispatch.GetTypeInfo(0, nullptr), E_POINTER);
    EXPECT_EQ(m_dispatch.GetIDsOfNames(IID_IUnknown, nullptr, 0, nullptr), DISP_E_UNKNOWNINTERFACE);
    EXPECT_EQ(m_dispatch.Invoke(
                  nullptr, 1, IID_IUnknown, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
              DISP_E_UNKNOWNINTERFACE);
}

TEST_F(TypeLibDispatchTest, AFileWithoutALibraryIsToldOnEveryCall)
{
    CTypeLibDispatch broken(L"Z:\\no\\such\\file.tlb", IID_IMapiDtClient);
    CComRef<ITypeInfo> info;
    LPOLESTR name = nullptr;
    DISPID id = 0;

    EXPECT_TRUE(FAILED(broken.GetTypeInfo(0, info.Put())));
    EXPECT_TRUE(FAILED(broken.GetIDsOfNames(IID_NULL, &name, 1, &id)));
    EXPECT_TRUE(FAILED(
        broken.Invoke(nullptr, 1, IID_NULL, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr)));
}

/// The library as it is in the file, without the dispatch code.
class TypeLibraryTest : public testing::Test
{
protected:
    TypeLibraryTest()
    {
        EXPECT_EQ(LoadTypeLibEx(ModulePath(nullptr).c_str(), REGKIND_NONE, m_library.Put()), S_OK);
    }

    CComRef<ITypeLib> m_library;
};

TEST_F(TypeLibraryTest, ItIsOfThe64BitKindAndCarriesItsIdentifier)
{
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(m_library->GetLibAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, LIBID_dtOIEx64Lib);
    EXPECT_EQ(attributes->syskind, SYS_WIN64);
    EXPECT_EQ(attributes->wMajorVerNum, 1);
    EXPECT_EQ(attributes->wMinorVerNum, 0);
    m_library->ReleaseTLibAttr(attributes);
}

TEST_F(TypeLibraryTest, TheIdentifiersAreThoseThatClientsKnow)
{
    const auto text = [](REFGUID guid) {
        wchar_t buffer[40]{};
        StringFromGUID2(guid, buffer, 40);
        return std::wstring(buffer);
    };
    EXPECT_EQ(text(CLSID_MapiDtClient), L"{1019ADC7-17CB-4489-AFD5-6642C7400ACE}");
    EXPECT_EQ(text(IID_IMapiDtClient), L"{BCEDA04E-FDD7-4E90-B0C6-A9653E6B3F58}");
    EXPECT_EQ(text(DIID__IMapiDtClientEvents), L"{F912582E-FB94-4AFD-89F9-5FC9BB6EC51F}");
    EXPECT_EQ(text(LIBID_dtOIEx64Lib), L"{A470B11E-041B-407E-BE88-C2039972F999}");
}

TEST_F(TypeLibraryTest, TheFourteenEventsHaveTheirIdsAndArguments)
{
    struct Event
    {
        const wchar_t* name;
        std::vector<VARTYPE> types;
    };
    const std::vector<Event> events = {{L"OnCalendarUpdated", {VT_UI4, VT_BSTR}},
                                       {L"OnInitialize", {VT_I4}},
                                       {L"OnListAppointment", {VT_UI4, VT_BSTR}},
                                       {L"OnListRecurrentInstance", {VT_UI4, VT_BSTR}},
                                       {L"OnGetAppointment", {VT_UI4, VT_BSTR}},
                                       {L"OnGetRecentEmails", {VT_UI4, VT_BSTR}},
                                       {L"OnResolveName", {VT_BSTR}},
                                       {L"OnGetContactDetail", {VT_UI4, VT_BSTR}},
                                       {L"OnGetPersonalContact", {VT_BSTR}},
                                       {L"OnContactUpdated", {VT_UI4, VT_BSTR}},
                                       {L"OnSearchForContacts", {VT_BSTR}},
                                       {L"OnResolveByUri", {VT_BSTR}},
                                       {L"OnResolveByPhoneNumber", {VT_BSTR}},
                                       {L"OnTrace", {VT_BSTR}}};
    CComRef<ITypeInfo> info;
    ASSERT_EQ(m_library->GetTypeInfoOfGuid(DIID__IMapiDtClientEvents, info.Put()), S_OK);

    for (UINT i = 0; i < events.size(); i++)
    {
        std::wstring name = events[i].name;
        LPOLESTR pointer = name.data();
        DISPID id = 0;
        EXPECT_EQ(info->GetIDsOfNames(&pointer, 1, &id), S_OK);
        EXPECT_EQ(id, static_cast<DISPID>(i) + 1);

        FUNCDESC* function = nullptr;
        ASSERT_EQ(info->GetFuncDesc(i, &function), S_OK);
        EXPECT_EQ(function->memid, id);
        std::vector<VARTYPE> types;
        for (SHORT argument = 0; argument < function->cParams; argument++)
        {
            types.push_back(function->lprgelemdescParam[argument].tdesc.vt);
        }
        EXPECT_EQ(types, events[i].types);
        info->ReleaseFuncDesc(function);
    }
}

/// The type of an argument as text: "BSTR", "UI4*" and so on; a type of the library by its name.
std::wstring TypeText(ITypeInfo& info, const TYPEDESC& type)
{
    if (type.vt == VT_PTR)
    {
        return TypeText(info, *type.lptdesc) + L"*";
    }
    if (type.vt == VT_USERDEFINED)
    {
        CComRef<ITypeInfo> named;
        CBstr name;
        EXPECT_EQ(info.GetRefTypeInfo(type.hreftype, named.Put()), S_OK);
        EXPECT_EQ(named->GetDocumentation(MEMBERID_NIL, name.Put(), nullptr, nullptr, nullptr),
                  S_OK);
        return std::wstring(name.View());
    }
    switch (type.vt)
    {
    case VT_BSTR:
        return L"BSTR";
    case VT_UI4:
        return L"UI4";
    case VT_UINT:
        return L"UINT";
    case VT_BOOL:
        return L"BOOL";
    case VT_HRESULT:
        return L"HRESULT";
    default:
        return std::to_wstring(type.vt);
    }
}

/// A function of a type as text: its arguments between blanks, "out" ones in brackets.
std::wstring FunctionText(ITypeInfo& info, UINT index)
{
    FUNCDESC* function = nullptr;
    EXPECT_EQ(info.GetFuncDesc(index, &function), S_OK);
    std::wstring text = TypeText(info, function->elemdescFunc.tdesc) + L":";
    for (SHORT at = 0; at < function->cParams; at++)
    {
        const ELEMDESC& argument = function->lprgelemdescParam[at];
        const std::wstring type = TypeText(info, argument.tdesc);
        const bool isOut = (argument.paramdesc.wParamFlags & PARAMFLAG_FOUT) != 0;
        text += isOut ? L" [" + type + L"]" : L" " + type;
    }
    info.ReleaseFuncDesc(function);
    return text;
}

/// The half of the dual interface that stands for its table of functions.
CComRef<ITypeInfo> TableHalf(ITypeLib& library)
{
    // The library answers with the dispatch half; the table half is behind it.
    CComRef<ITypeInfo> dispatchHalf;
    HREFTYPE reference = 0;
    CComRef<ITypeInfo> tableHalf;
    EXPECT_EQ(library.GetTypeInfoOfGuid(IID_IMapiDtClient, dispatchHalf.Put()), S_OK);
    EXPECT_EQ(dispatchHalf->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), S_OK);
    EXPECT_EQ(dispatchHalf->GetRefTypeInfo(reference, tableHalf.Put()), S_OK);
    return tableHalf;
}

TEST_F(TypeLibraryTest, TheFifteenMethodsHaveTheirArguments)
{
    const std::vector<std::wstring> methods = {
        L"HRESULT: TLVOI_MAILTYPE BSTR BSTR",
        L"HRESULT: [BSTR*]",
        L"HRESULT: BSTR BSTR BSTR",
        L"HRESULT: BSTR",
        L"HRESULT: oiexMapiFileTime* oiexMapiFileTime* [UI4*]",
        L"HRESULT: BSTR oiexMapiFileTime* oiexMapiFileTime* [UI4*]",
        L"HRESULT: UI4 BSTR UI4 [UI4*]",
        L"HRESULT: BSTR [UI4*]",
        L"HRESULT: BSTR [UI4*]",
        L"HRESULT:",
        L"HRESULT: BSTR UINT",
        L"HRESULT: BSTR",
        L"HRESULT: BSTR",
        L"HRESULT: BOOL",
        L"HRESULT: TLVOI_EVENTTYPE BSTR",
    };
    const CComRef<ITypeInfo> table = TableHalf(*m_library.Get());
    for (UINT i = 0; i < methods.size(); i++)
    {
        EXPECT_EQ(FunctionText(*table.Get(), i), methods[i]) << i + 1;
    }
}

TEST_F(TypeLibraryTest, TheTimeRecordHasEightBytesAndAnIdentifier)
{
    CComRef<ITypeInfo> info;
    std::wstring name = L"oiexMapiFileTime";
    MEMBERID member = 0;
    USHORT found = 1;
    ASSERT_EQ(m_library->FindName(name.data(), 0, info.Put(), &member, &found), S_OK);
    ASSERT_EQ(found, 1);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->typekind, TKIND_RECORD);
    EXPECT_EQ(attributes->cbSizeInstance, 8U);
    EXPECT_NE(attributes->guid, GUID_NULL);
    info->ReleaseTypeAttr(attributes);
}

TEST_F(TypeLibraryTest, TheInterfaceIsDualAndForAutomation)
{
    const CComRef<ITypeInfo> tableHalf = TableHalf(*m_library.Get());
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(tableHalf->GetTypeAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, IID_IMapiDtClient);
    EXPECT_EQ(attributes->typekind, TKIND_INTERFACE);
    EXPECT_EQ(attributes->cFuncs, 15);
    EXPECT_NE(attributes->wTypeFlags & TYPEFLAG_FDUAL, 0);
    EXPECT_NE(attributes->wTypeFlags & TYPEFLAG_FOLEAUTOMATION, 0);
    tableHalf->ReleaseTypeAttr(attributes);
}

TEST_F(TypeLibraryTest, TheEnumerationsKeepTheirNumbers)
{
    EXPECT_EQ(TLVOIMAILTYPE_OFFICEOUTLOOK, 1);
    EXPECT_EQ(TLVOIMAILTYPE_LOTUSNOTES, 16);
    EXPECT_EQ(TLVOIEVE_APPT_ADD, 0);
    EXPECT_EQ(TLVOIEVE_APPT_UPDATE, 1);
    EXPECT_EQ(TLVOIEVE_APPT_DELETE, 2);
    EXPECT_EQ(TLVOIEVE_APPT_END, 3);
}

} // namespace

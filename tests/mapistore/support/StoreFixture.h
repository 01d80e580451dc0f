#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Mapi64.h"
#include "MapiStoreControl.h"
#include "MapiTags64.h"

namespace mapitest
{

/// Owner of one COM reference.
template <class T>
class CRef
{
public:
    CRef() = default;
    explicit CRef(T* adopted) : m_pointer(adopted) {}
    CRef(CRef&& other) noexcept : m_pointer(std::exchange(other.m_pointer, nullptr)) {}
    CRef& operator=(CRef&& other) noexcept
    {
        Reset();
        m_pointer = std::exchange(other.m_pointer, nullptr);
        return *this;
    }
    ~CRef() { Reset(); }
    void Reset()
    {
        if (m_pointer != nullptr)
        {
            std::exchange(m_pointer, nullptr)->Release();
        }
    }
    T** Put()
    {
        Reset();
        return &m_pointer;
    }
    template <class Other>
    Other** PutAs()
    {
        return reinterpret_cast<Other**>(Put());
    }
    T* Get() const { return m_pointer; }
    T* operator->() const { return m_pointer; }
    explicit operator bool() const { return m_pointer != nullptr; }

private:
    T* m_pointer = nullptr;
};

/// Owner of a MAPI buffer.
template <class T>
class CHeld
{
public:
    CHeld() = default;
    CHeld(CHeld&& other) noexcept : m_pointer(std::exchange(other.m_pointer, nullptr)) {}
    CHeld& operator=(CHeld&& other) noexcept
    {
        Reset();
        m_pointer = std::exchange(other.m_pointer, nullptr);
        return *this;
    }
    ~CHeld() { Reset(); }
    void Reset() { MAPIFreeBuffer(std::exchange(m_pointer, nullptr)); }
    T** Put()
    {
        Reset();
        return &m_pointer;
    }
    T* Get() const { return m_pointer; }
    T* operator->() const { return m_pointer; }
    T& operator[](size_t i) const { return m_pointer[i]; }

private:
    T* m_pointer = nullptr;
};

/// Owner of a row set.
class CRows
{
public:
    CRows() = default;
    CRows(CRows&& other) noexcept : m_rows(std::exchange(other.m_rows, nullptr)) {}
    ~CRows() { Reset(); }
    void Reset();
    SRowSet** Put()
    {
        Reset();
        return &m_rows;
    }
    ULONG Count() const { return m_rows != nullptr ? m_rows->cRows : 0; }
    const SRow& operator[](size_t i) const { return m_rows->aRow[i]; }
    SRowSet* Get() const { return m_rows; }

private:
    SRowSet* m_rows = nullptr;
};

using TableRef = CRef<mapi64::IMAPITable>;
using StoreRef = CRef<mapi64::IMsgStore>;
using SessionRef = CRef<mapi64::IMAPISession>;
using BookRef = CRef<mapi64::IAddrBook>;
using FolderRef = CRef<IMAPIFolder>;
using MessageRef = CRef<IMessage>;

/// A tag array of any length.
class CTags
{
public:
    CTags(std::initializer_list<ULONG> tags);
    explicit CTags(const std::vector<ULONG>& tags);
    operator SPropTagArray*() { return reinterpret_cast<SPropTagArray*>(m_words.data()); }

private:
    std::vector<ULONG> m_words;
};

/// A store folder of its own for a test, and a session over it.
///
/// `SetUp` takes the folder and starts nothing: a test writes its document and then logs on.
class StoreTest : public testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    void WriteDocument(const std::string& text);
    std::string ReadDocument() const;
    const std::wstring& StorePath() const { return m_path; }

    /// MAPIInitialize, logon to the default profile, default store.
    void Start();
    void LogOn();
    /// Releases the session, MAPIUninitialize, and expects a clean ledger.
    void Stop();

    FolderRef OpenFolder(ULONG64 id, ULONG flags = MAPI_BEST_ACCESS);
    MessageRef OpenMessage(ULONG64 id, ULONG flags = MAPI_BEST_ACCESS);
    TableRef Contents(ULONG64 folder, ULONG flags = MAPI_UNICODE);
    std::string FolderId(ULONG64 id) const;
    std::string MessageId(ULONG64 id, bool tableForm = false) const;
    std::string EntryId(ULONG type, const std::string& uidHex, ULONG64 id) const;

    SessionRef session;
    StoreRef store;
    std::string storeUid = "5D1F6A0B93C84E27A1B0C2D3E4F50617";
    std::string bookUid = "B3A1E9F04C5D4682977E10AABBCCDDEE";

private:
    std::wstring m_path;
    bool m_running = false;
};

/// A document with the folders of the usual roles, and whatever messages are given as JSON.
///
/// Ids: store 1; root 2, ipmSubtree 3, inbox 4, outbox 5, sent items 6, deleted items 7, calendar 8,
/// team calendar 9 below it, contacts 10, hidden calendar 11; containers 28 (global) and 29 below it;
/// entries 30 Ada, 31 the list, 32 Bo; messages from 100.
std::string UsualDocument(const std::string& messages, const std::string& extra = "");

std::string HexOf(const std::string& bytes);
std::string BytesOf(const std::string& hex);
std::wstring TempFolder();
void RemoveFolder(const std::wstring& path);
std::string ReadFileText(const std::wstring& path);
void WriteFileText(const std::wstring& path, const std::string& text);

/// The one value of a GetProps; PT_ERROR when there is none.
template <class T>
CHeld<SPropValue> GetProp(T* object, ULONG tag, ULONG flags = MAPI_UNICODE)
{
    CTags tags{tag};
    CHeld<SPropValue> value;
    ULONG count = 0;
    const HRESULT hr = object->GetProps(tags, flags, &count, value.Put());
    EXPECT_TRUE(SUCCEEDED(hr)) << std::hex << hr;
    return value;
}

template <class T>
std::wstring TextProp(T* object, ULONG tag)
{
    const CHeld<SPropValue> value = GetProp(object, tag);
    return value.Get() != nullptr && value->ulPropTag == tag ? value->Value.lpszW : L"<none>";
}

/// One value to set; the text has to outlive the use.
SPropValue TextValue(ULONG tag, const wchar_t* text);
SPropValue NumberValue(ULONG tag, LONG number);

/// All rows of a table from its cursor.
CRows AllRows(const TableRef& table);

/// One column of all rows as text.
std::vector<std::wstring> TextColumn(const TableRef& table, ULONG tag);

MapiStoreCounts Counts();
std::string Report();

} // namespace mapitest

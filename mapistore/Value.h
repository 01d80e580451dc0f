#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Mapi64.h"

namespace mapistore
{

/// The tag with another type; the header's macro leaves its arguments bare.
constexpr ULONG ChangeType(ULONG tag, ULONG type)
{
    return (tag & 0xFFFF0000) | type;
}

/// Large values that live in a file of their own are read when they are asked for.
class IValueFile
{
public:
    virtual ~IValueFile() = default;
    /// Size in bytes, without reading the file.
    virtual std::uint64_t Size() const = 0;
    /// Throws `CMapiError` (MAPI_E_DISK_ERROR) when the file is gone or shorter than it was.
    virtual std::string Read() const = 0;
};

/// One property: a full tag with its value. Values are immutable and cheap to copy: text, bytes and
/// lists are shared.
///
/// Shape:  16 bytes. Text is kept as UTF-16 (PT_UNICODE), whatever width it came in; the tag says
///         so. A value in a file has the tag PT_UNICODE or PT_BINARY, and its text is UTF-8 there.
/// Thread: any; a value never changes.
class CValue
{
public:
    CValue() = default;
    CValue(const CValue& other) noexcept;
    CValue(CValue&& other) noexcept;
    CValue& operator=(CValue other) noexcept;
    ~CValue();

    static CValue Long(ULONG tag, LONG value);
    static CValue Boolean(ULONG tag, bool value);
    static CValue Time(ULONG tag, std::uint64_t value);
    /// The system's clock as it stands.
    static CValue Now(ULONG tag);
    static CValue Double(ULONG tag, double value);
    static CValue Error(ULONG tag, SCODE code);
    static CValue Text(ULONG tag, std::wstring_view text);
    static CValue Binary(ULONG tag, const void* bytes, size_t cb);
    static CValue Binary(ULONG tag, std::string_view bytes);
    static CValue Guid(ULONG tag, const GUID& guid);
    static CValue List(ULONG tag, std::vector<CValue> items);
    static CValue File(ULONG tag, std::shared_ptr<const IValueFile> file);
    /// A fixed-size value by its 64 bits, laid out as in the SPropValue union.
    static CValue Raw(ULONG tag, std::uint64_t bits);

    ULONG Tag() const { return m_tag; }
    ULONG Id() const { return PROP_ID(m_tag); }
    ULONG Type() const { return PROP_TYPE(m_tag); }
    bool Empty() const { return m_tag == 0; }
    CValue WithTag(ULONG tag) const;

    LONG AsLong() const { return static_cast<LONG>(m_bits); }
    bool AsBool() const { return (m_bits & 0xFFFF) != 0; }
    std::uint64_t AsBits() const { return m_bits; }
    double AsDouble() const;
    float AsFloat() const;
    SCODE AsError() const { return static_cast<SCODE>(m_bits); }

    bool IsFile() const;
    /// The bytes of text (UTF-16), binary and GUID values; a file is read each time.
    std::string Bytes() const;
    /// Borrowed view of what is in memory; empty for a file and for fixed-size values.
    std::string_view View() const;
    std::wstring_view WideView() const;
    std::wstring AsText() const;
    /// Size in bytes as MAPI counts it: text with its terminator, in UTF-16.
    std::uint64_t SizeInBytes() const;
    const std::vector<CValue>& Items() const;

    bool operator==(const CValue& other) const;

private:
    struct Block;

    bool HasBlock() const;
    void Adopt(Block* block);

    ULONG m_tag = 0;
    ULONG m_unused = 0;
    union {
        std::uint64_t m_bits = 0;
        Block* m_block;
    };
};

static_assert(sizeof(CValue) == 16);

/// True for the types whose value is shared text, bytes or a list rather than 64 bits.
bool IsBlockType(ULONG type);

/// Three-way order of two values of one type, as RELOP_ wants it: numbers by size, text without
/// regard to case, binary by bytes and then length. `comparable` is false for differing types.
int CompareValues(const CValue& left, const CValue& right, bool& comparable);

/// A status with a text for GetLastError and the ledger.
class CMapiError
{
public:
    explicit CMapiError(HRESULT hr) : m_hr(hr) {}
    CMapiError(HRESULT hr, std::wstring text) : m_hr(hr), m_text(std::move(text)) {}

    HRESULT Code() const { return m_hr; }
    const std::wstring& Text() const { return m_text; }

private:
    HRESULT m_hr;
    std::wstring m_text;
};

/// The same of a call that breaks the rules of the interface: the ledger has it too.
class CMisuse final : public CMapiError
{
public:
    using CMapiError::CMapiError;
};

} // namespace mapistore

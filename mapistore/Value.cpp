#include "Value.h"

#include <atomic>
#include <cstring>
#include <new>

#include "Text.h"

namespace mapistore
{

struct CValue::Block
{
    enum class Kind : std::uint8_t
    {
        Bytes,
        List,
        File
    };

    std::atomic<std::uint32_t> refs{1};
    Kind kind = Kind::Bytes;
    std::uint32_t cb = 0;
    std::vector<CValue>* items = nullptr;
    std::shared_ptr<const IValueFile>* file = nullptr;
    // The bytes follow the block, so that a text costs one allocation.

    char* Data() { return reinterpret_cast<char*>(this + 1); }
    const char* Data() const { return reinterpret_cast<const char*>(this + 1); }

    static Block* Make(size_t cb)
    {
        void* memory = ::operator new(sizeof(Block) + cb);
        Block* block = new (memory) Block();
        block->cb = static_cast<std::uint32_t>(cb);
        return block;
    }

    void Drop()
    {
        if (refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
        {
            delete items;
            delete file;
            this->~Block();
            ::operator delete(this);
        }
    }
};

bool IsBlockType(ULONG type)
{
    return (type & MV_FLAG) != 0 || type == PT_UNICODE || type == PT_STRING8 || type == PT_BINARY ||
           type == PT_CLSID;
}

CValue::CValue(const CValue& other) noexcept : m_tag(other.m_tag), m_bits(other.m_bits)
{
    if (HasBlock())
    {
        m_block->refs.fetch_add(1, std::memory_order_relaxed);
    }
}

CValue::CValue(CValue&& other) noexcept : m_tag(other.m_tag), m_bits(other.m_bits)
{
    other.m_tag = 0;
    other.m_bits = 0;
}

CValue& CValue::operator=(CValue other) noexcept
{
    std::swap(m_tag, other.m_tag);
    std::swap(m_bits, other.m_bits);
    return *this;
}

CValue::~CValue()
{
    if (HasBlock())
    {
        m_block->Drop();
    }
}

bool CValue::HasBlock() const
{
    return m_bits != 0 && IsBlockType(Type());
}

void CValue::Adopt(Block* block)
{
    m_block = block;
}

CValue CValue::Raw(ULONG tag, std::uint64_t bits)
{
    CValue value;
    value.m_tag = tag;
    value.m_bits = bits;
    return value;
}

CValue CValue::Long(ULONG tag, LONG number)
{
    return Raw(tag, static_cast<std::uint32_t>(number));
}

CValue CValue::Boolean(ULONG tag, bool truth)
{
    return Raw(tag, truth ? 1 : 0);
}

CValue CValue::Time(ULONG tag, std::uint64_t time)
{
    return Raw(tag, time);
}

CValue CValue::Now(ULONG tag)
{
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return Raw(tag, (std::uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime);
}

CValue CValue::Double(ULONG tag, double number)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof(bits));
    return Raw(tag, bits);
}

CValue CValue::Error(ULONG tag, SCODE code)
{
    return Raw(ChangeType(tag, PT_ERROR), static_cast<std::uint32_t>(code));
}

CValue CValue::Binary(ULONG tag, const void* bytes, size_t cb)
{
    CValue value;
    Block* block = Block::Make(cb);
    if (cb != 0)
    {
        std::memcpy(block->Data(), bytes, cb);
    }
    value.m_tag = tag;
    value.Adopt(block);
    return value;
}

CValue CValue::Binary(ULONG tag, std::string_view bytes)
{
    return Binary(tag, bytes.data(), bytes.size());
}

CValue CValue::Text(ULONG tag, std::wstring_view text)
{
    return Binary(ChangeType(tag, PT_UNICODE), text.data(), text.size() * sizeof(wchar_t));
}

CValue CValue::Guid(ULONG tag, const GUID& guid)
{
    return Binary(tag, &guid, sizeof(guid));
}

CValue CValue::List(ULONG tag, std::vector<CValue> items)
{
    CValue value;
    Block* block = Block::Make(0);
    block->kind = Block::Kind::List;
    block->items = new std::vector<CValue>(std::move(items));
    value.m_tag = tag;
    value.Adopt(block);
    return value;
}

CValue CValue::File(ULONG tag, std::shared_ptr<const IValueFile> file)
{
    CValue value;
    Block* block = Block::Make(0);
    block->kind = Block::Kind::File;
    block->file = new std::shared_ptr<const IValueFile>(std::move(file));
    value.m_tag = tag;
    value.Adopt(block);
    return value;
}

CValue CValue::WithTag(ULONG tag) const
{
    CValue value(*this);
    value.m_tag = tag;
    return value;
}

double CValue::AsDouble() const
{
    double number = 0;
    std::memcpy(&number, &m_bits, sizeof(number));
    return number;
}

float CValue::AsFloat() const
{
    float number = 0;
    std::memcpy(&number, &m_bits, sizeof(number));
    return number;
}

bool CValue::IsFile() const
{
    return HasBlock() && m_block->kind == Block::Kind::File;
}

std::string_view CValue::View() const
{
    if (!HasBlock() || m_block->kind != Block::Kind::Bytes)
    {
        return {};
    }
    return {m_block->Data(), m_block->cb};
}

std::string CValue::Bytes() const
{
    if (!IsFile())
    {
        return std::string(View());
    }
    std::string bytes = (*m_block->file)->Read();
    if (Type() == PT_UNICODE)
    {
        const std::wstring wide = FromUtf8(bytes);
        bytes.assign(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(wchar_t));
    }
    return bytes;
}

std::wstring_view CValue::WideView() const
{
    const std::string_view bytes = View();
    return {reinterpret_cast<const wchar_t*>(bytes.data()), bytes.size() / sizeof(wchar_t)};
}

std::wstring CValue::AsText() const
{
    if (!IsFile())
    {
        return std::wstring(WideView());
    }
    return FromUtf8((*m_block->file)->Read());
}

std::uint64_t CValue::SizeInBytes() const
{
    const ULONG type = Type();
    if ((type & MV_FLAG) != 0)
    {
        std::uint64_t sum = 0;
        for (const CValue& item : Items())
        {
            sum += item.SizeInBytes();
        }
        return sum;
    }
    if (IsFile())
    {
        // The UTF-8 size stands for the text's: it only decides whether one read may carry it.
        return (*m_block->file)->Size();
    }
    switch (type)
    {
    case PT_UNICODE:
        return View().size() + sizeof(wchar_t);
    case PT_BINARY:
    case PT_CLSID:
        return View().size();
    case PT_I2:
    case PT_BOOLEAN:
        return 2;
    case PT_LONG:
    case PT_R4:
    case PT_ERROR:
        return 4;
    default:
        return 8;
    }
}

const std::vector<CValue>& CValue::Items() const
{
    static const std::vector<CValue> kNone;
    return HasBlock() && m_block->kind == Block::Kind::List ? *m_block->items : kNone;
}

bool CValue::operator==(const CValue& other) const
{
    if (m_tag != other.m_tag)
    {
        return false;
    }
    if (m_bits == other.m_bits)
    {
        return true;
    }
    if (!HasBlock() || !other.HasBlock() || m_block->kind != other.m_block->kind)
    {
        return false;
    }
    switch (m_block->kind)
    {
    case Block::Kind::Bytes:
        return View() == other.View();
    case Block::Kind::List:
        return Items() == other.Items();
    default:
        return Bytes() == other.Bytes();
    }
}

namespace
{

template <class T>
int Order(T left, T right)
{
    return left < right ? -1 : (right < left ? 1 : 0);
}

int OrderBytes(std::string_view left, std::string_view right)
{
    const size_t common = left.size() < right.size() ? left.size() : right.size();
    const int compared = common == 0 ? 0 : std::memcmp(left.data(), right.data(), common);
    if (compared != 0)
    {
        return compared < 0 ? -1 : 1;
    }
    return Order(left.size(), right.size());
}

} // namespace

int CompareValues(const CValue& left, const CValue& right, bool& comparable)
{
    comparable = left.Type() == right.Type();
    if (!comparable)
    {
        return 0;
    }
    switch (left.Type())
    {
    case PT_I2:
        return Order(static_cast<std::int16_t>(left.AsBits()),
                     static_cast<std::int16_t>(right.AsBits()));
    case PT_LONG:
        return Order(left.AsLong(), right.AsLong());
    case PT_BOOLEAN:
        return Order(left.AsBool(), right.AsBool());
    case PT_R4:
        return Order(left.AsFloat(), right.AsFloat());
    case PT_DOUBLE:
    case PT_APPTIME:
        return Order(left.AsDouble(), right.AsDouble());
    case PT_SYSTIME:
        return Order(left.AsBits(), right.AsBits());
    case PT_I8:
    case PT_CURRENCY:
        return Order(static_cast<std::int64_t>(left.AsBits()),
                     static_cast<std::int64_t>(right.AsBits()));
    case PT_UNICODE:
        if (left.IsFile() || right.IsFile())
        {
            return CompareText(left.AsText(), right.AsText());
        }
        return CompareText(left.WideView(), right.WideView());
    case PT_BINARY:
    case PT_CLSID:
        if (left.IsFile() || right.IsFile())
        {
            return OrderBytes(left.Bytes(), right.Bytes());
        }
        return OrderBytes(left.View(), right.View());
    default:
        comparable = false;
        return 0;
    }
}

} // namespace mapistore

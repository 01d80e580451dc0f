#include "RestrictionNodes.h"

#include "MapiTags64.h"
#include "Text.h"

namespace mapistore
{
namespace
{

constexpr ULONG kIdAnr = PROP_ID(PR_ANR_W);

/// The stored value when it has the type of the tag, single or as one of several.
const CValue* TypedValue(const IPropertySource& source, ULONG tag, CValue& scratch)
{
    const CValue* value = source.Find(PROP_ID(tag), scratch);
    if (value == nullptr || value->Type() == PT_ERROR)
    {
        return nullptr;
    }
    const ULONG asked = PROP_TYPE(tag) == PT_STRING8 ? PT_UNICODE : PROP_TYPE(tag);
    const ULONG stored = value->Type();
    if (asked == PT_UNSPECIFIED || asked == stored || (asked | MV_FLAG) == stored)
    {
        return value;
    }
    return nullptr;
}

template <class Test>
bool AnyValue(const CValue& value, const Test& test)
{
    if ((value.Type() & MV_FLAG) == 0)
    {
        return test(value);
    }
    for (const CValue& item : value.Items())
    {
        if (test(item))
        {
            return true;
        }
    }
    return false;
}

bool Holds(ULONG relop, int order)
{
    switch (relop)
    {
    case RELOP_LT:
        return order < 0;
    case RELOP_LE:
        return order <= 0;
    case RELOP_GT:
        return order > 0;
    case RELOP_GE:
        return order >= 0;
    case RELOP_EQ:
        return order == 0;
    default:
        return order != 0;
    }
}

class CMany final : public CRestriction
{
public:
    CMany(bool all, std::vector<RestrictionNode> nodes) : m_all(all), m_nodes(std::move(nodes)) {}
    bool Matches(const IPropertySource& source) const override
    {
        for (const RestrictionNode& node : m_nodes)
        {
            if (node->Matches(source) != m_all)
            {
                return !m_all;
            }
        }
        return m_all;
    }

private:
    bool m_all;
    std::vector<RestrictionNode> m_nodes;
};

class CNot final : public CRestriction
{
public:
    explicit CNot(RestrictionNode node) : m_node(std::move(node)) {}
    bool Matches(const IPropertySource& source) const override { return !m_node->Matches(source); }

private:
    RestrictionNode m_node;
};

class CContent final : public CRestriction
{
public:
    CContent(ULONG fuzzy, ULONG tag, CValue value)
        : m_fuzzy(fuzzy), m_tag(tag), m_value(std::move(value))
    {
    }
    bool Matches(const IPropertySource& source) const override
    {
        CValue scratch;
        const CValue* value = TypedValue(source, m_tag, scratch);
        return value != nullptr && AnyValue(*value, [this](const CValue& one) {
                   return one.Type() == PT_BINARY ? BytesMatch(one) : TextMatches(one);
               });
    }

private:
    bool TextMatches(const CValue& one) const
    {
        if (one.IsFile())
        {
            return ContentMatches(one.AsText(), m_value.WideView(), m_fuzzy);
        }
        return ContentMatches(one.WideView(), m_value.WideView(), m_fuzzy);
    }
    bool BytesMatch(const CValue& one) const
    {
        const std::string held = one.Bytes();
        const std::string_view pattern = m_value.View();
        switch (m_fuzzy & 0xFFFF)
        {
        case FL_SUBSTRING:
            return held.find(pattern) != std::string::npos;
        case FL_PREFIX:
            return std::string_view(held).substr(0, pattern.size()) == pattern;
        default:
            return held == pattern;
        }
    }

    ULONG m_fuzzy;
    ULONG m_tag;
    CValue m_value;
};

class CProperty final : public CRestriction
{
public:
    CProperty(ULONG relop, ULONG tag, CValue value)
        : m_relop(relop), m_tag(tag), m_value(std::move(value))
    {
    }
    bool Matches(const IPropertySource& source) const override
    {
        if (PROP_ID(m_tag) == kIdAnr)
        {
            return AnswersToName(source, m_value.WideView()) == (m_relop != RELOP_NE);
        }
        CValue scratch;
        const CValue* value = TypedValue(source, m_tag, scratch);
        return value != nullptr && AnyValue(*value, [this](const CValue& one) {
                   bool comparable = false;
                   const int order = CompareValues(one, m_value, comparable);
                   return comparable && Holds(m_relop, order);
               });
    }

private:
    ULONG m_relop;
    ULONG m_tag;
    CValue m_value;
};

class CCompare final : public CRestriction
{
public:
    explicit CCompare(const SComparePropsRestriction& res) : m_res(res) {}
    bool Matches(const IPropertySource& source) const override
    {
        CValue firstScratch;
        CValue secondScratch;
        const CValue* first = TypedValue(source, m_res.ulPropTag1, firstScratch);
        const CValue* second = TypedValue(source, m_res.ulPropTag2, secondScratch);
        if (first == nullptr || second == nullptr)
        {
            return false;
        }
        bool comparable = false;
        const int order = CompareValues(*first, *second, comparable);
        return comparable && Holds(m_res.relop, order);
    }

private:
    SComparePropsRestriction m_res;
};

class CBitMask final : public CRestriction
{
public:
    explicit CBitMask(const SBitMaskRestriction& res) : m_res(res) {}
    bool Matches(const IPropertySource& source) const override
    {
        CValue scratch;
        const CValue* value = TypedValue(source, m_res.ulPropTag, scratch);
        if (value == nullptr || value->Type() != PT_LONG)
        {
            return false;
        }
        const bool isZero = (static_cast<ULONG>(value->AsLong()) & m_res.ulMask) == 0;
        return isZero == (m_res.relBMR == BMR_EQZ);
    }

private:
    SBitMaskRestriction m_res;
};

class CSize final : public CRestriction
{
public:
    explicit CSize(const SSizeRestriction& res) : m_res(res) {}
    bool Matches(const IPropertySource& source) const override
    {
        CValue scratch;
        const CValue* value = TypedValue(source, m_res.ulPropTag, scratch);
        return value != nullptr && AnyValue(*value, [this](const CValue& one) {
                   const std::uint64_t cb = one.SizeInBytes();
                   return Holds(m_res.relop, cb < m_res.cb ? -1 : (cb > m_res.cb ? 1 : 0));
               });
    }

private:
    SSizeRestriction m_res;
};

class CExist final : public CRestriction
{
public:
    explicit CExist(ULONG tag) : m_tag(tag) {}
    bool Matches(const IPropertySource& source) const override
    {
        CValue scratch;
        return TypedValue(source, m_tag, scratch) != nullptr;
    }

private:
    ULONG m_tag;
};

class CBagSource final : public IPropertySource
{
public:
    explicit CBagSource(const CPropertyBag& bag) : m_bag(bag) {}
    const CValue* Find(ULONG id, CValue&) const override { return m_bag.Find(id); }
    const std::vector<CPropertyBag>* SubRows(ULONG) const override { return nullptr; }

private:
    const CPropertyBag& m_bag;
};

class CSub final : public CRestriction
{
public:
    CSub(ULONG tag, RestrictionNode node) : m_tag(tag), m_node(std::move(node)) {}
    bool Matches(const IPropertySource& source) const override
    {
        const std::vector<CPropertyBag>* rows = source.SubRows(m_tag);
        if (rows != nullptr)
        {
            for (const CPropertyBag& row : *rows)
            {
                if (m_node->Matches(CBagSource(row)))
                {
                    return true;
                }
            }
        }
        return false;
    }

private:
    ULONG m_tag;
    RestrictionNode m_node;
};

} // namespace

RestrictionNode MakeAll(std::vector<RestrictionNode> nodes)
{
    return std::make_unique<CMany>(true, std::move(nodes));
}

RestrictionNode MakeAny(std::vector<RestrictionNode> nodes)
{
    return std::make_unique<CMany>(false, std::move(nodes));
}

RestrictionNode MakeNot(RestrictionNode node)
{
    return std::make_unique<CNot>(std::move(node));
}

RestrictionNode MakeContent(ULONG fuzzy, ULONG tag, CValue value)
{
    return std::make_unique<CContent>(fuzzy, tag, std::move(value));
}

RestrictionNode MakeProperty(ULONG relop, ULONG tag, CValue value)
{
    return std::make_unique<CProperty>(relop, tag, std::move(value));
}

RestrictionNode MakeCompare(const SComparePropsRestriction& res)
{
    return std::make_unique<CCompare>(res);
}

RestrictionNode MakeBitMask(const SBitMaskRestriction& res)
{
    return std::make_unique<CBitMask>(res);
}

RestrictionNode MakeSize(const SSizeRestriction& res)
{
    return std::make_unique<CSize>(res);
}

RestrictionNode MakeExist(ULONG tag)
{
    return std::make_unique<CExist>(tag);
}

RestrictionNode MakeSub(ULONG tag, RestrictionNode node)
{
    return std::make_unique<CSub>(tag, std::move(node));
}

} // namespace mapistore

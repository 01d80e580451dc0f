#include "Restriction.h"

#include "Buffer.h"
#include "MapiTags64.h"
#include "Text.h"

namespace mapistore
{
namespace
{

constexpr int kMaxDepth = 256;
constexpr ULONG kIdAnr = PROP_ID(PR_ANR_W);

using Node = std::unique_ptr<const CRestriction>;

Node CompileNode(const SRestriction& restriction, int depth);

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

void CheckRelop(ULONG relop)
{
    if (relop == RELOP_RE)
    {
        throw CMapiError(MAPI_E_TOO_COMPLEX, L"RELOP_RE is not supported");
    }
    if (relop > RELOP_RE)
    {
        throw CMapiError(MAPI_E_INVALID_PARAMETER, L"an unknown relation");
    }
}

class CMany final : public CRestriction
{
public:
    CMany(bool all, std::vector<Node> nodes) : m_all(all), m_nodes(std::move(nodes)) {}
    bool Matches(const IPropertySource& source) const override
    {
        for (const Node& node : m_nodes)
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
    std::vector<Node> m_nodes;
};

class CNot final : public CRestriction
{
public:
    explicit CNot(Node node) : m_node(std::move(node)) {}
    bool Matches(const IPropertySource& source) const override { return !m_node->Matches(source); }

private:
    Node m_node;
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
    CSub(ULONG tag, Node node) : m_tag(tag), m_node(std::move(node)) {}
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
    Node m_node;
};

std::vector<Node> CompileNodes(ULONG count, const SRestriction* nodes, int depth)
{
    if (count != 0 && nodes == nullptr)
    {
        throw CMapiError(MAPI_E_INVALID_PARAMETER, L"a restriction points nowhere");
    }
    std::vector<Node> compiled;
    for (ULONG i = 0; i < count; ++i)
    {
        compiled.push_back(CompileNode(nodes[i], depth + 1));
    }
    return compiled;
}

Node CompileOne(const SRestriction* node, int depth)
{
    return std::move(CompileNodes(1, node, depth).front());
}

CValue CheckedValue(ULONG tag, const SPropValue* given)
{
    if (given == nullptr)
    {
        throw CMapiError(MAPI_E_INVALID_PARAMETER, L"a restriction without a value");
    }
    CValue value = ReadValue(*given);
    const ULONG asked = PROP_TYPE(tag) == PT_STRING8 ? PT_UNICODE : PROP_TYPE(tag);
    if (asked != PT_UNSPECIFIED && (asked & ~static_cast<ULONG>(MVI_FLAG)) != value.Type())
    {
        throw CMapiError(MAPI_E_INVALID_TYPE, L"a value of another type than its tag");
    }
    return value;
}

Node CompileContent(const SContentRestriction& res)
{
    constexpr ULONG kLoose = FL_IGNORECASE | FL_IGNORENONSPACE | FL_LOOSE;
    if ((res.ulFuzzyLevel & 0xFFFF) > FL_PREFIX || (res.ulFuzzyLevel & 0xFFFF0000 & ~kLoose) != 0)
    {
        throw CMapiError(MAPI_E_TOO_COMPLEX, L"an unknown fuzzy level");
    }
    CValue value = CheckedValue(res.ulPropTag, res.lpProp);
    if (value.Type() != PT_UNICODE && value.Type() != PT_BINARY)
    {
        throw CMapiError(MAPI_E_TOO_COMPLEX, L"content of neither text nor bytes");
    }
    return std::make_unique<CContent>(res.ulFuzzyLevel, res.ulPropTag, std::move(value));
}

Node CompileProperty(const SPropertyRestriction& res)
{
    CheckRelop(res.relop);
    CValue value = CheckedValue(res.ulPropTag, res.lpProp);
    if ((value.Type() & MV_FLAG) != 0 || value.Type() == PT_ERROR)
    {
        throw CMapiError(MAPI_E_TOO_COMPLEX, L"comparing with several values");
    }
    if (PROP_ID(res.ulPropTag) == kIdAnr && value.Type() != PT_UNICODE)
    {
        throw CMapiError(MAPI_E_INVALID_TYPE, L"name resolution of no text");
    }
    return std::make_unique<CProperty>(res.relop, res.ulPropTag, std::move(value));
}

Node CompileNode(const SRestriction& restriction, int depth)
{
    if (depth > kMaxDepth)
    {
        throw CMapiError(MAPI_E_TOO_COMPLEX, L"a restriction of too many levels");
    }
    const auto& res = restriction.res;
    switch (restriction.rt)
    {
    case RES_AND:
        return std::make_unique<CMany>(true,
                                       CompileNodes(res.resAnd.cRes, res.resAnd.lpRes, depth));
    case RES_OR:
        return std::make_unique<CMany>(false, CompileNodes(res.resOr.cRes, res.resOr.lpRes, depth));
    case RES_NOT:
        return std::make_unique<CNot>(CompileOne(res.resNot.lpRes, depth));
    case RES_CONTENT:
        return CompileContent(res.resContent);
    case RES_PROPERTY:
        return CompileProperty(res.resProperty);
    case RES_COMPAREPROPS:
        CheckRelop(res.resCompareProps.relop);
        return std::make_unique<CCompare>(res.resCompareProps);
    case RES_BITMASK:
        if (res.resBitMask.relBMR > BMR_NEZ)
        {
            throw CMapiError(MAPI_E_INVALID_PARAMETER, L"an unknown relation");
        }
        return std::make_unique<CBitMask>(res.resBitMask);
    case RES_SIZE:
        CheckRelop(res.resSize.relop);
        return std::make_unique<CSize>(res.resSize);
    case RES_EXIST:
        return std::make_unique<CExist>(res.resExist.ulPropTag);
    case RES_SUBRESTRICTION:
        return std::make_unique<CSub>(res.resSub.ulSubObject, CompileOne(res.resSub.lpRes, depth));
    case RES_COMMENT:
        if (res.resComment.lpRes == nullptr)
        {
            return std::make_unique<CMany>(true, std::vector<Node>());
        }
        return CompileNode(*res.resComment.lpRes, depth + 1);
    default:
        throw CMapiError(MAPI_E_INVALID_PARAMETER, L"an unknown kind of restriction");
    }
}

class CRowSource final : public IPropertySource
{
public:
    explicit CRowSource(const IRow& row) : m_row(row) {}
    const CValue* Find(ULONG id, CValue& scratch) const override { return m_row.Find(id, scratch); }
    const std::vector<CPropertyBag>* SubRows(ULONG tag) const override
    {
        return m_row.SubRows(tag);
    }

private:
    const IRow& m_row;
};

bool BeginsWith(std::wstring_view text, std::wstring_view folded)
{
    return Fold(text, true, false).compare(0, folded.size(), folded) == 0;
}

} // namespace

bool CRestriction::Matches(const IRow& row) const
{
    return Matches(CRowSource(row));
}

std::unique_ptr<const CRestriction> CRestriction::Compile(const SRestriction& restriction)
{
    return CompileNode(restriction, 0);
}

bool AnswersToName(const IPropertySource& source, std::wstring_view text)
{
    const std::wstring folded = Fold(text, true, false);
    static constexpr ULONG kWhole[] = {PROP_ID(PR_DISPLAY_NAME_W),
                                       PROP_ID(PR_GIVEN_NAME_W),
                                       PROP_ID(PR_SURNAME_W),
                                       PROP_ID(PR_ACCOUNT_W),
                                       PROP_ID(kTagSmtpAddressW),
                                       PROP_ID(PR_EMAIL_ADDRESS_W)};
    for (const ULONG id : kWhole)
    {
        CValue scratch;
        const CValue* value = source.Find(id, scratch);
        if (value != nullptr && value->Type() == PT_UNICODE && BeginsWith(value->AsText(), folded))
        {
            return true;
        }
    }
    CValue scratch;
    const CValue* name = source.Find(PROP_ID(PR_DISPLAY_NAME_W), scratch);
    if (name == nullptr || name->Type() != PT_UNICODE)
    {
        return false;
    }
    const std::wstring words = name->AsText();
    for (size_t i = 1; i < words.size(); ++i)
    {
        if (words[i - 1] == L' ' && BeginsWith(std::wstring_view(words).substr(i), folded))
        {
            return true;
        }
    }
    return false;
}

} // namespace mapistore

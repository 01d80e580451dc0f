#include "Restriction.h"

#include "Buffer.h"
#include "MapiTags64.h"
#include "RestrictionNodes.h"
#include "Text.h"

namespace mapistore
{
namespace
{

constexpr int kMaxDepth = 256;

using Node = RestrictionNode;

Node CompileNode(const SRestriction& restriction, int depth);

void CheckRelop(ULONG relop)
{
    if (relop == RELOP_RE)
    {
        throw CMapiError(MAPI_E_TOO_COMPLEX, L"RELOP_RE is not supported");
    }
    if (relop > RELOP_RE)
    {
        throw CMisuse(MAPI_E_INVALID_PARAMETER, L"an unknown relation");
    }
}

std::vector<Node> CompileNodes(ULONG count, const SRestriction* nodes, int depth)
{
    if (count != 0 && nodes == nullptr)
    {
        throw CMisuse(MAPI_E_INVALID_PARAMETER, L"a restriction points nowhere");
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
        throw CMisuse(MAPI_E_INVALID_PARAMETER, L"a restriction without a value");
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
    return MakeContent(res.ulFuzzyLevel, res.ulPropTag, std::move(value));
}

Node CompileProperty(const SPropertyRestriction& res)
{
    CheckRelop(res.relop);
    CValue value = CheckedValue(res.ulPropTag, res.lpProp);
    if ((value.Type() & MV_FLAG) != 0 || value.Type() == PT_ERROR)
    {
        throw CMapiError(MAPI_E_TOO_COMPLEX, L"comparing with several values");
    }
    if (PROP_ID(res.ulPropTag) == PROP_ID(PR_ANR_W) && value.Type() != PT_UNICODE)
    {
        throw CMapiError(MAPI_E_INVALID_TYPE, L"name resolution of no text");
    }
    return MakeProperty(res.relop, res.ulPropTag, std::move(value));
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
        return MakeAll(CompileNodes(res.resAnd.cRes, res.resAnd.lpRes, depth));
    case RES_OR:
        return MakeAny(CompileNodes(res.resOr.cRes, res.resOr.lpRes, depth));
    case RES_NOT:
        return MakeNot(CompileOne(res.resNot.lpRes, depth));
    case RES_CONTENT:
        return CompileContent(res.resContent);
    case RES_PROPERTY:
        return CompileProperty(res.resProperty);
    case RES_COMPAREPROPS:
        CheckRelop(res.resCompareProps.relop);
        return MakeCompare(res.resCompareProps);
    case RES_BITMASK:
        if (res.resBitMask.relBMR > BMR_NEZ)
        {
            throw CMisuse(MAPI_E_INVALID_PARAMETER, L"an unknown relation");
        }
        return MakeBitMask(res.resBitMask);
    case RES_SIZE:
        CheckRelop(res.resSize.relop);
        return MakeSize(res.resSize);
    case RES_EXIST:
        return MakeExist(res.resExist.ulPropTag);
    case RES_SUBRESTRICTION:
        return MakeSub(res.resSub.ulSubObject, CompileOne(res.resSub.lpRes, depth));
    case RES_COMMENT:
        if (res.resComment.lpRes == nullptr)
        {
            return MakeAll({});
        }
        return CompileNode(*res.resComment.lpRes, depth + 1);
    default:
        throw CMisuse(MAPI_E_INVALID_PARAMETER, L"an unknown kind of restriction");
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

#pragma once

#include "Restriction.h"

/// The kinds of restriction, each from parts that were checked before.
namespace mapistore
{

using RestrictionNode = std::unique_ptr<const CRestriction>;

RestrictionNode MakeAll(std::vector<RestrictionNode> nodes);
RestrictionNode MakeAny(std::vector<RestrictionNode> nodes);
RestrictionNode MakeNot(RestrictionNode node);
RestrictionNode MakeContent(ULONG fuzzy, ULONG tag, CValue value);
RestrictionNode MakeProperty(ULONG relop, ULONG tag, CValue value);
RestrictionNode MakeCompare(const SComparePropsRestriction& res);
RestrictionNode MakeBitMask(const SBitMaskRestriction& res);
RestrictionNode MakeSize(const SSizeRestriction& res);
RestrictionNode MakeExist(ULONG tag);
RestrictionNode MakeSub(ULONG tag, RestrictionNode node);

} // namespace mapistore

#pragma once

#include "Row.h"

namespace mapistore
{

/// Properties by identifier, of a row or of one row of a subobject.
class IPropertySource
{
public:
    virtual ~IPropertySource() = default;
    virtual const CValue* Find(ULONG id, CValue& scratch) const = 0;
    virtual const std::vector<CPropertyBag>* SubRows(ULONG tag) const = 0;
};

/// A restriction copied out of a caller's SRestriction, ready to test rows.
///
/// A property that is missing, or has another type than the tag asks for, makes every comparison
/// with it false. Text is compared without regard to case; RES_CONTENT as its fuzzy level says.
/// A multivalued property matches when one of its values does.
/// Thread: any.
class CRestriction
{
public:
    virtual ~CRestriction() = default;
    virtual bool Matches(const IPropertySource& source) const = 0;

    bool Matches(const IRow& row) const;

    /// Throws CMapiError: MAPI_E_INVALID_PARAMETER for null pointers and unknown kinds,
    /// MAPI_E_TOO_COMPLEX for what the library does not do (RELOP_RE, more than 256 levels),
    /// MAPI_E_INVALID_TYPE for a value of another type than its tag.
    static std::unique_ptr<const CRestriction> Compile(const SRestriction& restriction);
};

/// Whether an address book entry answers to a text: ambiguous name resolution.
bool AnswersToName(const IPropertySource& source, std::wstring_view text);

} // namespace mapistore

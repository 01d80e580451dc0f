#pragma once

#include <cstdint>

#include "BinaryBlock.h"
#include "PlatformTypes.h"

/// One contact out of a contact folder.
///
/// Owner: owns everything it holds; a copy shares nothing with its source.
struct ContactRecord
{
    WString displayName;
    WString givenName;
    WString surName;
    WString emailAddress; ///< the first of the three e-mail addresses that is not empty
    WString imAddress;
    WString title;
    WString company;
    WString department;
    WString teleWork;
    WString teleMobile;
    WString teleFax;
    WString teleHome;
    WString webSite;
    WString reserved; ///< nothing fills it; it keeps its place in the record
    WString country;
    WString postalCode;
    WString state;
    WString street;
    WString locality;
    BinaryBlock entryId;
    WString instanceKey; ///< PR_INSTANCE_KEY as hexadecimal text
    std::int32_t hasPicture = 0;
    BinaryBlock picture;
};

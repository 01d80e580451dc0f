#pragma once

#include "PlatformTypes.h"

/// The <ResolveName> document: whether `name` was resolved, and to which SMTP address.
///
/// Shape: UTF-16 text without declaration; name and address are escaped and stand in CDATA
/// sections.
///        Without success there is no <EmailAddress>.
WString BuildResolveNameXml(bool success, WStringView name, WStringView smtp);

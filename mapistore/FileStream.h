#pragma once

#include "Mapi64.h"

namespace mapistore
{

/// A stream on a file, as OpenStreamOnFile gives it: on the one named, or with SOF_UNIQUEFILENAME on a
/// new one of the system's choice in that folder, or in the one for temporary files.
///
/// Errors: MAPI_E_INVALID_PARAMETER for a path that cannot be, MAPI_E_NOT_FOUND for a file that is not
///         there, otherwise the system's.
HRESULT OpenFileStream(ULONG flags, const wchar_t* path, const wchar_t* prefix, IStream** stream);

} // namespace mapistore

#pragma once

#include "MapiDataStore.h"
#include "PlatformTypes.h"

/// The <CurrentOLProfile> document: who is logged on, to which store, through which library.
///
/// Shape:  UTF-16 text in one line. Seven tabs and two blanks stand before <StoreName>; they belong
///         to the document. All texts but RecordKey are escaped, also those in CDATA sections.
/// Thread: any; the facts are read from `store` one by one.
WString BuildProfileXml(const CMapiDataStore& store);

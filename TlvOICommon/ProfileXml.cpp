#include "ProfileXml.h"

#include "DocumentWriter.h"

WString BuildProfileXml(const CMapiDataStore& store)
{
    CDocumentWriter writer;
    writer.Open<"CurrentOLProfile">();
    writer.CdataElement<"ProfileName">(store.GetProfileName());
    writer.CdataElement<"Mapi32FilePath">(store.GetLibraryPath());
    writer.CdataElement<"EmailAddress">(store.GetUserEmail());
    writer.Raw(WTEXT("\t\t\t\t\t\t\t  "));
    writer.CdataElement<"StoreName">(store.GetStoreName());
    writer.HexElement<"StoreEid">(store.GetStoreEntryId());
    writer.RawElement<"RecordKey">(store.GetRecordKey());
    writer.EscapedElement<"FirstName">(store.GetUserFirstName());
    writer.EscapedElement<"LastName">(store.GetUserLastName());
    writer.Close<"CurrentOLProfile">();
    return writer.Take();
}

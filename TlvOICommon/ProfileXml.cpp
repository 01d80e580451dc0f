#include "ProfileXml.h"

#include "DocumentText.h"

WString BuildProfileXml(const CMapiDataStore& store)
{
    const WString profileName = store.GetProfileName();
    const WString libraryPath = store.GetLibraryPath();
    const WString email = store.GetUserEmail();
    const WString storeName = store.GetStoreName();
    const BinaryBlock storeEntryId = store.GetStoreEntryId();
    const WString recordKey = store.GetRecordKey();
    const WString firstName = store.GetUserFirstName();
    const WString lastName = store.GetUserLastName();
    return BuildDocument([&](auto& document) {
        document.template Open<"CurrentOLProfile">();
        document.template Cdata<"ProfileName">(profileName);
        document.template Cdata<"Mapi32FilePath">(libraryPath);
        document.template Cdata<"EmailAddress">(email);
        document.Raw(WTEXT("\t\t\t\t\t\t\t  "));
        document.template Cdata<"StoreName">(storeName);
        document.template Hex<"StoreEid">(storeEntryId);
        document.template Unescaped<"RecordKey">(recordKey);
        document.template Escaped<"FirstName">(firstName);
        document.template Escaped<"LastName">(lastName);
        document.template Close<"CurrentOLProfile">();
    });
}

#pragma once

#include "OperationCalls.h"

namespace mapitest
{

/// One object of every kind, open.
struct EveryObject
{
    CRef<IProfAdmin> profiles;
    CRef<IProfSect> section;
    FolderRef folder;
    MessageRef message;
    CRef<IAttach> attach;
    BookRef book;
    CRef<IABContainer> container;
    CRef<IDistList> list;
    CRef<IMailUser> user;
    TableRef table;
    CRef<IStream> stream;
};

/// A store from which an object of every kind can be opened.
class OperationTest : public StoreTest
{
protected:
    void SetUp() override;
    EveryObject OpenAll();
    CallTargets TargetsOf(const EveryObject& objects) const;

private:
    void OpenInBook(const BookRef& book, ULONG type, ULONG64 id, IUnknown** out);
};

/// The lines of mapistore/operations.txt.
std::vector<std::string> ListedOperations();

} // namespace mapitest

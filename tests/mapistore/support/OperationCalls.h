#pragma once

#include <functional>
#include <map>
#include <string>

#include "StoreFixture.h"

namespace mapitest
{

/// One call of each operation by its name, with arguments that the library refuses by itself.
using Calls = std::map<std::string, std::function<HRESULT()>>;

/// The objects that the calls go to; they outlive them.
struct CallTargets
{
    IProfAdmin* profiles;
    mapi64::IMAPISession* session;
    IProfSect* section;
    mapi64::IMsgStore* store;
    IMAPIFolder* folder;
    IMessage* message;
    IAttach* attach;
    mapi64::IAddrBook* book;
    IABContainer* container;
    IDistList* list;
    IMailUser* user;
    mapi64::IMAPITable* table;
    IStream* stream;
};

/// One call of each operation that takes flags, with these.
using FlagCalls = std::map<std::string, std::function<HRESULT(ULONG)>>;

/// Of every operation that answers a status.
Calls AllCalls(const CallTargets& targets);
FlagCalls AllFlagCalls(const CallTargets& targets);

} // namespace mapitest

#pragma once

#include "Document.h"

namespace mapistore
{

/// The row of a folder in a hierarchy table, and the properties that an open folder has: what the
/// document holds and what the store computes, taken together at one moment.
RowPtr MakeFolderRow(const Store& store, const Folder& folder);
CPropertyBag FolderProperties(const Store& store, const Folder& folder);

/// The same for a store and for the parts of an address book.
CPropertyBag StoreProperties(const Store& store);
CPropertyBag StoreRowProperties(const Store& store);
CPropertyBag ContainerProperties(const AddressBook& book, const Container& container);
CPropertyBag RootContainerProperties(const AddressBook& book);
CPropertyBag EntryProperties(const AddressBook& book, const Entry& entry);
CPropertyBag OneOffProperties(const OneOff& oneOff, std::string_view entryId);

std::string FolderEntryId(const StoreIdentity& store, std::uint64_t folder);
std::string MessageEntryId(const StoreIdentity& store, std::uint64_t message);
std::string StoreEntryId(const StoreIdentity& store);
std::string EntryEntryId(const AddressBook& book, const Entry& entry);
std::string ContainerEntryId(const AddressBook& book, std::uint64_t container);

} // namespace mapistore

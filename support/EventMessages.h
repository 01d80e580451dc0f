#pragma once

/// Window messages between the threads of the server and its hidden event window.
///
/// Shape:  wParam is a sequence id or a change type. lParam is a block of `at_mem_alloc` with
///         terminated text, except where told otherwise: wide text, for the trace narrow text.
/// Owner:  a posted block belongs to the receiver, which frees it with `at_mem_free`. A block whose
///         post failed stays with the sender.
enum EventMessage : unsigned
{
    WM_EVENT_CLIENT_NONEXIST = 1524,  ///< both words 0: the client's frame window is gone
    WM_EVENT_INITIALIZE = 1525,       ///< sequence id; lParam is the status itself
    WM_EVENT_CALENDAR_UPDATED = 1526, ///< change type
    WM_EVENT_RECENT_EMAILS = 1527,
    WM_EVENT_LIST_APPOINTMENT = 1528,
    WM_EVENT_LIST_RECURRENT = 1529,
    WM_EVENT_GET_APPOINTMENT = 1530,
    WM_EVENT_CONTACT_DETAIL = 1531,
    WM_EVENT_RESOLVE_NAME = 1532,
    WM_EVENT_CONTACT_UPDATED = 1533, ///< change type
    WM_EVENT_PERSONAL_CONTACT = 1534,
    WM_EVENT_SEARCH_CONTACTS = 1535,
    WM_EVENT_RESOLVE_BY_URI = 1536,
    WM_EVENT_RESOLVE_BY_PHONE = 1537,
    WM_EVENT_TRACE = 1538, ///< 0; narrow text in a block of 4096 bytes
};

/// Change types of WM_EVENT_CALENDAR_UPDATED and WM_EVENT_CONTACT_UPDATED, as clients see them.
enum ChangeType : unsigned
{
    ChangeAdded = 1,
    ChangeDeleted = 2,
    ChangeModified = 3,
};

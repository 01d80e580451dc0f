#pragma once

#include <windows.h>

#include <oaidl.h>

/// The class of the bare COM server, which does nothing.
/// {8C1C3E55-30A2-4B8E-9F3B-6D1F0C6E2A91}
constexpr CLSID kBareClass = {
    0x8C1C3E55, 0x30A2, 0x4B8E, {0x9F, 0x3B, 0x6D, 0x1F, 0x0C, 0x6E, 0x2A, 0x91}};
constexpr const wchar_t* kBareClassText = L"{8C1C3E55-30A2-4B8E-9F3B-6D1F0C6E2A91}";

/// Its one method: sends a text of so many characters to a sink. Arguments: the sink, the length.
constexpr DISPID kBareSendEvent = 1;
/// The event that it sends, numbered as the product's answer to a listing.
constexpr DISPID kBareEvent = 3;

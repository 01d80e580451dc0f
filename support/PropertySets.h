#pragma once

#include "PlatformTypes.h"

/// Sets of named properties of calendar messages.
/// Source: [MS-OXPROPS] 1.3.2, with its names. NOLINTBEGIN(readability-identifier-naming)

inline const GUID PSETID_Appointment = {
    0x00062002, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

inline const GUID PSETID_Meeting = {
    0x6ED8DA90, 0x450B, 0x101B, {0x98, 0xDA, 0x00, 0xAA, 0x00, 0x3F, 0x13, 0x05}};

// NOLINTEND(readability-identifier-naming)

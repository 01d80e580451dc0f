#pragma once

#include "BinaryBlock.h"
#include "MapiHeaders.h"
#include "PlatformTypes.h"

/// Values out of a property, with its type looked at first: a store may answer with another type
/// than the one asked for, or with an error in the place of the value.
///
/// Shape:  a null value, and a value of another type, counts as absent.
/// Owner:  what is handed out is a copy.
namespace prop
{

/// Sets `text` from PT_UNICODE.
bool TakeText(const SPropValue* value, WString& text);

/// Sets `text` from PT_STRING8, by the code page of the calling thread.
bool TakeThreadText(const SPropValue* value, WString& text);

/// Sets `number` from PT_LONG, PT_SHORT or PT_BOOLEAN.
bool TakeNumber(const SPropValue* value, std::uint32_t& number);

/// Sets `block` from PT_BINARY.
bool TakeBlock(const SPropValue* value, BinaryBlock& block);

/// Sets `time` from PT_SYSTIME. Units: UTC, as stored. False too for a time beyond the calendar.
bool TakeTime(const SPropValue* value, SYSTEMTIME& time);

} // namespace prop

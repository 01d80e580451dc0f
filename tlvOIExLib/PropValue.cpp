#include "PropValue.h"

#include "NarrowText.h"
#include "PlatformDates.h"

namespace prop
{

bool TakeText(const SPropValue* value, WString& text)
{
    if (value == nullptr || PROP_TYPE(value->ulPropTag) != PT_UNICODE ||
        value->Value.lpszW == nullptr)
    {
        return false;
    }
    text = value->Value.lpszW;
    return true;
}

bool TakeThreadText(const SPropValue* value, WString& text)
{
    if (value == nullptr || PROP_TYPE(value->ulPropTag) != PT_STRING8 ||
        value->Value.lpszA == nullptr)
    {
        return false;
    }
    text = WidenThreadText(value->Value.lpszA);
    return true;
}

bool TakeNumber(const SPropValue* value, std::uint32_t& number)
{
    if (value == nullptr)
    {
        return false;
    }
    switch (PROP_TYPE(value->ulPropTag))
    {
    case PT_LONG:
        number = static_cast<std::uint32_t>(value->Value.l);
        return true;
    case PT_SHORT:
        number = static_cast<std::uint32_t>(value->Value.i);
        return true;
    case PT_BOOLEAN:
        // 16 bits wide: the rest of the union holds whatever was there.
        number = value->Value.b != 0 ? 1 : 0;
        return true;
    default:
        return false;
    }
}

bool TakeBlock(const SPropValue* value, BinaryBlock& block)
{
    if (value == nullptr || PROP_TYPE(value->ulPropTag) != PT_BINARY ||
        (value->Value.bin.lpb == nullptr && value->Value.bin.cb != 0))
    {
        return false;
    }
    block.assign(value->Value.bin.lpb, value->Value.bin.lpb + value->Value.bin.cb);
    return true;
}

bool TakeTime(const SPropValue* value, SYSTEMTIME& time)
{
    return value != nullptr && PROP_TYPE(value->ulPropTag) == PT_SYSTIME &&
           dates::FileTimeToSystemTime(value->Value.ft, time);
}

} // namespace prop

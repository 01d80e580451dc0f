#include "EmailAddress.h"

bool IsValidEmailAddress(WStringView text) noexcept
{
    const std::size_t at = text.find(WTEXT('@'));
    return at != WStringView::npos && at >= 1;
}

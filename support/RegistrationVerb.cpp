#include "RegistrationVerb.h"

#include <algorithm>

namespace
{

constexpr const WCHAR* kBlanks = WTEXT(" \t");

WStringView NameOf(RegistrationVerb verb)
{
    switch (verb)
    {
    case RegistrationVerb::UnregServer:
        return WTEXT("UnregServer");
    case RegistrationVerb::RegServer:
        return WTEXT("RegServer");
    case RegistrationVerb::UnregServerPerUser:
        return WTEXT("UnregServerPerUser");
    case RegistrationVerb::RegServerPerUser:
        return WTEXT("RegServerPerUser");
    case RegistrationVerb::None:
        break;
    }
    return {};
}

WCHAR ToLowerAscii(WCHAR c)
{
    const bool isUpper = c >= WTEXT('A') && c <= WTEXT('Z');
    return isUpper ? static_cast<WCHAR>(c + (WTEXT('a') - WTEXT('A'))) : c;
}

bool EqualsIgnoringCase(WStringView left, WStringView right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](WCHAR a, WCHAR b) {
        return ToLowerAscii(a) == ToLowerAscii(b);
    });
}

} // namespace

WStringView SkipProgramPath(WStringView commandLine)
{
    std::size_t end = WStringView::npos;
    if (commandLine.substr(0, 1) == WTEXT("\""))
    {
        end = commandLine.find(WTEXT('"'), 1);
        end = end == WStringView::npos ? end : end + 1;
    }
    else
    {
        end = commandLine.find_first_of(kBlanks);
    }
    return end == WStringView::npos ? WStringView() : commandLine.substr(end);
}

RegistrationVerb FindRegistrationVerb(WStringView arguments,
                                      std::initializer_list<RegistrationVerb> among)
{
    for (std::size_t at = arguments.find_first_of(WTEXT("-/")); at != WStringView::npos;
         at = arguments.find_first_of(WTEXT("-/"), at))
    {
        at++;
        const WStringView rest = arguments.substr(at);
        const WStringView token =
            rest.substr(0, std::min(rest.find_first_of(kBlanks), rest.size()));
        for (const RegistrationVerb verb : among)
        {
            if (EqualsIgnoringCase(token, NameOf(verb)))
            {
                return verb;
            }
        }
    }
    return RegistrationVerb::None;
}

RegistrationVerb FindRegistrationVerb(WStringView arguments)
{
    return FindRegistrationVerb(arguments,
                                {RegistrationVerb::UnregServer,
                                 RegistrationVerb::RegServer,
                                 RegistrationVerb::UnregServerPerUser,
                                 RegistrationVerb::RegServerPerUser});
}

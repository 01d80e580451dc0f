#include "EditParts.h"

namespace mapistore
{

void ThrowGone()
{
    throw CMapiError(MAPI_E_OBJECT_DELETED, L"the object is gone from the store");
}
Json ParsePart(std::string_view text, const TextRange& range)
{
    return Json::parse(text.substr(range.begin, range.end - range.begin));
}

std::string Dump(const Json& json)
{
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

std::string InPlace(std::string_view text, const TextRange& range, const Json& json)
{
    std::uint64_t lineBegin = range.begin;
    while (lineBegin > 0 && text[lineBegin - 1] == ' ')
    {
        --lineBegin;
    }
    const bool ownLine = lineBegin == 0 || text[lineBegin - 1] == '\n';
    const std::string blanks(ownLine ? range.begin - lineBegin : 8, ' ');
    std::string out;
    for (const char c : Dump(json))
    {
        out.push_back(c);
        if (c == '\n')
        {
            out += blanks;
        }
    }
    return out;
}

} // namespace mapistore

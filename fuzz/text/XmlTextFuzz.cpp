#include "FuzzInput.h"
#include "GlobalObjectId.h"
#include "XmlText.h"

/// Escapes any text and holds the result against the rule applied one character at a time; reads any
/// bytes as a global identifier.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const WString text = WideInput(data, size);
    WString expected;
    for (const WCHAR unit : text)
    {
        switch (unit)
        {
        case WTEXT('&'):
            expected += WTEXT("&amp;");
            break;
        case WTEXT('<'):
            expected += WTEXT("&lt;");
            break;
        case WTEXT('>'):
            expected += WTEXT("&gt;");
            break;
        default:
            expected += unit;
        }
    }
    Require(EscapedXmlLength(text) == expected.size());
    Require(EscapeXmlText(text) == expected);

    Require(GetUidFromGlobalObjectId({data, size}).size() <= size);
    return 0;
}

#pragma once

#include <string>
#include <vector>

#include "Utf8Text.h"

/// The arguments behind the program's name, in UTF-8. Only Windows needs it.
inline std::vector<std::string> Utf8Arguments(int argc, wchar_t** argv)
{
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i)
    {
        arguments.push_back(Utf8OfWide(argv[i]));
    }
    return arguments;
}

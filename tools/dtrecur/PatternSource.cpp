#include "PatternSource.h"

#include <filesystem>
#include <fstream>

#include "HexInput.h"
#include "StandardStreams.h"

namespace
{

std::filesystem::path PathOfUtf8(const std::string& name)
{
    return std::u8string(name.begin(), name.end());
}

PatternSource ReadRawFile(const std::string& name)
{
    PatternSource source;
    std::ifstream file(PathOfUtf8(name), std::ios::binary);
    if (!file)
    {
        source.problem = "cannot open '" + name + "'";
        return source;
    }
    std::vector<char> piece(1U << 16);
    while (file.read(piece.data(), static_cast<std::streamsize>(piece.size())) || file.gcount() > 0)
    {
        source.bytes.insert(source.bytes.end(), piece.begin(), piece.begin() + file.gcount());
    }
    if (file.bad())
    {
        source.problem = "cannot read '" + name + "'";
    }
    return source;
}

PatternSource ReadHex(const std::string& text)
{
    std::string digits;
    for (const char c : text)
    {
        if (c != ' ' && c != '\t' && c != '\r' && c != '\n')
        {
            digits.push_back(c);
        }
    }
    PatternSource source;
    if (auto bytes = BytesOfHex(digits))
    {
        source.bytes = std::move(*bytes);
    }
    else
    {
        source.problem = "not hexadecimal: '" + text.substr(0, 40) + "'";
        source.isUsage = true;
    }
    return source;
}

} // namespace

PatternSource ReadPatternSource(const std::string& argument)
{
    if (argument == "-")
    {
        // Digits, or else the bytes themselves: no pattern begins with what reads as digits alone.
        const std::string input = ReadAllInput();
        PatternSource source = ReadHex(input);
        if (!source.problem.empty())
        {
            source = PatternSource();
            source.bytes.assign(input.begin(), input.end());
        }
        return source;
    }
    if (!argument.empty() && argument.front() == '@')
    {
        return ReadRawFile(argument.substr(1));
    }
    return ReadHex(argument);
}

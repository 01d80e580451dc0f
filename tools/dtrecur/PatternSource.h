#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Bytes from the command line, or what was wrong with them.
struct PatternSource
{
    std::vector<std::uint8_t> bytes;
    std::string problem;  ///< empty when all went well
    bool isUsage = false; ///< whether the argument was wrong, and not a file
};

/// `argument` is hexadecimal digits, "@FILE" for the raw bytes of a file, or "-" for either on
/// standard input. White space between digits is ignored.
PatternSource ReadPatternSource(const std::string& argument);

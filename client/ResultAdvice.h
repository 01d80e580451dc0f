#pragma once

#include <cstdint>
#include <string>

namespace dtclient
{
/// What a result code means here and what a person can do about it.
struct ResultAdvice
{
    std::string meaning;
    std::string remedy;
};

/// "0x80080002".
std::string CodeText(std::uint32_t code);

/// Advice for the code of a COM call.
ResultAdvice AdviceForCall(std::uint32_t code);

/// Advice for the result that the event OnInitialize brings.
ResultAdvice AdviceForInitialize(std::uint32_t code);

/// "TRIED failed with 0xCODE: MEANING\nWhat to do: REMEDY\n"
std::string FailureText(const std::string& tried, std::uint32_t code, const ResultAdvice& advice);

/// "TRIED: WHAT\nWhat to do: REMEDY\n", for failures that have no code.
std::string TroubleText(const std::string& tried, const ResultAdvice& advice);
} // namespace dtclient

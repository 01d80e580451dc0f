#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "Base64.h"
#include "HexText.h"

/// Bytes a second, counted in the plain bytes: base64 and hexadecimal text, each way, beside a plain
/// copy of the same bytes.

namespace
{

std::vector<std::uint8_t> Plain(const benchmark::State& state)
{
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(state.range(0)));
    std::uint32_t value = 1;
    for (std::uint8_t& byte : bytes)
    {
        value = value * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(value >> 24);
    }
    return bytes;
}

const char* AsText(const std::vector<std::uint8_t>& bytes)
{
    return reinterpret_cast<const char*>(bytes.data());
}

void SetFigure(benchmark::State& state)
{
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void PlainCopy(benchmark::State& state)
{
    const std::vector<std::uint8_t> bytes = Plain(state);
    std::vector<std::uint8_t> copy(bytes.size());
    for ([[maybe_unused]] auto round : state)
    {
        std::memcpy(copy.data(), bytes.data(), bytes.size());
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    SetFigure(state);
}

void Base64Encode(benchmark::State& state)
{
    const std::vector<std::uint8_t> bytes = Plain(state);
    std::string text(xbase64_calc_encode_buf_size(nullptr, bytes.size()), '\0');
    for ([[maybe_unused]] auto round : state)
    {
        benchmark::DoNotOptimize(
            xbase64_encode(AsText(bytes), bytes.size(), text.data(), text.size()));
        benchmark::ClobberMemory();
    }
    SetFigure(state);
}

void Base64Decode(benchmark::State& state)
{
    const std::vector<std::uint8_t> bytes = Plain(state);
    const std::string text = EncodeBase64(bytes.data(), static_cast<ULONG>(bytes.size()));
    std::string plain(text.size(), '\0');
    for ([[maybe_unused]] auto round : state)
    {
        benchmark::DoNotOptimize(
            xbase64_decode(text.data(), text.size(), plain.data(), plain.size()));
        benchmark::ClobberMemory();
    }
    SetFigure(state);
}

void HexEncode(benchmark::State& state)
{
    const std::vector<std::uint8_t> bytes = Plain(state);
    WString text(2 * bytes.size(), WCHAR{});
    for ([[maybe_unused]] auto round : state)
    {
        WriteHexText(bytes, text.data());
        benchmark::DoNotOptimize(text.data());
        benchmark::ClobberMemory();
    }
    SetFigure(state);
}

void HexDecode(benchmark::State& state)
{
    const std::vector<std::uint8_t> bytes = Plain(state);
    const WString text = HexTextOf(bytes);
    std::vector<std::uint8_t> plain(bytes.size());
    std::uint32_t count = 0;
    for ([[maybe_unused]] auto round : state)
    {
        HexTextToBin(text, plain.data(), count);
        benchmark::DoNotOptimize(plain.data());
        benchmark::ClobberMemory();
    }
    SetFigure(state);
}

BENCHMARK(PlainCopy)->Arg(70)->Arg(65536);
BENCHMARK(Base64Encode)->Arg(70)->Arg(65536);
BENCHMARK(Base64Decode)->Arg(70)->Arg(65536);
BENCHMARK(HexEncode)->Arg(70)->Arg(65536);
BENCHMARK(HexDecode)->Arg(70)->Arg(65536);

} // namespace

BENCHMARK_MAIN();

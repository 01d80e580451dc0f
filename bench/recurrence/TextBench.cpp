#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "Base64.h"
#include "HexText.h"

// Base64 and hexadecimal text in bytes a second, beside a plain copy of the same bytes.

namespace
{

constexpr std::size_t kBytes = 1U << 20;

std::vector<std::uint8_t> SomeBytes()
{
    std::vector<std::uint8_t> bytes(kBytes);
    std::uint32_t state = 1;
    for (std::uint8_t& byte : bytes)
    {
        state = state * 1664525 + 1013904223;
        byte = static_cast<std::uint8_t>(state >> 24);
    }
    return bytes;
}

void CountBytes(benchmark::State& state)
{
    state.SetBytesProcessed(state.iterations() * std::int64_t{kBytes});
}

const char* Narrow(const std::vector<std::uint8_t>& bytes)
{
    return reinterpret_cast<const char*>(bytes.data());
}

void PlainCopy(benchmark::State& state)
{
    const std::vector<std::uint8_t> bytes = SomeBytes();
    std::vector<std::uint8_t> copy(kBytes);
    for (auto _ : state)
    {
        std::memcpy(copy.data(), bytes.data(), kBytes);
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    CountBytes(state);
}

void Base64Encode(benchmark::State& state)
{
    const std::vector<std::uint8_t> bytes = SomeBytes();
    std::vector<char> text(xbase64_calc_encode_buf_size(Narrow(bytes), kBytes));
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(xbase64_encode(Narrow(bytes), kBytes, text.data(), text.size()));
        benchmark::ClobberMemory();
    }
    CountBytes(state);
}

void Base64Decode(benchmark::State& state)
{
    const std::vector<std::uint8_t> bytes = SomeBytes();
    std::vector<char> text(xbase64_calc_encode_buf_size(Narrow(bytes), kBytes));
    const std::size_t length = xbase64_encode(Narrow(bytes), kBytes, text.data(), text.size());
    std::vector<char> back(text.size());
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(xbase64_decode(text.data(), length, back.data(), back.size()));
        benchmark::ClobberMemory();
    }
    CountBytes(state);
}

void HexEncode(benchmark::State& state)
{
    const std::vector<std::uint8_t> bytes = SomeBytes();
    WString text;
    for (auto _ : state)
    {
        BinToHexText(bytes.data(), text, kBytes);
        benchmark::DoNotOptimize(text.data());
        benchmark::ClobberMemory();
    }
    CountBytes(state);
}

void HexDecode(benchmark::State& state)
{
    const std::vector<std::uint8_t> bytes = SomeBytes();
    const WString text = HexTextOf(bytes);
    std::vector<std::uint8_t> back(kBytes);
    std::uint32_t count = 0;
    for (auto _ : state)
    {
        HexTextToBin(text, back.data(), count);
        benchmark::DoNotOptimize(back.data());
        benchmark::ClobberMemory();
    }
    CountBytes(state);
}

} // namespace

BENCHMARK(PlainCopy);
BENCHMARK(Base64Encode);
BENCHMARK(Base64Decode);
BENCHMARK(HexEncode);
BENCHMARK(HexDecode);

BENCHMARK_MAIN();

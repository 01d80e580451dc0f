#include <time.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Every target is linked with its entry wrapped, so that each input is held to a time limit that the
// fuzzer's own, in whole seconds, is too coarse for.

extern "C" int __real_LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" int __wrap_LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

constexpr long kLimitMicroseconds = 50'000;

/// Of this thread alone: a busy machine does not count.
long CpuMicroseconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return now.tv_sec * 1'000'000 + now.tv_nsec / 1000;
}

long TimeOf(const std::uint8_t* data, std::size_t size, int& result)
{
    const long begin = CpuMicroseconds();
    result = __real_LLVMFuzzerTestOneInput(data, size);
    return CpuMicroseconds() - begin;
}

} // namespace

extern "C" int __wrap_LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    int result = 0;
    long spent = TimeOf(data, size, result);
    // A first run pays for pages and caches; what is really slow is slow again.
    for (int again = 0; again < 2 && spent > kLimitMicroseconds; ++again)
    {
        spent = TimeOf(data, size, result);
    }
    if (spent > kLimitMicroseconds)
    {
        std::fprintf(stderr, "an input of %zu bytes takes %ld microseconds\n", size, spent);
        std::abort();
    }
    return result;
}

#include "MiniDumpFile.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace
{

constexpr std::uint32_t kSignature = 0x504D444D; // "MDMP"
constexpr std::size_t kHeaderBytes = 32;
constexpr std::size_t kDirectoryEntryBytes = 12;
constexpr std::size_t kThreadBytes = 48;
constexpr std::size_t kModuleBytes = 108;

} // namespace

CMiniDumpFile::CMiniDumpFile(std::string bytes) : m_bytes(std::move(bytes))
{
    if (!Holds(0, kHeaderBytes) || Read<std::uint32_t>(0) != kSignature)
    {
        return;
    }
    const auto count = Read<std::uint32_t>(8);
    const auto directory = Read<std::uint32_t>(12);
    if (!Holds(directory, std::size_t{count} * kDirectoryEntryBytes))
    {
        return;
    }
    m_isWhole = true;
    for (std::uint32_t i = 0; i < count; i++)
    {
        const std::size_t at = directory + i * kDirectoryEntryBytes;
        const Stream stream{
            Read<std::uint32_t>(at), Read<std::uint32_t>(at + 4), Read<std::uint32_t>(at + 8)};
        m_isWhole = m_isWhole && Holds(stream.offset, stream.size);
        m_streams.push_back(stream);
    }
}

template <typename Value>
Value CMiniDumpFile::Read(std::size_t offset) const
{
    if (!Holds(offset, sizeof(Value)))
    {
        throw std::out_of_range("beyond the end of the dump");
    }
    Value value;
    std::memcpy(&value, m_bytes.data() + offset, sizeof value);
    return value;
}

bool CMiniDumpFile::Holds(std::size_t offset, std::size_t size) const noexcept
{
    return offset <= m_bytes.size() && size <= m_bytes.size() - offset;
}

const CMiniDumpFile::Stream* CMiniDumpFile::Find(std::uint32_t type) const
{
    const auto found = std::find_if(
        m_streams.begin(), m_streams.end(), [type](const Stream& s) { return s.type == type; });
    return found != m_streams.end() ? &*found : nullptr;
}

bool CMiniDumpFile::HasStream(std::uint32_t type) const
{
    return Find(type) != nullptr;
}

std::uint64_t CMiniDumpFile::ReadFlags() const
{
    return Read<std::uint64_t>(24);
}

CMiniDumpFile::Exception CMiniDumpFile::ReadException() const
{
    const Stream* const stream = Find(kException);
    if (stream == nullptr)
    {
        return {};
    }
    const std::size_t at = stream->offset;
    return {Read<std::uint32_t>(at),
            Read<std::uint32_t>(at + 8),
            Read<std::uint64_t>(at + 24),
            Read<std::uint32_t>(at + 160)};
}

std::vector<CMiniDumpFile::Thread> CMiniDumpFile::ReadThreads() const
{
    std::vector<Thread> threads;
    const Stream* const stream = Find(kThreadList);
    const std::uint32_t count = stream != nullptr ? Read<std::uint32_t>(stream->offset) : 0;
    for (std::uint32_t i = 0; i < count; i++)
    {
        const std::size_t at = stream->offset + 4 + i * kThreadBytes;
        threads.push_back({Read<std::uint32_t>(at),
                           Read<std::uint64_t>(at + 24),
                           Read<std::uint32_t>(at + 32),
                           Read<std::uint32_t>(at + 40)});
    }
    return threads;
}

std::vector<CMiniDumpFile::Module> CMiniDumpFile::ReadModules() const
{
    std::vector<Module> modules;
    const Stream* const stream = Find(kModuleList);
    const std::uint32_t count = stream != nullptr ? Read<std::uint32_t>(stream->offset) : 0;
    for (std::uint32_t i = 0; i < count; i++)
    {
        const std::size_t at = stream->offset + 4 + i * kModuleBytes;
        Module module{Read<std::uint64_t>(at), Read<std::uint32_t>(at + 8), {}};
        const std::size_t name = Read<std::uint32_t>(at + 20);
        const auto cbName = Read<std::uint32_t>(name);
        for (std::size_t unit = 0; unit < cbName / 2; unit++)
        {
            const auto letter = Read<std::uint16_t>(name + 4 + 2 * unit);
            module.path.push_back(letter < 128 ? static_cast<char>(letter) : '?');
        }
        modules.push_back(module);
    }
    return modules;
}

std::uint16_t CMiniDumpFile::ReadArchitecture() const
{
    const Stream* const stream = Find(kSystemInfo);
    return stream != nullptr ? Read<std::uint16_t>(stream->offset) : std::uint16_t{0xFFFF};
}

std::vector<CMiniDumpFile::Range> CMiniDumpFile::MemoryRanges() const
{
    std::vector<Range> ranges;
    if (const Stream* const list = Find(kMemoryList); list != nullptr)
    {
        const auto count = Read<std::uint32_t>(list->offset);
        for (std::uint32_t i = 0; i < count; i++)
        {
            const std::size_t at = list->offset + 4 + i * std::size_t{16};
            ranges.push_back({Read<std::uint64_t>(at), Read<std::uint32_t>(at + 8)});
        }
    }
    if (const Stream* const list = Find(kMemory64List); list != nullptr)
    {
        const auto count = Read<std::uint64_t>(list->offset);
        for (std::uint64_t i = 0; i < count; i++)
        {
            const std::size_t at = list->offset + 16 + i * 16;
            ranges.push_back({Read<std::uint64_t>(at), Read<std::uint64_t>(at + 8)});
        }
    }
    return ranges;
}

std::size_t CMiniDumpFile::CountMemoryRanges() const
{
    return MemoryRanges().size();
}

bool CMiniDumpFile::HoldsMemoryAt(std::uint64_t address) const
{
    const std::vector<Range> ranges = MemoryRanges();
    return std::any_of(ranges.begin(), ranges.end(), [address](const Range& range) {
        return address >= range.start && address - range.start < range.size;
    });
}

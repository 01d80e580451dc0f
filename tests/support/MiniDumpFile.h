#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What a minidump file says, read by its published layout and bounds-checked, as a debugger would read
/// it. Nothing here comes from the code that wrote it.
class CMiniDumpFile final
{
public:
    explicit CMiniDumpFile(std::string bytes);

    /// True when header, directory and every listed stream lie whole within the file.
    [[nodiscard]] bool IsWhole() const noexcept { return m_isWhole; }
    [[nodiscard]] bool HasStream(std::uint32_t type) const;
    /// What the writer was asked to put in, as bits of MINIDUMP_TYPE.
    [[nodiscard]] std::uint64_t ReadFlags() const;

    struct Exception
    {
        std::uint32_t threadId;
        std::uint32_t code;
        std::uint64_t address;
        std::uint32_t cbContext; ///< size of the register context
    };
    /// The exception stream; all zero without one.
    [[nodiscard]] Exception ReadException() const;

    struct Thread
    {
        std::uint32_t id;
        std::uint64_t stackStart;
        std::uint32_t cbStack;
        std::uint32_t cbContext;
    };
    [[nodiscard]] std::vector<Thread> ReadThreads() const;

    struct Module
    {
        std::uint64_t base;
        std::uint32_t size;
        std::string path; ///< letters beyond ASCII read as "?"
    };
    [[nodiscard]] std::vector<Module> ReadModules() const;

    /// Processor architecture of the system stream; 9 is x86-64.
    [[nodiscard]] std::uint16_t ReadArchitecture() const;
    /// How many memory ranges the dump holds, in both kinds of list, and whether one covers `address`.
    [[nodiscard]] std::size_t CountMemoryRanges() const;
    [[nodiscard]] bool HoldsMemoryAt(std::uint64_t address) const;

    static constexpr std::uint32_t kThreadList = 3;
    static constexpr std::uint32_t kModuleList = 4;
    static constexpr std::uint32_t kMemoryList = 5;
    static constexpr std::uint32_t kException = 6;
    static constexpr std::uint32_t kSystemInfo = 7;
    static constexpr std::uint32_t kMemory64List = 9;

private:
    struct Stream
    {
        std::uint32_t type;
        std::uint32_t size;
        std::uint32_t offset;
    };
    struct Range
    {
        std::uint64_t start;
        std::uint64_t size;
    };

    template <typename Value>
    [[nodiscard]] Value Read(std::size_t offset) const;
    [[nodiscard]] bool Holds(std::size_t offset, std::size_t size) const noexcept;
    [[nodiscard]] const Stream* Find(std::uint32_t type) const;
    [[nodiscard]] std::vector<Range> MemoryRanges() const;

    std::string m_bytes;
    std::vector<Stream> m_streams;
    bool m_isWhole = false;
};

#include "HexString.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

namespace
{

std::string AddressColumn(const void* address)
{
    std::array<char, 32> text{};
    std::snprintf(text.data(),
                  text.size(),
                  "%08x : ",
                  static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(address) & 0xFFFFFFFF));
    return text.data();
}

TEST(HexString, AnEmptyRangeGivesAnEmptyText)
{
    const char byte = 'x';

    EXPECT_STREQ(CHexString(&byte, std::size_t{0}), "");
    EXPECT_STREQ(CHexString(&byte, &byte), "");
}

TEST(HexString, AShortLineIsFilledUpToTheTextColumn)
{
    const std::array<char, 3> bytes = {'A', '\n', '\xFF'};

    const std::string line = static_cast<char*>(CHexString(bytes.data(), bytes.size()));

    EXPECT_EQ(line, AddressColumn(bytes.data()) + "41 0a ff " + std::string(40, ' ') + "A \xFF\n");
}

TEST(HexString, EverySixteenBytesBeginALineWithTheirAddress)
{
    std::array<char, 17> bytes;
    bytes.fill('x');
    bytes[3] = '\0';

    const std::string dump =
        static_cast<char*>(CHexString(bytes.data(), bytes.data() + bytes.size()));

    EXPECT_EQ(dump,
              AddressColumn(bytes.data()) +
                  "78 78 78 00 78 78 78 78 78 78 78 78 78 78 78 78  xxx xxxxxxxxxxxx\n" +
                  AddressColumn(bytes.data() + 16) + "78 " + std::string(46, ' ') + "x\n");
}

TEST(HexString, ALongRangeFitsItsText)
{
    const std::string bytes(100'000, 'x');

    const CHexString dump(bytes.data(), bytes.size());

    EXPECT_EQ(std::string(static_cast<char*>(dump)).size(), 6250U * 77);
}

} // namespace

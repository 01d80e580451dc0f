#include "Base64.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

#include "NarrowText.h"

namespace
{

std::string Encoded(const std::string& plain)
{
    std::string encoded = "before";
    Base64EncodeForAString(plain, encoded);
    return encoded;
}

std::string Decoded(const std::string& encoded)
{
    std::string plain;
    EXPECT_TRUE(Base64DecodeForAString(encoded, plain));
    return plain;
}

struct Vector
{
    const char* plain;
    const char* encoded;
};

// RFC 4648, section 10.
constexpr std::array<Vector, 7> kVectors = {{{"", ""},
                                             {"f", "Zg=="},
                                             {"fo", "Zm8="},
                                             {"foo", "Zm9v"},
                                             {"foob", "Zm9vYg=="},
                                             {"fooba", "Zm9vYmE="},
                                             {"foobar", "Zm9vYmFy"}}};

TEST(Base64, EncodesTheVectorsOfRfc4648)
{
    for (const Vector& vector : kVectors)
    {
        EXPECT_EQ(Encoded(vector.plain), vector.encoded);
    }
}

TEST(Base64, DecodesTheVectorsOfRfc4648)
{
    for (const Vector& vector : kVectors)
    {
        if (*vector.encoded != '\0')
        {
            EXPECT_EQ(Decoded(vector.encoded), vector.plain);
        }
    }
}

TEST(Base64, AllSixtyFourCharactersStandInTheStandardOrder)
{
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

    EXPECT_EQ(Encoded(Decoded(alphabet)), alphabet);
    EXPECT_EQ(Decoded(alphabet).substr(0, 3), std::string("\x00\x10\x83", 3));
}

TEST(Base64, ALongTextHasNoLineBreaks)
{
    const std::string encoded = Encoded(std::string(3000, 'x'));

    EXPECT_EQ(encoded.size(), 4000U);
    EXPECT_EQ(encoded.find_first_of("\r\n"), std::string::npos);
}

TEST(Base64, EveryLengthOfBytesSurvivesTheWayThereAndBack)
{
    std::mt19937 random(1);
    for (std::size_t length = 1; length < 300; ++length)
    {
        std::string plain(length, '\0');
        for (char& byte : plain)
        {
            byte = static_cast<char>(random());
        }

        EXPECT_EQ(Decoded(Encoded(plain)), plain);
    }
}

TEST(Base64, TheBufferSizeIsCountedInWholeGroupsPlusOne)
{
    EXPECT_EQ(xbase64_calc_encode_buf_size(nullptr, 0), 4U);
    EXPECT_EQ(xbase64_calc_encode_buf_size(nullptr, 2), 4U);
    EXPECT_EQ(xbase64_calc_encode_buf_size(nullptr, 3), 8U);
    EXPECT_EQ(xbase64_calc_encode_buf_size(nullptr, 100), 136U);
}

TEST(Base64, EncodingWritesNoTerminatorAndIgnoresTheDestinationSize)
{
    std::array<char, 8> buffer;
    buffer.fill('#');

    EXPECT_EQ(xbase64_encode("f", 1, buffer.data(), 0), 4U);
    EXPECT_EQ(std::string(buffer.data(), 8), "Zg==####");
    EXPECT_EQ(xbase64_encode("f", 0, buffer.data(), 0), 0U);
}

TEST(Base64, ATailOfFewerThanFourCharactersIsIgnored)
{
    std::array<char, 8> buffer;
    buffer.fill('#');

    EXPECT_EQ(xbase64_decode("Zg", 2, buffer.data(), 0), 0U);
    EXPECT_EQ(buffer[0], '#');
    EXPECT_EQ(Decoded("Zm9vYg"), "foo");
    EXPECT_EQ(Decoded("Zg"), "");
}

TEST(Base64, JunkReadsAsZeroBits)
{
    EXPECT_EQ(Decoded("Z!=="), std::string("\x64", 1));
    EXPECT_EQ(Decoded("!!!!"), std::string(3, '\0'));
    EXPECT_EQ(Decoded("Zm9v\r\nYg"), std::string("foo\x00\x06\x20", 6));
    EXPECT_EQ(Decoded("\xC3\xA4--"), std::string(3, '\0'));
}

TEST(Base64, PaddingInTheMiddleShortensItsGroupOnly)
{
    EXPECT_EQ(Decoded("Zg==Zm8=Zm9v"), "ffofoo");
    EXPECT_EQ(Decoded("Zg=vZm9v"), "ffoo");
}

TEST(Base64, PaddingInTheFirstTwoPlacesReadsAsZero)
{
    EXPECT_EQ(Decoded("=m9v"), std::string("\x02\x6F\x6F", 3));
    EXPECT_EQ(Decoded("===="), std::string(1, '\0'));
}

TEST(Base64, ThreeBytesAreStoredForEveryGroup)
{
    std::array<char, 4> buffer;
    buffer.fill('#');

    EXPECT_EQ(xbase64_decode("Zg==", 4, buffer.data(), 0), 1U);

    EXPECT_EQ(std::string(buffer.data(), 4), std::string("f\0\0#", 4));
}

TEST(Base64, TheTableNeedsNoPreparation)
{
    helper_xbase64_init_decode_table();

    EXPECT_EQ(Decoded("Zm9v"), "foo");
}

TEST(Base64, EncodeBase64OfNullIsEmpty)
{
    EXPECT_EQ(EncodeBase64(nullptr, 10), "");
    const std::array<BYTE, 3> bytes = {0xFF, 0xFE, 0xFD};
    EXPECT_EQ(EncodeBase64(bytes.data(), 3), "//79");
    EXPECT_EQ(EncodeBase64(bytes.data(), 0), "");
}

TEST(Base64, DecodeBase64ZeroesTheDestinationAndGivesTheLength)
{
    std::array<BYTE, 8> buffer;
    buffer.fill(0xEE);
    ULONG size = 6;

    EXPECT_EQ(DecodeBase64("Zm8=", buffer.data(), &size), 1);

    EXPECT_EQ(size, 2U);
    EXPECT_EQ(buffer, (std::array<BYTE, 8>{'f', 'o', 0, 0, 0, 0, 0xEE, 0xEE}));
}

TEST(Base64, DecodeBase64AnswersOneForAnythingAtAll)
{
    std::array<BYTE, 8> buffer{};
    ULONG size = 8;

    EXPECT_EQ(DecodeBase64("", buffer.data(), &size), 1);
    EXPECT_EQ(size, 0U);
}

TEST(Base64, TheNarrowDecoderRefusesEmptyInputAndAppends)
{
    std::string plain = "kept ";

    EXPECT_FALSE(Base64DecodeForAString("", plain));
    EXPECT_EQ(plain, "kept ");
    EXPECT_TRUE(Base64DecodeForAString("Zm9v", plain));
    EXPECT_EQ(plain, "kept foo");
}

TEST(Base64, TheWideFormsEncodeTheNarrowTextAndNotUtf16)
{
    WString encoded;
    Base64EncodeForWString(WTEXT("foo"), encoded);
    EXPECT_EQ(encoded, WTEXT("Zm9v"));

    WString plain;
    EXPECT_TRUE(Base64DecodeForWString(WTEXT("Zm9vYmFy"), plain));
    EXPECT_EQ(plain, WTEXT("foobar"));
}

TEST(Base64, TheWideFormsGoThroughTheSystemCodePage)
{
    const WString text = {0x00E4, 0x4F1A, 'x'};
    WString encoded;
    std::string expected;

    Base64EncodeForWString(text, encoded);
    Base64EncodeForAString(NarrowText(text), expected);

    EXPECT_EQ(NarrowText(encoded), expected);
}

TEST(Base64, TheWideDecoderRefusesEmptyInputAndLeavesTheTextAlone)
{
    WString plain = WTEXT("kept");

    EXPECT_FALSE(Base64DecodeForWString(WTEXT(""), plain));
    EXPECT_EQ(plain, WTEXT("kept"));
}

} // namespace

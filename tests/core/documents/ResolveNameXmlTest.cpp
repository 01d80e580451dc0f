#include "ResolveNameXml.h"

#include <gtest/gtest.h>

#include "DocumentFile.h"

namespace
{

TEST(ResolveNameXml, SuccessGivesNameAndAddressEscaped)
{
    EXPECT_EQ(Utf8FromWide(BuildResolveNameXml(true, WTEXT("R&D"), WTEXT("r<d@example.org"))),
              Utf8FromWide(ExpectedDocument("resolve-name-success.expected.txt")));
}

TEST(ResolveNameXml, FailureGivesTheNameAloneEvenWithAnAddressAtHand)
{
    EXPECT_EQ(Utf8FromWide(BuildResolveNameXml(
                  false, WTEXT("nobody > somebody"), WTEXT("left@example.org"))),
              Utf8FromWide(ExpectedDocument("resolve-name-failure.expected.txt")));
}

} // namespace

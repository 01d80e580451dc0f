#include "EmailAddress.h"

#include <gtest/gtest.h>

namespace
{

TEST(IsValidEmailAddress, AsksForAnAtSignBehindTheFirstCharacter)
{
    EXPECT_TRUE(IsValidEmailAddress(WTEXT("a@b")));
    EXPECT_TRUE(IsValidEmailAddress(WTEXT("a@")));
    EXPECT_TRUE(IsValidEmailAddress(WTEXT("a@b@c")));
    EXPECT_FALSE(IsValidEmailAddress(WTEXT("")));
    EXPECT_FALSE(IsValidEmailAddress(WTEXT("Ada Lovelace")));
    EXPECT_FALSE(IsValidEmailAddress(WTEXT("@b")));
}

TEST(IsValidEmailAddress, ALaterAtSignDoesNotMakeUpForOneAtTheBeginning)
{
    EXPECT_FALSE(IsValidEmailAddress(WTEXT("@a@b")));
}

} // namespace

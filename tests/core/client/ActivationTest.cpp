#include "Activation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace
{
struct Tries
{
    std::uint32_t last = 0;
    std::size_t creations = 0;
    int pauses = 0;
};

// Creations that answer one code after the other, the last one for ever.
Tries Create(const std::vector<std::uint32_t>& answers)
{
    Tries tries;
    tries.last = dtclient::CreateBehindAnEndingServer(
        [&] {
            const std::size_t at = std::min(tries.creations, answers.size() - 1);
            ++tries.creations;
            return answers[at];
        },
        [&] { ++tries.pauses; });
    return tries;
}
} // namespace

TEST(Activation, AnObjectThatIsThereIsTakenAtOnce)
{
    const Tries tries = Create({0});

    EXPECT_EQ(tries.last, 0U);
    EXPECT_EQ(tries.creations, 1U);
    EXPECT_EQ(tries.pauses, 0);
}

TEST(Activation, EachSignOfAnEndingServerIsFollowedByAnotherTry)
{
    for (const std::uint32_t ending : {0x80010108U, 0x800706BAU, 0x800706BEU, 0x80080008U})
    {
        const Tries tries = Create({ending, 0});

        EXPECT_EQ(tries.last, 0U) << ending;
        EXPECT_EQ(tries.creations, 2U) << ending;
        EXPECT_EQ(tries.pauses, 1) << ending;
    }
}

TEST(Activation, AServerThatStaysAwayIsTriedFiveTimesAndItsCodeStands)
{
    const Tries tries = Create({0x800706BAU});

    EXPECT_EQ(tries.last, 0x800706BAU);
    EXPECT_EQ(tries.creations, 5U);
    EXPECT_EQ(tries.pauses, 4);
}

TEST(Activation, AnyOtherFailureStandsAtOnce)
{
    const Tries tries = Create({0x80040154U, 0});

    EXPECT_EQ(tries.last, 0x80040154U);
    EXPECT_EQ(tries.creations, 1U);
    EXPECT_EQ(tries.pauses, 0);
}

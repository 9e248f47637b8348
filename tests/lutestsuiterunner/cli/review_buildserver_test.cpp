#include <string>

#include <gtest/gtest.h>

#include "tests/lutestsuiterunner/cli/reviewtest.h"

namespace
{

TEST_F(RunnerReview, DecidesNothingWithTheOptionCI)
{
    Write(L"a", "alt");
    Receive(L"a", "neu");

    const SHostRun refused = Review({L"--ci", L"--accept", L"all"});

    EXPECT_EQ(refused.exitStatus, 2);
    ExpectLine(refused.errors, "Mit '--ci' oder der Umgebungsvariablen CI wird nichts übernommen");
    EXPECT_EQ(Review({L"--ci"}).exitStatus, 1);
    EXPECT_EQ(Read(L"a"), "alt");
    Review({L"--reject", L"all"});
    EXPECT_EQ(Review({L"--ci"}).exitStatus, 0);
}

TEST_F(RunnerReview, DecidesNothingIfTheVariableCIIsTrue)
{
    Write(L"a", "alt");
    Receive(L"a", "neu");

    for (const wchar_t* const value : {L"true", L"1"})
    {
        const ScopedEnvironmentVariable variable(L"CI", value);
        for (const wchar_t* const option : {L"--accept", L"--reject"})
        {
            const SHostRun refused = Review({option, L"all"});
            EXPECT_EQ(refused.exitStatus, 2);
            ExpectLine(refused.errors, "Mit '--ci' oder der Umgebungsvariablen CI wird nichts übernommen");
        }
        EXPECT_EQ(Review().exitStatus, 0) << "only --ci makes differences an error";
    }
    EXPECT_EQ(Read(L"a"), "alt");
    EXPECT_TRUE(Holds(L"a.received"));
    const ScopedEnvironmentVariable variable(L"CI", L"false");
    EXPECT_EQ(Review({L"--accept", L"all"}).exitStatus, 0);
    EXPECT_EQ(Read(L"a"), "neu");
}

} // namespace

#include "testing/lutestsuiterunner/console/progress.h"

#include <gtest/gtest.h>

namespace
{

TEST(RunnerProgress, ShowsHowFarTheRunIs)
{
    const Runner::SProgress progress = {12, 700, 3, 61, 3600, {{L"a/CFoo:bär.txt", 7}, {L"CBar:x", 0}}};

    EXPECT_EQ(Runner::FormatProgress(progress),
              L"12/700, fehlgeschlagen: 3, Zeit: 1:01, noch etwa 1:00:00, a/CFoo:bär.txt (0:07), CBar:x (0:00)");
}

TEST(RunnerProgress, EstimatesNothingBeforeTheFirstCase)
{
    EXPECT_EQ(Runner::FormatProgress({0, 5, 0, 2, 0, {}}), L"0/5, fehlgeschlagen: 0, Zeit: 0:02");
}

TEST(RunnerProgress, FormatsDurations)
{
    EXPECT_EQ(Runner::FormatDuration(0), L"0:00");
    EXPECT_EQ(Runner::FormatDuration(3599), L"59:59");
    EXPECT_EQ(Runner::FormatDuration(36061), L"10:01:01");
}

} // namespace

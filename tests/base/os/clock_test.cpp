#include "base/os/clock.h"

#include <array>
#include <ctime>
#include <vector>

#include <gtest/gtest.h>

namespace
{

std::time_t toSeconds(const LbOs::SLocalTime& time)
{
    std::tm local = {};
    local.tm_year = time.year - 1900;
    local.tm_mon = time.month - 1;
    local.tm_mday = time.day;
    local.tm_hour = time.hour;
    local.tm_min = time.minute;
    local.tm_sec = time.second;
    local.tm_isdst = -1;
    return std::mktime(&local);
}

TEST(OsClock, AgreesWithTheRunTimesClock)
{
    const std::time_t before = std::time(nullptr);
    const std::time_t now = toSeconds(LbOs::GetLocalTimeNow());
    const std::time_t after = std::time(nullptr);
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
}

TEST(OsClock, FillsAllBytesWithRandomValues)
{
    std::array<unsigned char, 1000> seen{};
    for (int round = 0; round < 32; ++round)
    {
        std::array<unsigned char, 1000> bytes{};
        LbOs::FillRandom(bytes.data(), bytes.size());
        for (std::size_t index = 0; index < bytes.size(); ++index)
        {
            seen[index] = static_cast<unsigned char>(seen[index] | bytes[index]);
        }
    }
    // A random byte is 0 in all 32 rounds with a probability of 2^-256.
    for (const unsigned char byte : seen)
    {
        EXPECT_NE(byte, 0);
    }
}

TEST(OsClock, FillsOnlyTheBuffer)
{
    std::vector<unsigned char> bytes(40, 0xAB);
    LbOs::FillRandom(bytes.data(), 0);
    EXPECT_EQ(bytes, std::vector<unsigned char>(40, 0xAB));
    LbOs::FillRandom(bytes.data() + 4, 32);
    EXPECT_EQ(std::vector<unsigned char>(bytes.begin(), bytes.begin() + 4), std::vector<unsigned char>(4, 0xAB));
    EXPECT_EQ(std::vector<unsigned char>(bytes.end() - 4, bytes.end()), std::vector<unsigned char>(4, 0xAB));
}

} // namespace

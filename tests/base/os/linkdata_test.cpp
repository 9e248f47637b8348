#include "base/os/linkdata.h"

#include <gtest/gtest.h>

namespace
{

constexpr std::uint32_t c_SymbolicLink = 0xA000000C;
constexpr std::uint32_t c_MountPoint = 0xA0000003;
constexpr std::uint32_t c_Relative = 1;

void append(std::string& bytes, std::uint32_t number, std::size_t size)
{
    for (std::size_t index = 0; index < size; ++index)
    {
        bytes.push_back(static_cast<char>(number >> (8 * index)));
    }
}

void append(std::string& bytes, std::wstring_view text)
{
    for (const wchar_t character : text)
    {
        append(bytes, static_cast<std::uint32_t>(character), 2);
    }
}

/// Makes the data of a link in the system's layout: tag, size, positions of both names, flags for a symbolic link, and
/// the names.
std::string makeLink(std::uint32_t tag, std::wstring_view target, std::wstring_view shown, std::uint32_t flags,
                     bool isShownFirst)
{
    const auto targetSize = static_cast<std::uint32_t>(2 * target.size());
    const auto shownSize = static_cast<std::uint32_t>(2 * shown.size());
    std::string names;
    append(names, isShownFirst ? shown : target);
    append(names, isShownFirst ? target : shown);
    std::string places;
    append(places, isShownFirst ? shownSize : 0, 2);
    append(places, targetSize, 2);
    append(places, isShownFirst ? 0 : targetSize, 2);
    append(places, shownSize, 2);
    if (tag == c_SymbolicLink)
    {
        append(places, flags, 4);
    }
    std::string bytes;
    append(bytes, tag, 4);
    append(bytes, static_cast<std::uint32_t>(places.size() + names.size()), 2);
    append(bytes, 0, 2);
    return bytes + places + names;
}

TEST(OsLinkData, HoldsTheTargetOfASymbolicLink)
{
    EXPECT_EQ(LbOs::GetTargetOfLinkData(
                  makeLink(c_SymbolicLink, L"\\??\\C:\\Prüfung\\a.txt", L"C:\\Prüfung\\a.txt", 0, false)),
              L"\\??\\C:\\Prüfung\\a.txt");
}

/// Both names have the same length, so that only the offset distinguishes the target from the other name.
TEST(OsLinkData, HoldsTheTargetOfARelativeSymbolicLink)
{
    for (const bool isShownFirst : {false, true})
    {
        EXPECT_EQ(LbOs::GetTargetOfLinkData(
                      makeLink(c_SymbolicLink, L"..\\2\\größer.txt", L"..\\3\\kleiner.tx", c_Relative, isShownFirst)),
                  L"..\\2\\größer.txt");
    }
}

TEST(OsLinkData, HoldsTheTargetOfAMountPoint)
{
    for (const bool isShownFirst : {false, true})
    {
        EXPECT_EQ(LbOs::GetTargetOfLinkData(makeLink(c_MountPoint, L"\\??\\D:\\Daten", L"D:\\Daten", 0, isShownFirst)),
                  L"\\??\\D:\\Daten");
    }
}

TEST(OsLinkData, HoldsNoTargetIfItIsTruncated)
{
    for (const std::uint32_t tag : {c_SymbolicLink, c_MountPoint})
    {
        const std::string bytes = makeLink(tag, L"\\??\\D:\\Daten", L"", 0, false);
        ASSERT_EQ(LbOs::GetTargetOfLinkData(bytes), L"\\??\\D:\\Daten");
        for (std::size_t size = 0; size < bytes.size(); ++size)
        {
            EXPECT_EQ(LbOs::GetTargetOfLinkData(std::string_view(bytes).substr(0, size)), L"") << size;
        }
    }
}

} // namespace

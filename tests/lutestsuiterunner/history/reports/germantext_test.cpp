#include "testing/lutestsuiterunner/history/reports/germantext.h"

#include <gtest/gtest.h>

using namespace Runner::History;

TEST(HistoryGermanText, WritesNumbersWithDecimalCommasAndThousandsPoints)
{
    EXPECT_EQ(FormatCount(0), "0");
    EXPECT_EQ(FormatCount(999), "999");
    EXPECT_EQ(FormatCount(1234567), "1.234.567");
    EXPECT_EQ(FormatSeconds(1.234), "1,23 s");
    EXPECT_EQ(FormatSeconds(0.0456), "45,6 ms");
    EXPECT_EQ(FormatSeconds(0.0), "0,00 µs");
    EXPECT_EQ(FormatSeconds(7200.0), "2,00 h");
    EXPECT_EQ(FormatBytes(1500.0), "1,50 kB");
    EXPECT_EQ(FormatChange(1.0, 1.102), "+10,2 %");
    EXPECT_EQ(FormatChange(1.0, 0.5), "−50,0 %");
    EXPECT_EQ(FormatChange(0.0, 1.0), "neu");
}

TEST(HistoryGermanText, EscapesMarkupAndReplacesCharactersThatXmlForbids)
{
    EXPECT_EQ(ToMarkup(L"a<\x01>&\"ß"), "a&lt;\uFFFD&gt;&amp;&quot;ß");
}

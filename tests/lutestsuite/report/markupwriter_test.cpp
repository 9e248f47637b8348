#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "base/lbfilesystem.h"
#include "base/lustream.h"
#include "testing/lutestsuite/lutestsuitemarkupwriter.h"
#include "tests/support/scopedfolder.h"

namespace
{

using LuMarkupWriter = LuTestSuiteUtils::LuMarkupWriter;

class LuMarkupWriterTest : public testing::Test
{
protected:
    /// The content that `write` writes to a new file.
    template<typename F>
    std::string Write(const F& write)
    {
        const std::wstring path = m_folder.GetPathOf(L"markup.txt");
        LuStreamWriteASCIIFile file(path);
        LuMarkupWriter writer(file);
        write(writer);
        file.Close();
        return LbFileSystem::ReadFile8Bit(path);
    }

    ScopedFolder m_folder;
};

TEST_F(LuMarkupWriterTest, IndentsByOneTabPerLevel)
{
    const std::string text = Write([](LuMarkupWriter& writer) {
        writer.WriteLineOpen(L"a");
        writer.WriteLine(L"b");
        writer.WriteLineClose(L"c");
    });

    EXPECT_EQ(text, "a\n\tb\nc\n");
}

TEST_F(LuMarkupWriterTest, BuildsALineFromParts)
{
    const std::string text = Write([](LuMarkupWriter& writer) {
        writer.WriteOpen(L"<a>");
        writer.Write(L"text");
        writer.WriteClose(L"</a>");
        writer.Write(L"\n");
    });

    EXPECT_EQ(text, "<a>text</a>\n");
}

TEST_F(LuMarkupWriterTest, IndentsAClosingPartLikeItsOpeningPart)
{
    const std::string text = Write([](LuMarkupWriter& writer) {
        writer.WriteLineOpen(L"<a>");
        writer.WriteOpen(L"<b>");
        writer.Write(L"\n");
        writer.WriteClose(L"</b>");
        writer.Write(L"\n");
        writer.WriteLineClose(L"</a>");
    });

    EXPECT_EQ(text, "<a>\n\t<b>\n\t</b>\n</a>\n");
}

TEST_F(LuMarkupWriterTest, IndentWritesOnlyTheTabsOfTheLevel)
{
    const std::string text = Write([](LuMarkupWriter& writer) {
        writer.Indent();
        writer.WriteLineOpen(L"a");
        writer.WriteLineOpen(L"b");
        writer.Indent();
        writer.Write(L"c");
    });

    EXPECT_EQ(text, "a\n\tb\n\t\tc");
}

TEST_F(LuMarkupWriterTest, WritesAnElementAsOneLine)
{
    const std::string text = Write([](LuMarkupWriter& writer) {
        writer.WriteLineOpen(L"<table>");
        writer.WriteElement(L"td", L"Wert & \"Text\"");
        writer.WriteElement(L"td", L"class=\"ok\"", L"Wert");
        writer.WriteElement(L"td", L"");
    });

    EXPECT_EQ(text, "<table>\n\t<td>Wert & \"Text\"</td>\n\t<td class=\"ok\">Wert</td>\n\t<td></td>\n");
}

TEST_F(LuMarkupWriterTest, FormatsNumbersByTheirType)
{
    const std::string text = Write([](LuMarkupWriter& writer) {
        writer.WriteElement(L"n", std::int32_t{-1});
        writer.WriteElement(L"n", std::uint32_t{4294967295U});
        writer.WriteElement(L"n", 0.5F);
        writer.WriteElement(L"n", 1.0000004);
        writer.WriteElement(L"n", std::numeric_limits<std::int64_t>::min());
        writer.WriteElement(L"n", std::numeric_limits<std::uint64_t>::max());
    });

    EXPECT_EQ(text, "<n>-1</n>\n"
                    "<n>4294967295</n>\n"
                    "<n>0.500000</n>\n"
                    "<n>1.000000</n>\n"
                    "<n>-9223372036854775808</n>\n"
                    "<n>18446744073709551615</n>\n");
}

TEST_F(LuMarkupWriterTest, WritesNumbersBesideAttributes)
{
    const std::string text = Write([](LuMarkupWriter& writer) {
        writer.WriteElement(L"n", L"a=\"b\"", std::int32_t{-5});
        writer.WriteElement(L"n", L"a=\"b\"", 2.25);
    });

    EXPECT_EQ(text, "<n a=\"b\">-5</n>\n<n a=\"b\">2.250000</n>\n");
}

TEST_F(LuMarkupWriterTest, WritesUnsignedNumbersAsSignedOnesAfterAttributes)
{
    const std::string text = Write([](LuMarkupWriter& writer) {
        writer.WriteElement(L"n", L"a=\"b\"", std::uint32_t{2147483647U});
        writer.WriteElement(L"n", L"a=\"b\"", std::uint32_t{2147483648U});
        writer.WriteElement(L"n", L"a=\"b\"", std::uint32_t{4294967295U});
    });

    EXPECT_EQ(text, "<n a=\"b\">2147483647</n>\n<n a=\"b\">-2147483648</n>\n<n a=\"b\">-1</n>\n");
}

TEST_F(LuMarkupWriterTest, WritesOneBytePerCharacter)
{
    const std::string text = Write([](LuMarkupWriter& writer) { writer.Write(L"äß\u20AC\x01\t"); });

    EXPECT_EQ(text, "\xE4\xDF??\t");
}

TEST_F(LuMarkupWriterTest, EscapesTheFiveCharactersOfMarkup)
{
    EXPECT_EQ(LuMarkupWriter::Escape(L"\"&'<>"), L"&quot;&amp;&apos;&lt;&gt;");
}

TEST_F(LuMarkupWriterTest, EscapesEachOccurrenceAndNoOtherCharacter)
{
    EXPECT_EQ(LuMarkupWriter::Escape(L"if (a < b && c) \"ä\"\n"), L"if (a &lt; b &amp;&amp; c) &quot;ä&quot;\n");
}

TEST_F(LuMarkupWriterTest, KeepsEmptyTextEmpty)
{
    EXPECT_EQ(LuMarkupWriter::Escape(L""), L"");
}

TEST_F(LuMarkupWriterTest, RestoresEscapedText)
{
    const std::wstring text = L"\"&'<> &amp; &amp;amp; &lt";
    EXPECT_EQ(LuMarkupWriter::Unescape(LuMarkupWriter::Escape(text)), text);
}

TEST_F(LuMarkupWriterTest, UnescapesOnlyTheFiveEntities)
{
    EXPECT_EQ(LuMarkupWriter::Unescape(L"&AMP; &lt &#65; &auml; & &&amp;"), L"&AMP; &lt &#65; &auml; & &&");
}

TEST_F(LuMarkupWriterTest, EscapesAnEscapedTextAgain)
{
    EXPECT_EQ(LuMarkupWriter::Escape(L"&lt;"), L"&amp;lt;");
}

} // namespace

#include "base/xmlnode.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/scopedfolder.h"

using namespace std::string_literals;

namespace
{

using EResult = XMLDocument::EResult;

/// A parsed text with the root element "r".
class CParsed
{
public:
    explicit CParsed(const std::string& text) { EXPECT_EQ(m_document.LoadText(text, "r"), EResult::Ok) << text; }

    XMLNode GetRoot() const { return m_document.GetRoot(); }

private:
    XMLDocument m_document;
};

std::wstring getRootText(const std::string& xml)
{
    return CParsed(xml).GetRoot().GetText();
}

EResult parse(const std::string& xml)
{
    XMLDocument document;
    return document.LoadText(xml, "r");
}

/// Converts ASCII text to the bytes of UTF-16.
std::string toUtf16(const std::string& text, bool isBigEndian)
{
    std::string bytes;
    for (const char character : text)
    {
        bytes += isBigEndian ? std::string{'\0', character} : std::string{character, '\0'};
    }
    return bytes;
}

} // namespace

TEST(XMLNode, ReturnsEmptyValuesIfItIsEmpty)
{
    const XMLNode node;
    EXPECT_TRUE(node.IsEmpty());
    EXPECT_EQ(node.GetName(), L"");
    EXPECT_EQ(node.GetText(), L"");
    EXPECT_FALSE(node.HasText());
    EXPECT_FALSE(node.HasAttribute("a"));
    EXPECT_EQ(node.GetAttribute("a"), L"");
    EXPECT_TRUE(node.GetChild("a").IsEmpty());
    EXPECT_TRUE(node.GetFirstChild().IsEmpty());
    EXPECT_TRUE(node.GetNextSibling().IsEmpty());
    EXPECT_TRUE(node.GetChildren().begin() == node.GetChildren().end());
}

TEST(XMLNode, ReadsItsName)
{
    XMLDocument document;
    ASSERT_EQ(document.LoadText("<Größe/>", "Größe"), EResult::Ok);
    EXPECT_EQ(document.GetRoot().GetName(), L"Größe");
}

TEST(XMLNode, KeepsTheWhiteSpaceOfText)
{
    EXPECT_EQ(getRootText("<r> a \t b\n </r>"), L" a \t b\n ");
}

TEST(XMLNode, KeepsTextOfOnlyWhiteSpace)
{
    const CParsed parsed("<r>   </r>");
    EXPECT_EQ(parsed.GetRoot().GetText(), L"   ");
    EXPECT_TRUE(parsed.GetRoot().HasText());
}

TEST(XMLNode, DropsWhiteSpaceBetweenElements)
{
    const CParsed parsed("<r>\n  <a/>\n  <b/>\n</r>");
    EXPECT_EQ(parsed.GetRoot().GetText(), L"");
    EXPECT_FALSE(parsed.GetRoot().HasText());
}

TEST(XMLNode, NormalisesLineEnds)
{
    EXPECT_EQ(getRootText("<r>a\r\nb\rc</r>"), L"a\nb\nc");
}

TEST(XMLNode, LeavesTheTextOfChildrenOut)
{
    EXPECT_EQ(getRootText("<r>one <b>not this</b>two<![CDATA[ <three> ]]>four</r>"), L"one two <three> four");
}

TEST(XMLNode, HasNoTextWithoutTextNodes)
{
    EXPECT_FALSE(CParsed("<r/>").GetRoot().HasText());
    EXPECT_FALSE(CParsed("<r></r>").GetRoot().HasText());
    EXPECT_FALSE(CParsed("<r><a>text</a></r>").GetRoot().HasText());
    EXPECT_FALSE(CParsed("<r><![CDATA[]]></r>").GetRoot().HasText());
}

TEST(XMLNode, LeavesCommentsAndInstructionsOutOfText)
{
    EXPECT_EQ(getRootText("<r>a<!-- comment -->b<?instruction x?>c</r>"), L"abc");
}

TEST(XMLNode, ResolvesCharacterReferences)
{
    EXPECT_EQ(getRootText("<r>&lt;&gt;&amp;&quot;&apos;&#228;&#x20AC;</r>"), L"<>&\"'ä€");
    EXPECT_EQ(CParsed("<r a='&#228;&quot;'/>").GetRoot().GetAttribute("a"), L"ä\"");
}

TEST(XMLNode, ReadsCharactersBeyondTheBasicPlane)
{
    EXPECT_EQ(getRootText("<r>&#x1F600;</r>"), L"\U0001F600");
}

TEST(XMLNode, ReadsAttributes)
{
    const CParsed parsed("<r a=\"1\" b='zwei &amp; drei' c=''/>");
    EXPECT_EQ(parsed.GetRoot().GetAttribute("a"), L"1");
    EXPECT_EQ(parsed.GetRoot().GetAttribute("b"), L"zwei & drei");
}

TEST(XMLNode, DistinguishesAnEmptyAttributeFromAMissingOne)
{
    const CParsed parsed("<r a=''/>");
    EXPECT_TRUE(parsed.GetRoot().HasAttribute("a"));
    EXPECT_EQ(parsed.GetRoot().GetAttribute("a"), L"");
    EXPECT_FALSE(parsed.GetRoot().HasAttribute("b"));
    EXPECT_EQ(parsed.GetRoot().GetAttribute("b"), L"");
}

TEST(XMLNode, ComparesAttributeNamesExactly)
{
    EXPECT_FALSE(CParsed("<r Name='x'/>").GetRoot().HasAttribute("name"));
}

TEST(XMLNode, FindsTheFirstChildOfAName)
{
    const CParsed parsed("<r><a>1</a><b>2</b><b>3</b></r>");
    EXPECT_EQ(parsed.GetRoot().GetChild("b").GetText(), L"2");
    EXPECT_TRUE(parsed.GetRoot().GetChild("c").IsEmpty());
    EXPECT_TRUE(parsed.GetRoot().GetChild("B").IsEmpty());
}

TEST(XMLNode, DoesNotFindGrandchildren)
{
    EXPECT_TRUE(CParsed("<r><a><b/></a></r>").GetRoot().GetChild("b").IsEmpty());
}

TEST(XMLNode, SkipsNodesThatAreNotElements)
{
    const CParsed parsed("<r>text<!-- c --><a/>more<?i x?><b/><![CDATA[x]]></r>");
    const XMLNode first = parsed.GetRoot().GetFirstChild();
    EXPECT_EQ(first.GetName(), L"a");
    EXPECT_EQ(first.GetNextSibling().GetName(), L"b");
    EXPECT_TRUE(first.GetNextSibling().GetNextSibling().IsEmpty());
}

TEST(XMLNode, IteratesOverChildrenInOrder)
{
    const CParsed parsed("<r> <a/> text <b/> <a/> </r>");
    std::vector<std::wstring> names;
    for (const XMLNode& child : parsed.GetRoot().GetChildren())
    {
        names.push_back(child.GetName());
    }
    EXPECT_EQ(names, (std::vector<std::wstring>{L"a", L"b", L"a"}));
}

TEST(XMLDocument, IsEmptyBeforeItsFirstLoad)
{
    EXPECT_TRUE(XMLDocument().GetRoot().IsEmpty());
}

TEST(XMLDocument, LoadsAFile)
{
    const ScopedFolder folder;
    XMLDocument document;
    EXPECT_EQ(document.Load(folder.WriteFile(L"täst.xml", "<r><a>x</a></r>"), "r"), EResult::Ok);
    EXPECT_EQ(document.GetRoot().GetChild("a").GetText(), L"x");
}

TEST(XMLDocument, ReportsAMissingFile)
{
    const ScopedFolder folder;
    XMLDocument document;
    EXPECT_EQ(document.Load(folder.GetPathOf(L"missing.xml"), "r"), EResult::Missing);
    EXPECT_EQ(document.Load(L"", "r"), EResult::Missing);
}

TEST(XMLDocument, ReportsADirectoryAsUnreadable)
{
    const ScopedFolder folder;
    folder.MakeFolder(L"folder.xml");
    XMLDocument document;
    EXPECT_EQ(document.Load(folder.GetPathOf(L"folder.xml"), "r"), EResult::Unreadable);
}

TEST(XMLDocument, EmptyFileIsASyntaxError)
{
    const ScopedFolder folder;
    XMLDocument document;
    EXPECT_EQ(document.Load(folder.WriteFile(L"empty.xml", ""), "r"), EResult::Syntax);
}

TEST(XMLDocument, DropsItsFormerContentIfALoadFails)
{
    XMLDocument document;
    ASSERT_EQ(document.LoadText("<r/>", "r"), EResult::Ok);
    EXPECT_EQ(document.LoadText("<r", "r"), EResult::Syntax);
    EXPECT_TRUE(document.GetRoot().IsEmpty());
    ASSERT_EQ(document.LoadText("<r/>", "r"), EResult::Ok);
    const ScopedFolder folder;
    EXPECT_EQ(document.Load(folder.GetPathOf(L"missing.xml"), "r"), EResult::Missing);
    EXPECT_TRUE(document.GetRoot().IsEmpty());
}

TEST(XMLDocument, KeepsItsNodesValidWhenMoved)
{
    XMLDocument first;
    ASSERT_EQ(first.LoadText("<r a='1'/>", "r"), EResult::Ok);
    const XMLNode root = first.GetRoot();
    const XMLDocument second = std::move(first);
    EXPECT_EQ(root.GetAttribute("a"), L"1");
    EXPECT_EQ(second.GetRoot().GetAttribute("a"), L"1");
}

TEST(XMLDocument, UnexpectedRootElementIsASyntaxError)
{
    EXPECT_EQ(parse("<R/>"), EResult::Syntax);
    EXPECT_EQ(parse("<other><r/></other>"), EResult::Syntax);
}

TEST(XMLDocument, BrokenMarkupIsASyntaxError)
{
    for (const char* const text : {"<r>", "<r", "<r></s>", "</r>", "<r><a></r></a>", "<r a=1/>", "<r a='1/>", "<r a/>",
                                   "<r><!-- </r>", "<r><![CDATA[x</r>", "r", "<>", "<r>< a/></r>"})
    {
        EXPECT_EQ(parse(text), EResult::Syntax) << text;
    }
}

TEST(XMLDocument, DocumentWithoutAnElementIsASyntaxError)
{
    for (const char* const text :
         {"", "  \n", "<?xml version='1.0'?>", "<!-- nothing -->", "<!DOCTYPE r>", "\xEF\xBB\xBF"})
    {
        EXPECT_EQ(parse(text), EResult::Syntax) << text;
    }
}

TEST(XMLDocument, TwoRootsAreASyntaxError)
{
    EXPECT_EQ(parse("<r/><r/>"), EResult::Syntax);
    EXPECT_EQ(parse("<r></r>\n<s/>"), EResult::Syntax);
}

TEST(XMLDocument, TextOutsideTheRootIsASyntaxError)
{
    for (const char* const text : {"x<r/>", "<r/>x", "<r/>\n x \n", "<?xml version='1.0'?>x<r/>", "<r/>&amp;",
                                   "<r/><![CDATA[x]]>", "<![CDATA[x]]><r/>"})
    {
        EXPECT_EQ(parse(text), EResult::Syntax) << text;
    }
}

TEST(XMLDocument, NullCharacterIsASyntaxError)
{
    EXPECT_EQ(parse("<r/>\0<r/>"s), EResult::Syntax);
    EXPECT_EQ(parse("<r>\0</r>"s), EResult::Syntax);
}

TEST(XMLDocument, MisplacedDeclarationOrDocumentTypeIsASyntaxError)
{
    EXPECT_EQ(parse("<r/><?xml version='1.0'?>"), EResult::Syntax);
    EXPECT_EQ(parse("<r/><!DOCTYPE r>"), EResult::Syntax);
    EXPECT_EQ(parse("<!DOCTYPE r><?xml version='1.0'?><r/>"), EResult::Syntax);
    EXPECT_EQ(parse("<r><?xml version='1.0'?></r>"), EResult::Syntax);
}

TEST(XMLDocument, AcceptsPrologAndTrailingComments)
{
    EXPECT_EQ(
        parse("<?xml version='1.0'?>\n<?style x?><!-- c --><!DOCTYPE r [<!ENTITY e 'x'>]>\n<r/>\n<!-- c -->\n<?i?>\n"),
        EResult::Ok);
}

TEST(XMLDocument, NeverExpandsEntitiesOfTheDocumentType)
{
    EXPECT_EQ(getRootText("<!DOCTYPE r [<!ENTITY e 'expanded'>]><r>&e;</r>"), L"&e;");
}

TEST(XMLDocument, AcceptsDeepNesting)
{
    constexpr int depth = 10'000;
    std::string text = "<r>";
    for (int i = 0; i < depth; ++i)
    {
        text += "<a>";
    }
    for (int i = 0; i < depth; ++i)
    {
        text += "</a>";
    }
    const CParsed parsed(text + "</r>");
    int seen = 0;
    for (XMLNode node = parsed.GetRoot().GetFirstChild(); !node.IsEmpty(); node = node.GetFirstChild())
    {
        ++seen;
    }
    EXPECT_EQ(seen, depth);
}

TEST(XMLDocument, DecodesByTheDeclaredEncoding)
{
    // The UTF-8 bytes of "ä" are two characters in ISO-8859-1.
    EXPECT_EQ(getRootText("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><r>\xC3\xA4</r>"), L"Ã¤");
    EXPECT_EQ(getRootText("<?xml version=\"1.0\" encoding=\"UTF-8\"?><r>\xC3\xA4</r>"), L"ä");
}

TEST(XMLDocument, AcceptsEncodingNamesInAnyCaseAndEitherQuotes)
{
    EXPECT_EQ(getRootText("<?xml version='1.0' encoding='iso-8859-1'?><r>\xC3\xA4</r>"), L"Ã¤");
    EXPECT_EQ(getRootText("<?xml version='1.0' encoding = \"Iso-8859-1\" ?><r>\xC3\xA4</r>"), L"Ã¤");
}

TEST(XMLDocument, ReadsTheEncodingOnlyFromTheDeclaration)
{
    EXPECT_EQ(getRootText("<?xml version='1.0'?><r encoding='ISO-8859-1'>\xC3\xA4</r>"), L"ä");
}

TEST(XMLDocument, DecodesValidUtf8WithoutADeclaration)
{
    EXPECT_EQ(getRootText("<r>\xC3\xA4</r>"), L"ä");
}

TEST(XMLDocument, DecodesLatin1WithoutADeclarationIfUtf8IsInvalid)
{
    EXPECT_EQ(getRootText("<r a='\xFC'>\xE4</r>"), L"ä");
    EXPECT_EQ(getRootText("<?xml version='1.0' encoding='x-unknown'?><r>\xE4</r>"), L"ä");
}

TEST(XMLDocument, ReplacesInvalidBytesOfDeclaredUtf8)
{
    EXPECT_EQ(getRootText("<?xml version='1.0' encoding='utf-8'?><r>a\xE4z</r>"), L"a\uFFFDz");
}

TEST(XMLDocument, ByteOrderMarkOverridesTheDeclaration)
{
    EXPECT_EQ(getRootText("\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><r>\xC3\xA4</r>"), L"ä");
}

TEST(XMLDocument, DecodesUtf16OfEitherByteOrder)
{
    const std::string text = "<?xml version='1.0' encoding='UTF-16'?><r>&#228;x</r>";
    EXPECT_EQ(getRootText("\xFF\xFE" + toUtf16(text, false)), L"äx");
    EXPECT_EQ(getRootText("\xFE\xFF" + toUtf16(text, true)), L"äx");
}

TEST(XMLDocument, DecodesUtf16WithoutAByteOrderMark)
{
    EXPECT_EQ(getRootText(toUtf16("<r>x</r>", false)), L"x");
    EXPECT_EQ(getRootText(toUtf16("<r>x</r>", true)), L"x");
}

TEST(XMLDocument, DecodesNonAsciiCharactersOfUtf16)
{
    // "ä" and the surrogate pair of U+1F600.
    EXPECT_EQ(getRootText("\xFF\xFE"s + toUtf16("<r>", false) + "\xE4\x00\x3D\xD8\x00\xDE"s + toUtf16("</r>", false)),
              L"ä\U0001F600");
}

TEST(XMLDocument, HalfACodeUnitAtTheEndIsASyntaxError)
{
    EXPECT_EQ(parse("\xFF\xFE"s + toUtf16("<r/>", false) + "\n"), EResult::Syntax);
}

TEST(XMLNode, IteratesOverChildrenOfOneName)
{
    const CParsed parsed("<r><a n='1'/><b n='2'/>text<a n='3'><a n='4'/></a><!-- --><a n='5'/></r>");
    std::wstring numbers;
    for (const XMLNode& child : parsed.GetRoot().GetChildren("a"))
    {
        numbers += child.GetAttribute("n");
    }
    EXPECT_EQ(numbers, L"135");
    EXPECT_EQ(parsed.GetRoot().GetChildren("c").begin(), parsed.GetRoot().GetChildren("c").end());
    EXPECT_EQ(XMLNode().GetChildren("a").begin(), XMLNode().GetChildren("a").end());
}

TEST(XMLNode, JoinsAllItsTextNodes)
{
    EXPECT_EQ(getRootText("<r>a<![CDATA[b]]>c<x>no</x>d<!-- no -->e</r>"), L"abcde");
    EXPECT_EQ(getRootText("<r><x/>a</r>"), L"a");
    EXPECT_EQ(getRootText("<r><![CDATA[ ]]>a</r>"), L" a");
}

TEST(XMLNode, DropsWhiteSpaceAfterACommentOrAChild)
{
    EXPECT_EQ(getRootText("<r>a<!-- no -->  </r>"), L"a");
    EXPECT_EQ(getRootText("<r>a<x/>\n</r>"), L"a");
    EXPECT_EQ(getRootText("<r> a </r>"), L" a ");
    EXPECT_EQ(getRootText("<r>  </r>"), L"  ");
}

TEST(XMLDocument, ReturnsTextsAsWrittenOnRequest)
{
    const std::string text = "<r n='a&amp;\t\r\n&#65;'> &lt;\r\n&x;\r</r>";
    XMLDocument document;
    ASSERT_EQ(document.LoadText(text, "r", XMLDocument::EText::AsWritten), EResult::Ok);
    EXPECT_EQ(document.GetRoot().GetAttribute("n"), L"a&amp;\t\r\n&#65;");
    EXPECT_EQ(document.GetRoot().GetText(), L" &lt;\r\n&x;\r");

    ASSERT_EQ(document.LoadText(text, "r"), EResult::Ok);
    EXPECT_EQ(document.GetRoot().GetAttribute("n"), L"a&  A");
    EXPECT_EQ(document.GetRoot().GetText(), L" <\n&x;\n");
}

TEST(XMLDocument, RefusesLargeFilesThatAreMostlyTags)
{
    const auto makeDense = [](std::size_t count) {
        std::string text = "<r>";
        for (std::size_t index = 0; index < count; ++index)
        {
            text += "<a/>";
        }
        return text + "</r>";
    };
    EXPECT_EQ(parse(makeDense(1000)), EResult::Ok);
    EXPECT_EQ(parse(makeDense(1000000)), EResult::Syntax);
}

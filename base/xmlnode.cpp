#include "base/xmlnode.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <pugixml.hpp>

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/xmlencoding.h"

namespace
{

// Accepts fragments, so that text outside the root is visible to isTopLevelInOrder, which rejects it.
// Stores the first text in the element itself, which saves a node for most elements.
constexpr unsigned c_ParseOptions = pugi::parse_cdata | pugi::parse_ws_pcdata_single | pugi::parse_embed_pcdata |
                                    pugi::parse_fragment | pugi::parse_declaration | pugi::parse_doctype;
constexpr unsigned c_ResolveOptions = pugi::parse_escapes | pugi::parse_eol | pugi::parse_wconv_attribute;

pugi::xml_node toPugi(void* node)
{
    return pugi::xml_node(static_cast<pugi::xml_node_struct*>(node));
}

/// The node itself if it is an element, else the next sibling element; null if there is none.
void* findElement(pugi::xml_node node)
{
    while (node && node.type() != pugi::node_element)
    {
        node = node.next_sibling();
    }
    return node.internal_object();
}

bool isBlank(std::string_view text)
{
    return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

/// Visits the pieces of an element's own text in order; the visitor returns false to stop.
template<typename F>
void visitTexts(pugi::xml_node element, const F& visit)
{
    const std::string_view first = element.value();
    if (!first.empty() && !visit(first))
    {
        return;
    }
    for (const pugi::xml_node child : element.children())
    {
        // After a text and a comment, the parser reports the white space before the end tag as text.
        const bool isLayout = child.type() == pugi::node_pcdata && !first.empty() && isBlank(child.value());
        const bool isText = child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata;
        if (isText && !isLayout && *child.value() != '\0' && !visit(child.value()))
        {
            return;
        }
    }
}

/// A file that consists only of tags would need many times its size in memory. Elements with attributes or text usually
/// take at least eight bytes per tag.
bool isTooDense(std::string_view bytes)
{
    constexpr std::size_t c_AlwaysAllowed = 1 << 20U;
    constexpr std::size_t c_BytesPerTag = 8;
    return bytes.size() > c_AlwaysAllowed &&
           static_cast<std::size_t>(std::ranges::count(bytes, '<')) > bytes.size() / c_BytesPerTag;
}

/// True if the document consists of at most one declaration, at most one document type and exactly one element, in this
/// order.
bool isTopLevelInOrder(const pugi::xml_document& document)
{
    constexpr int declaration = 1;
    constexpr int type = 2;
    constexpr int element = 3;
    int last = 0;
    for (const pugi::xml_node node : document.children())
    {
        int kind = 0;
        switch (node.type())
        {
        case pugi::node_declaration:
            kind = declaration;
            break;
        case pugi::node_doctype:
            kind = type;
            break;
        case pugi::node_element:
            kind = element;
            break;
        default:
            break;
        }
        if (kind <= last)
        {
            return false;
        }
        last = kind;
    }
    return last == element;
}

/// Escapes the text of CDATA sections as it would be escaped outside them, so that it can be written unchanged.
class CSectionEscaper : public pugi::xml_tree_walker
{
public:
    bool for_each(pugi::xml_node& node) override
    {
        if (node.type() == pugi::node_cdata)
        {
            node.set_value(escape(node.value()).c_str());
        }
        return true;
    }

private:
    static std::string escape(std::string_view text)
    {
        std::string result;
        for (const char character : text)
        {
            switch (character)
            {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            default:
                result += character;
            }
        }
        return result;
    }
};

} // namespace

std::wstring XMLNode::GetName() const
{
    return LbEncoding::FromUtf8(toPugi(m_node).name());
}

std::wstring XMLNode::GetText() const
{
    std::string text;
    visitTexts(toPugi(m_node), [&text](std::string_view piece) {
        text += piece;
        return true;
    });
    return LbEncoding::FromUtf8(text);
}

bool XMLNode::HasText() const
{
    bool hasText = false;
    visitTexts(toPugi(m_node), [&hasText](std::string_view) {
        hasText = true;
        return false;
    });
    return hasText;
}

bool XMLNode::HasAttribute(const char* name) const
{
    return static_cast<bool>(toPugi(m_node).attribute(name));
}

std::wstring XMLNode::GetAttribute(const char* name) const
{
    return LbEncoding::FromUtf8(toPugi(m_node).attribute(name).value());
}

XMLNode XMLNode::GetChild(const char* name) const
{
    return XMLNode(toPugi(m_node).child(name).internal_object());
}

XMLNode XMLNode::GetFirstChild() const
{
    return XMLNode(findElement(toPugi(m_node).first_child()));
}

XMLNode XMLNode::GetNextSibling() const
{
    return XMLNode(findElement(toPugi(m_node).next_sibling()));
}

XMLNode XMLNode::GetNextSibling(const char* name) const
{
    return XMLNode(toPugi(m_node).next_sibling(name).internal_object());
}

XMLNode::CChildren XMLNode::GetChildren() const
{
    return CChildren(GetFirstChild());
}

XMLNode::CChildren XMLNode::GetChildren(const char* name) const
{
    return CChildren(GetChild(name), name);
}

struct XMLDocument::SContent
{
    std::string bytes; ///< the nodes' names and values point into it
    pugi::xml_document document;
};

XMLDocument::XMLDocument() = default;
XMLDocument::~XMLDocument() = default;
XMLDocument::XMLDocument(XMLDocument&&) noexcept = default;
XMLDocument& XMLDocument::operator=(XMLDocument&&) noexcept = default;

XMLDocument::EResult XMLDocument::ReadFile(const std::wstring& path, std::string& bytes)
{
    if (!LbFileSystem::Exists(path))
    {
        return EResult::Missing;
    }
    if (!LbOs::IsRegularFile(path))
    {
        return EResult::Unreadable;
    }
    try
    {
        bytes = LbFileSystem::ReadFile8Bit(path);
        return EResult::Ok;
    }
    catch (const LbException&)
    {
        return EResult::Unreadable;
    }
}

XMLDocument::EResult XMLDocument::Load(const std::wstring& path, const char* rootName, EText text)
{
    m_content.reset();
    std::string bytes;
    const EResult result = ReadFile(path, bytes);
    return result == EResult::Ok ? LoadText(std::move(bytes), rootName, text) : result;
}

XMLDocument::EResult XMLDocument::LoadText(std::string bytes, const char* rootName, EText text)
{
    m_content.reset();
    auto content = std::make_unique<SContent>();
    content->bytes = XMLEncoding::ToUtf8(std::move(bytes));
    // The parser would take a null character as the end and ignore the rest.
    if (content->bytes.find('\0') != std::string::npos || isTooDense(content->bytes))
    {
        return EResult::Syntax;
    }
    // The parser overwrites the last byte with a terminator, which would lose a single character after the root. So the
    // buffer includes the string's own terminator as its last byte.
    const bool isToEscape = text == EText::AsWritten && content->bytes.find("<![CDATA[") != std::string::npos;
    const unsigned options = c_ParseOptions | (text == EText::Resolved ? c_ResolveOptions : 0U);
    const pugi::xml_parse_result parsed = content->document.load_buffer_inplace(
        content->bytes.data(), content->bytes.size() + 1, options, pugi::encoding_utf8);
    if (!parsed || !isTopLevelInOrder(content->document) ||
        content->document.document_element().name() != std::string_view(rootName))
    {
        return EResult::Syntax;
    }
    if (isToEscape)
    {
        CSectionEscaper escaper;
        content->document.traverse(escaper);
    }
    m_content = std::move(content);
    return EResult::Ok;
}

XMLNode XMLDocument::GetRoot() const
{
    return m_content ? XMLNode(m_content->document.document_element().internal_object()) : XMLNode();
}

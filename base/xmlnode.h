/// Reading XML: elements, attributes and text in document order.
///
/// Reads UTF-8, UTF-16 and ISO-8859-1. The byte order mark determines the encoding; without one, UTF-16 is recognised
/// by the first character "<", otherwise the declaration determines it. If the encoding is still unknown, the file is
/// read as UTF-8 if it is valid UTF-8, else as ISO-8859-1. Skips document types and never expands their entities: a
/// reference to an entity stays as written. An empty view returns empty texts.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <string>

#include "base/lbexport.h"

/// A view of one element, valid as long as its document; may be empty. Any thread may read it.
class LB_API XMLNode
{
public:
    XMLNode() = default;

    bool IsEmpty() const noexcept { return m_node == nullptr; }

    /// Element name.
    std::wstring GetName() const;

    /// The element's own text, all pieces joined, without the text of child elements. White space is kept, but a piece
    /// of only white space counts as layout and is dropped unless it is the element's whole content.
    std::wstring GetText() const;

    /// True if GetText is not empty.
    bool HasText() const;

    bool HasAttribute(const char* name) const;
    std::wstring GetAttribute(const char* name) const;

    /// First child element of that name; an empty view if there is none.
    XMLNode GetChild(const char* name) const;

    /// First child element, and the next sibling element; empty views at the end.
    XMLNode GetFirstChild() const;
    XMLNode GetNextSibling() const;

    /// Next sibling element of that name; an empty view at the end.
    XMLNode GetNextSibling(const char* name) const;

    /// Iterates over child elements in document order: for (const XMLNode child : node.GetChildren())
    class CChildren;
    CChildren GetChildren() const;

    /// The same for child elements of that name. The name must outlive the iteration.
    CChildren GetChildren(const char* name) const;

private:
    friend class XMLDocument;
    explicit XMLNode(void* node) noexcept : m_node(node) {}

    void* m_node = nullptr;
};

/// The range of an element's children, for loops.
class XMLNode::CChildren
{
public:
    /// Goes through the children once, in document order.
    class CIterator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = XMLNode;
        using difference_type = std::ptrdiff_t;
        using pointer = const XMLNode*;
        using reference = const XMLNode&;

        CIterator() = default;
        CIterator(XMLNode node, const char* name) : m_current(node), m_name(name) {}
        const XMLNode& operator*() const { return m_current; }
        CIterator& operator++()
        {
            m_current = m_name == nullptr ? m_current.GetNextSibling() : m_current.GetNextSibling(m_name);
            return *this;
        }
        bool operator==(const CIterator& other) const { return m_current.m_node == other.m_current.m_node; }

    private:
        XMLNode m_current;
        const char* m_name = nullptr; ///< null: elements of any name
    };

    explicit CChildren(XMLNode first, const char* name = nullptr) : m_first(first), m_name(name) {}
    CIterator begin() const { return CIterator(m_first, m_name); }
    CIterator end() const { return CIterator(); }

private:
    XMLNode m_first;
    const char* m_name;
};

/// Owns a parsed document.
class LB_API XMLDocument
{
public:
    enum class EResult
    {
        Ok,
        Missing,    ///< no such file
        Unreadable, ///< the file cannot be read, or is a directory, device or pipe
        Syntax,     ///< not well-formed, a different root element, or a large file that is mostly tags
    };

    /// The form of texts and attributes.
    enum class EText
    {
        Resolved,  ///< references resolved, line ends as line feeds, white space of attributes as blanks
        AsWritten, ///< each character as in the file, so that it can be written again; the text of CDATA
                   ///< sections is escaped as it would be outside them
    };

    XMLDocument();
    ~XMLDocument();
    XMLDocument(XMLDocument&&) noexcept;
    XMLDocument& operator=(XMLDocument&&) noexcept;

    /// Reads a file's bytes, for LoadText. Returns Ok, Missing or Unreadable.
    static EResult ReadFile(const std::wstring& path, std::string& bytes);

    /// Reads a file whose root element must be `rootName`. Drops the former content first.
    EResult Load(const std::wstring& path, const char* rootName, EText text = EText::Resolved);

    /// The same from bytes in memory.
    EResult LoadText(std::string bytes, const char* rootName, EText text = EText::Resolved);

    /// The root element; empty unless the last load was Ok.
    XMLNode GetRoot() const;

private:
    struct SContent;
    std::unique_ptr<SContent> m_content;
};

/// Reading XML: elements, attributes and text in document order.
///
/// Text is decoded by its byte order mark, else by the declaration's encoding (UTF-8, UTF-16, ISO-8859-1); without one
/// that is known, as UTF-8 where the file is valid UTF-8, else as ISO-8859-1. Document types are skipped and their
/// entities never expanded: a reference to one stands as it is written. Missing things read as empty text.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <string>

#include "base/lbexport.h"

/// A view of one element, valid as long as its document; may be empty. Copied freely; reading is safe from any thread.
class LB_API XMLNode
{
public:
    XMLNode() = default;

    bool IsEmpty() const noexcept { return m_node == nullptr; }

    /// Element name.
    std::wstring GetName() const;

    /// The element's own text, all its pieces joined, without that of child elements. White space is kept as it stands,
    /// but a piece that is nothing else counts only when it is all that the element holds: else it is layout.
    std::wstring GetText() const;

    /// False when the element has no text at all.
    bool HasText() const;

    bool HasAttribute(const char* name) const;
    std::wstring GetAttribute(const char* name) const;

    /// First child element of that name; an empty view when there is none.
    XMLNode GetChild(const char* name) const;

    /// First child element, and the next sibling element; empty views at the end.
    XMLNode GetFirstChild() const;
    XMLNode GetNextSibling() const;

    /// Iterates over child elements in document order: for (const XMLNode child : node.GetChildren())
    class CChildren;
    CChildren GetChildren() const;

private:
    friend class XMLDocument;
    explicit XMLNode(void* node) noexcept : m_node(node) {}

    void* m_node = nullptr;
};

class XMLNode::CChildren
{
public:
    class CIterator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = XMLNode;
        using difference_type = std::ptrdiff_t;
        using pointer = const XMLNode*;
        using reference = const XMLNode&;

        CIterator() = default;
        explicit CIterator(XMLNode node) : m_current(node) {}
        const XMLNode& operator*() const { return m_current; }
        CIterator& operator++()
        {
            m_current = m_current.GetNextSibling();
            return *this;
        }
        bool operator==(const CIterator& other) const { return m_current.m_node == other.m_current.m_node; }

    private:
        XMLNode m_current;
    };

    explicit CChildren(XMLNode first) : m_first(first) {}
    CIterator begin() const { return CIterator(m_first); }
    CIterator end() const { return CIterator(); }

private:
    XMLNode m_first;
};

/// Owns a parsed document.
class LB_API XMLDocument
{
public:
    enum class EResult
    {
        Ok,
        Missing,    ///< no such file
        Unreadable, ///< the file cannot be read, or is a directory
        Syntax,     ///< not well-formed, or another root element
    };

    XMLDocument();
    ~XMLDocument();
    XMLDocument(XMLDocument&&) noexcept;
    XMLDocument& operator=(XMLDocument&&) noexcept;

    /// Reads a file whose root element must be `rootName`. The former content is dropped first.
    EResult Load(const std::wstring& path, const char* rootName);

    /// The same from bytes in memory.
    EResult LoadText(std::string bytes, const char* rootName);

    /// The root element; empty unless the last load was Ok.
    XMLNode GetRoot() const;

private:
    struct SContent;
    std::unique_ptr<SContent> m_content;
};

#include "base/lbexception.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "base/lbencoding.h"

namespace
{

/// Extracts "Class::function" from the compiler's signature: drops result, arguments, template parameters and
/// qualifiers; keeps the enclosing functions of a lambda.
class CFunctionName
{
public:
    explicit CFunctionName(std::string_view signature) : m_signature(signature), m_rest(signature) {}

    std::string Take()
    {
        while (!m_rest.empty() && !m_ended)
        {
            step();
        }
        return m_name.empty() ? std::string(m_signature) : std::move(m_name);
    }

private:
    static constexpr std::string_view sc_operator = "operator";
    static constexpr std::string_view sc_lambda = "<lambda";

    void step()
    {
        const char next = m_rest.front();
        if (startsOperator())
        {
            takeOperator();
        }
        else if (next == '(')
        {
            takeParenthesis();
        }
        else if (next == '<' || next == '{' || next == '[')
        {
            takeGroup();
        }
        else if (next == ' ')
        {
            dropResult();
        }
        else
        {
            take(1);
        }
    }

    bool startsOperator() const
    {
        const bool atWord = m_name.empty() || m_name.ends_with("::");
        return atWord && m_rest.starts_with(sc_operator) && m_rest.size() > sc_operator.size() &&
               !isWordCharacter(m_rest[sc_operator.size()]);
    }

    /// Takes the operator's name up to its arguments: "operator()", "operator<<", "operator bool", "operator
    /// std::function<void()>".
    void takeOperator()
    {
        take(sc_operator.size());
        const bool isConversion = m_rest.front() == ' ';
        if (m_rest.starts_with("()"))
        {
            take(2);
        }
        while (!m_rest.empty() && m_rest.front() != '(')
        {
            take(isConversion && m_rest.front() == '<' ? getGroupLength(m_rest) : 1);
        }
    }

    /// Drops the text before a space: a specifier or the result type.
    void dropResult()
    {
        const bool isExpression = m_name == "decltype";
        m_name.clear();
        m_rest.remove_prefix(1);
        if (isExpression)
        {
            m_rest.remove_prefix(getGroupLength(m_rest));
        }
    }

    void takeParenthesis()
    {
        if (m_name.empty())
        {
            // If the result is a pointer or reference to a function or an array, the function's name is inside the
            // parentheses.
            m_rest.remove_prefix(1);
            return;
        }
        m_rest.remove_prefix(getGroupLength(m_rest));
        skipToLocalName();
    }

    /// Called after the arguments: the name is complete unless a local entity follows, possibly after qualifiers.
    void skipToLocalName()
    {
        // A constraint may contain "::" in qualified names, so only a lambda can be recognised after it.
        const std::size_t constraint = m_rest.find(" requires ");
        std::size_t local = m_rest.find("::");
        if (constraint < local)
        {
            local = m_rest.find("::<lambda");
        }
        m_ended = local == std::string_view::npos || m_rest.find('[') < local;
        m_rest.remove_prefix(std::min(local, m_rest.size()));
    }

    void takeGroup()
    {
        const std::size_t length = getGroupLength(m_rest);
        if (m_rest.starts_with(sc_lambda))
        {
            m_name += "<lambda>";
            m_rest.remove_prefix(length);
            skipToLocalName();
        }
        else if (m_rest.starts_with("["))
        {
            m_rest.remove_prefix(length);
        }
        else
        {
            take(length);
        }
    }

    void take(std::size_t length)
    {
        m_name += m_rest.substr(0, length);
        m_rest.remove_prefix(length);
    }

    static bool isWordCharacter(char character)
    {
        return character == '_' || (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
               (character >= 'A' && character <= 'Z');
    }

    /// Length of the bracketed text at the start, including nested brackets of the same kind.
    static std::size_t getGroupLength(std::string_view text)
    {
        constexpr std::string_view c_Opening = "(<[{";
        constexpr std::string_view c_Closing = ")>]}";
        const char opening = text.front();
        const char closing = c_Closing[std::min(c_Opening.find(opening), c_Closing.size() - 1)];
        std::size_t depth = 0;
        for (std::size_t position = 0; position < text.size(); ++position)
        {
            if (text[position] == opening)
            {
                ++depth;
            }
            else if (text[position] == closing && --depth == 0)
            {
                return position + 1;
            }
        }
        return text.size();
    }

    std::string_view m_signature;
    std::string_view m_rest;
    std::string m_name;
    bool m_ended = false;
};

std::wstring getBareFileName(std::string_view name)
{
    const std::size_t dot = name.rfind('.');
    if (dot != std::string_view::npos && dot > 0)
    {
        name = name.substr(0, dot);
    }
    return LbEncoding::FromUtf8(name);
}

std::string describe(const LbException& exception)
{
    const std::wstring place = L"(" + exception.GetSourceFile() + L"(" + std::to_wstring(exception.GetLine()) + L"): " +
                               exception.GetFunction() + L")";
    const std::wstring& message = exception.GetMessageText();
    return LbEncoding::ToUtf8(message.empty() ? place : message + L" " + place);
}

} // namespace

LbException::LbException(std::wstring message, LbSourceLocation where)
    : LbException(LbEncoding::FromUtf8(CFunctionName(where.GetFunction()).Take()).c_str(), std::move(message), where)
{
}

LbException::LbException(const wchar_t* function, std::wstring message, LbSourceLocation where)
    : LbException(function, std::move(message), getBareFileName(where.GetFileName()), where.GetLine())
{
}

LbException::LbException(const wchar_t* function, std::wstring message, std::wstring sourceFile, std::uint32_t line)
    : m_message(std::move(message)), m_sourceFile(std::move(sourceFile)), m_function(function), m_line(line)
{
    m_what = describe(*this);
}

LbException::~LbException() = default;

const char* LbException::what() const noexcept
{
    return m_what.c_str();
}

std::wstring LbDescribeCurrentException()
{
    try
    {
        throw;
    }
    catch (const std::exception& exception)
    {
        return LbEncoding::FromUtf8(exception.what());
    }
    catch (const std::wstring& text)
    {
        return text;
    }
    catch (const wchar_t* text)
    {
        return text == nullptr ? L"" : text;
    }
    catch (const std::string& text)
    {
        return LbEncoding::FromUtf8(text);
    }
    catch (const char* text)
    {
        return text == nullptr ? std::wstring() : LbEncoding::FromUtf8(text);
    }
    catch (...)
    {
        return L"Unbekannte Exception";
    }
}

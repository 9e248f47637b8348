/// Writes the JSON of records without a library, because recording must cost very little; nlohmann-json reads it.
#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include "testing/lutestsuiterunner/journal/numbertext.h"

namespace Runner
{

/// Appends a JSON string with its quotes. The only control characters in `utf8` are tab, line feed and carriage return.
void AppendJsonString(std::string_view utf8, std::string& json);

/// The same for any wide text: see ToEscapedUtf8.
void AppendJsonString(std::wstring_view text, std::string& json);

/// Returns the JSON string of any wide text.
std::string ToJsonString(std::wstring_view text);

/// Appends one object to `json`, member by member.
class CJsonObject
{
public:
    explicit CJsonObject(std::string& json) : m_json(json) { m_json += '{'; }
    ~CJsonObject() { m_json += '}'; }
    CJsonObject(const CJsonObject&) = delete;
    CJsonObject& operator=(const CJsonObject&) = delete;

    /// The name of a member; the caller appends its value next. Names are plain ASCII.
    std::string& Add(std::string_view name)
    {
        m_json += m_isFirst ? "\"" : ",\"";
        m_isFirst = false;
        m_json += name;
        return m_json += "\":";
    }

    /// The same for any name, given as a JSON string.
    std::string& AddQuoted(std::string_view name)
    {
        m_json += m_isFirst ? "" : ",";
        m_isFirst = false;
        m_json += name;
        return m_json += ':';
    }

    template<std::integral T>
    void Add(std::string_view name, T value)
    {
        if constexpr (std::same_as<T, bool>)
        {
            Add(name) += value ? "true" : "false";
        }
        else
        {
            AppendNumber(value, Add(name));
        }
    }

    void Add(std::string_view name, std::string_view utf8) { AppendJsonString(utf8, Add(name)); }
    void Add(std::string_view name, const char* utf8) { AppendJsonString(std::string_view(utf8), Add(name)); }
    void Add(std::string_view name, std::wstring_view text) { AppendJsonString(text, Add(name)); }

    /// Omits members that have their default value.
    template<typename T>
    void AddUnless(const T& usual, std::string_view name, const T& value)
    {
        if (value != usual)
        {
            Add(name, value);
        }
    }

    void AddUnlessEmpty(std::string_view name, std::wstring_view text)
    {
        if (!text.empty())
        {
            Add(name, text);
        }
    }

private:
    std::string& m_json;
    bool m_isFirst = true;
};

} // namespace Runner

/// JSON of records, built by hand: recording must cost next to nothing. Reading is nlohmann-json's.
#pragma once

#include <concepts>
#include <string>
#include <string_view>

#include "testing/lutestsuiterunner/journal/numbertext.h"

namespace Runner
{

/// A JSON string with its quotes. `utf8` has no control characters but tab, line feed and carriage return.
void AppendJsonString(std::string_view utf8, std::string& json);

/// The same of any wide text: see ToEscapedUtf8.
void AppendJsonString(std::wstring_view text, std::string& json);

/// The string of any wide text.
std::string ToJsonString(std::wstring_view text);

/// Writes one object, member by member, behind what `json` holds.
class CJsonObject
{
public:
    explicit CJsonObject(std::string& json) : m_json(json) { m_json += '{'; }
    ~CJsonObject() { m_json += '}'; }
    CJsonObject(const CJsonObject&) = delete;
    CJsonObject& operator=(const CJsonObject&) = delete;

    /// The name of a member; its value is to be appended next. Names are plain ASCII.
    std::string& Add(std::string_view name)
    {
        m_json += m_isFirst ? "\"" : ",\"";
        m_isFirst = false;
        m_json += name;
        return m_json += "\":";
    }

    /// The same for a name of any kind, which is a JSON string already.
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

    /// Members of their usual value are left out.
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

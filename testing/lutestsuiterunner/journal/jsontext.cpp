#include "testing/lutestsuiterunner/journal/jsontext.h"

#include "testing/lutestsuiterunner/model/textescape.h"

namespace Runner
{

namespace
{

const char* getJsonEscape(char character)
{
    switch (character)
    {
    case '"':
        return "\\\"";
    case '\\':
        return "\\\\";
    case '\n':
        return "\\n";
    case '\r':
        return "\\r";
    case '\t':
        return "\\t";
    default:
        return nullptr;
    }
}

} // namespace

void AppendJsonString(std::string_view utf8, std::string& json)
{
    json += '"';
    std::size_t start = 0;
    for (std::size_t position = 0; position < utf8.size(); ++position)
    {
        if (const char* const escape = getJsonEscape(utf8[position]))
        {
            json.append(utf8, start, position - start);
            json += escape;
            start = position + 1;
        }
    }
    json.append(utf8, start);
    json += '"';
}

void AppendJsonString(std::wstring_view text, std::string& json)
{
    AppendJsonString(std::string_view(ToEscapedUtf8(text)), json);
}

std::string ToJsonString(std::wstring_view text)
{
    std::string json;
    AppendJsonString(text, json);
    return json;
}

} // namespace Runner

#include "testing/lutestsuiterunner/settings/engines.h"

#include <algorithm>

#include "base/lbformat.h"

namespace Runner
{

namespace
{

/// A function-local static, because engines register themselves from constructors of static objects, whose order is not
/// defined.
std::vector<SEngineText>& getTexts()
{
    static std::vector<SEngineText> s_texts;
    return s_texts;
}

std::wstring_view getName(const SEngineText& text)
{
    return text.name;
}

} // namespace

void AddEngineText(const SEngineText& text)
{
    std::vector<SEngineText>& texts = getTexts();
    texts.insert(std::ranges::upper_bound(texts, getName(text), {}, getName), text);
}

const std::vector<SEngineText>& GetEngineTexts()
{
    return getTexts();
}

bool IsEngine(std::wstring_view name)
{
    return std::ranges::binary_search(getTexts(), name, {}, getName);
}

std::wstring ListEngines(bool withHelp)
{
    const std::vector<SEngineText>& texts = getTexts();
    std::wstring list;
    for (std::size_t index = 0; index < texts.size(); ++index)
    {
        list += index == 0 ? L"" : index + 1 == texts.size() ? L" oder " : L", ";
        list += withHelp ? LbFormat(L"%s (%s)", texts[index].name, texts[index].help) : std::wstring(texts[index].name);
    }
    return list;
}

} // namespace Runner

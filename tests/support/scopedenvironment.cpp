#include "tests/support/scopedenvironment.h"

#include <cstdlib>
#include <list>
#include <utility>

#include "base/lbencoding.h"
#include "base/os/console.h"

namespace
{

/// An empty value unsets the variable on all platforms.
void setVariable(const std::wstring& name, const std::wstring& value)
{
    // On Linux the environment refers to the text, so the text is never freed.
    static std::list<std::string>& texts = *new std::list<std::string>;
    texts.push_back(LbEncoding::ToNative(name + L"=" + value));
    putenv(texts.back().data());
}

} // namespace

ScopedEnvironmentVariable::ScopedEnvironmentVariable(std::wstring name, const std::wstring& value)
    : m_name(std::move(name)), m_formerValue(LbOs::GetEnvironmentText(m_name.c_str()))
{
    setVariable(m_name, value);
}

ScopedEnvironmentVariable::~ScopedEnvironmentVariable()
{
    setVariable(m_name, m_formerValue);
}

void ScopedUserFolder::WriteLastConfig(std::string_view bytes) const
{
    m_folder.WriteFile(L"LuTestSuite/Orvell/LastConfig.xml", bytes);
}

#include "base/os/windows/namedobject.h"

#include <cwctype>
#include <vector>

// Needs windows.h before it.
#include <sddl.h>

namespace LbOs::Windows
{

namespace
{

/// The current user's security id as text; empty on failure.
std::wstring getUser()
{
    HANDLE opened = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened) == FALSE)
    {
        return {};
    }
    const Handle token(opened);
    DWORD size = 0;
    GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<char> memory(size);
    wchar_t* text = nullptr;
    if (GetTokenInformation(token.get(), TokenUser, memory.data(), size, &size) == FALSE ||
        ConvertSidToStringSidW(reinterpret_cast<const TOKEN_USER*>(memory.data())->User.Sid, &text) == FALSE)
    {
        return {};
    }
    std::wstring user = text;
    LocalFree(text);
    return user;
}

const std::wstring& getOwnAccessText()
{
    // Not inherited; all rights for the user.
    static const std::wstring s_text = getUser().empty() ? std::wstring() : L"D:P(A;;GA;;;" + getUser() + L")";
    return s_text;
}

} // namespace

std::wstring ToObjectName(const std::wstring& name)
{
    for (const wchar_t character : name)
    {
        if (character >= 0x80 || (std::iswalnum(character) == 0 && character != L'-'))
        {
            return {};
        }
    }
    return name.empty() ? name : L"Local\\" + name;
}

COwnAccess::COwnAccess()
{
    m_attributes.nLength = sizeof(m_attributes);
    m_attributes.bInheritHandle = FALSE;
    const std::wstring& text = getOwnAccessText();
    if (!text.empty())
    {
        ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1,
                                                             &m_attributes.lpSecurityDescriptor, nullptr);
    }
}

COwnAccess::~COwnAccess()
{
    LocalFree(m_attributes.lpSecurityDescriptor);
}

} // namespace LbOs::Windows

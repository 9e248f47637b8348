#include "base/os/windows/namedobject.h"

#include <cwctype>
#include <vector>

// These need windows.h before them.
#include <aclapi.h>
#include <sddl.h>

namespace LbOs::Windows
{

namespace
{

/// A TOKEN_USER with the security id to which it points; empty on failure.
std::vector<char> readUser()
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
    if (GetTokenInformation(token.get(), TokenUser, memory.data(), size, &size) == FALSE)
    {
        memory.clear();
    }
    // The caller must not copy the memory, because it contains a pointer into itself.
    return memory;
}

/// The current user's security id; null on failure.
PSID getUser()
{
    static const std::vector<char> s_user = readUser();
    return s_user.empty() ? nullptr : reinterpret_cast<const TOKEN_USER*>(s_user.data())->User.Sid;
}

/// Empty on failure.
std::wstring makeOwnAccessText()
{
    wchar_t* text = nullptr;
    if (getUser() == nullptr || ConvertSidToStringSidW(getUser(), &text) == FALSE)
    {
        return {};
    }
    const std::wstring user = text;
    LocalFree(text);
    // Makes the user the owner; otherwise a group might own the object. Grants all rights to the user only, and
    // inherits none.
    return L"O:" + user + L"D:P(A;;GA;;;" + user + L")";
}

const std::wstring& getOwnAccessText()
{
    static const std::wstring s_text = makeOwnAccessText();
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

bool IsOwn(HANDLE object)
{
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (getUser() == nullptr || GetSecurityInfo(object, SE_KERNEL_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr,
                                                nullptr, nullptr, &descriptor) != ERROR_SUCCESS)
    {
        return false;
    }
    const bool isOwn = owner != nullptr && EqualSid(owner, getUser()) != FALSE;
    LocalFree(descriptor);
    return isOwn;
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

/// Names and access rights of objects between processes. Internal to the Windows side.
#pragma once

#include <string>

#include "base/os/windows/api.h"

namespace LbOs::Windows
{

/// In the session's own namespace; empty for a name that is none.
std::wstring ToObjectName(const std::wstring& name);

/// Access for the present user and nobody else.
class COwnAccess
{
public:
    COwnAccess();
    ~COwnAccess();

    COwnAccess(const COwnAccess&) = delete;
    COwnAccess& operator=(const COwnAccess&) = delete;

    /// Null when the user cannot be told.
    SECURITY_ATTRIBUTES* Get() { return m_attributes.lpSecurityDescriptor == nullptr ? nullptr : &m_attributes; }

private:
    SECURITY_ATTRIBUTES m_attributes = {};
};

/// Runs `create(attributes)`, which gives a handle, and takes only an object that did not exist before.
template<typename F>
Handle CreateNew(const F& create)
{
    COwnAccess access;
    if (access.Get() == nullptr)
    {
        return Handle();
    }
    SetLastError(ERROR_SUCCESS);
    Handle handle(create(access.Get()));
    return GetLastError() == ERROR_ALREADY_EXISTS ? Handle() : std::move(handle);
}

/// For the caller's `failure`, unless there is none: the number of what the system has refused last.
inline void DescribeFailure(std::wstring* failure)
{
    if (failure != nullptr)
    {
        *failure = L"Systemfehler " + std::to_wstring(GetLastError());
    }
}

} // namespace LbOs::Windows

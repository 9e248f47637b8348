/// Names and access rights of objects shared by processes. Internal to the Windows side.
#pragma once

#include <string>

#include "base/os/windows/api.h"

namespace LbOs::Windows
{

/// The name in the session's namespace; empty for an invalid name.
std::wstring ToObjectName(const std::wstring& name);

/// True if the current user owns the object. The handle needs the right READ_CONTROL.
bool IsOwn(HANDLE object);

/// Security attributes for a new object that the current user owns and only this user may access.
class COwnAccess
{
public:
    COwnAccess();
    ~COwnAccess();

    COwnAccess(const COwnAccess&) = delete;
    COwnAccess& operator=(const COwnAccess&) = delete;

    /// Null if the user cannot be determined.
    SECURITY_ATTRIBUTES* Get() { return m_attributes.lpSecurityDescriptor == nullptr ? nullptr : &m_attributes; }

private:
    SECURITY_ATTRIBUTES m_attributes = {};
};

/// Calls `create(attributes)`, which returns a handle. Null on failure, or if the object existed before.
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

/// Stores the system's last error code in the caller's `failure`, unless that is null.
inline void DescribeFailure(std::wstring* failure)
{
    if (failure != nullptr)
    {
        *failure = L"Systemfehler " + std::to_wstring(GetLastError());
    }
}

} // namespace LbOs::Windows

/// A module that no host can load.
#pragma once

#include <string>

#include "base/inoncopyable.h"
#include "base/os/platform.h"

/// A file beside the host that has the name of a module but invalid content; the destructor removes it.
class CBrokenModule : public INonCopyable
{
public:
    CBrokenModule();
    ~CBrokenModule();

    /// The name as the option that loads modules expects it.
    const std::wstring& GetName() const { return m_name; }
    std::wstring GetFileName() const { return m_name + LbOs::c_ModuleSuffix; }

private:
    std::wstring getPath() const;

    std::wstring m_name;
};

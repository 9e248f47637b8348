/// A module that no host can load.
#pragma once

#include <string>

#include "base/inoncopyable.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "base/lustream.h"
#include "base/os/platform.h"
#include "tests/support/places.h"

/// A file beside the host with the name of a module, but invalid content.
class CBrokenModule : public INonCopyable
{
public:
    CBrokenModule() : m_name(L"broken-" + LbUniqueId::Generate())
    {
        LuStreamWriteBinaryFile file(getPath());
        const std::string bytes = "kein Modul";
        file.Write(bytes.data(), bytes.size());
        file.Close();
    }

    ~CBrokenModule() { LbFileSystem::RemoveTree(getPath()); }

    /// The name in the form of the option.
    const std::wstring& GetName() const { return m_name; }
    std::wstring GetFileName() const { return m_name + LbOs::c_ModuleSuffix; }

private:
    std::wstring getPath() const
    {
        return LbPath::WithSeparator(LbPath::ToNative(L"" LUTESTSUITE_BIN_DIR)) + GetFileName();
    }

    std::wstring m_name;
};

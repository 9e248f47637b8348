#include "tests/support/brokenmodule.h"

#include "base/lbfilesystem.h"
#include "base/lbpath.h"
#include "base/lbuniqueid.h"
#include "base/lustream.h"
#include "tests/support/places.h"

CBrokenModule::CBrokenModule() : m_name(L"broken-" + LbUniqueId::Generate())
{
    LuStreamWriteBinaryFile file(getPath());
    const std::string bytes = "kein Modul";
    file.Write(bytes.data(), bytes.size());
    file.Close();
}

CBrokenModule::~CBrokenModule()
{
    LbFileSystem::RemoveTree(getPath());
}

std::wstring CBrokenModule::getPath() const
{
    return LbPath::WithSeparator(LbPath::ToNative(L"" LUTESTSUITE_BIN_DIR)) + GetFileName();
}

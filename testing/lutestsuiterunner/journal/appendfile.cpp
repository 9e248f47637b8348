#include "testing/lutestsuiterunner/journal/appendfile.h"

#include <utility>

#include "base/lbformat.h"
#include "base/os/durablefiles.h"

namespace Runner
{

CAppendFile::CAppendFile(const std::wstring& path) : m_path(path), m_file(LbOs::CreateForAppending(path))
{
    if (m_file == LbOs::c_InvalidFile)
    {
        const std::wstring message = LbFormat(L"Datei %s konnte nicht angelegt werden", path);
        if (LbOs::QueryEntry(path) != LbOs::EEntry::Missing)
        {
            throw CNameTakenException(message);
        }
        throw LbException(message);
    }
}

CAppendFile::~CAppendFile()
{
    if (m_file != LbOs::c_InvalidFile)
    {
        LbOs::CloseFile(m_file);
    }
}

void CAppendFile::Append(std::string_view bytes)
{
    if (!LbOs::WriteFileBytes(m_file, bytes.data(), bytes.size()))
    {
        throw LbException(LbFormat(L"Datei %s konnte nicht geschrieben werden", m_path));
    }
    m_size += bytes.size();
}

bool CAppendFile::Synchronise()
{
    return LbOs::SynchroniseFile(m_file);
}

void CAppendFile::Close()
{
    const bool isOnDisk = Synchronise();
    if (!LbOs::CloseFile(std::exchange(m_file, LbOs::c_InvalidFile)) || !isOnDisk)
    {
        throw LbException(LbFormat(L"Datei %s konnte nicht auf den Datenträger geschrieben werden", m_path));
    }
}

} // namespace Runner

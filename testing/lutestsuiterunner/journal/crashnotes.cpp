#include "testing/lutestsuiterunner/journal/crashnotes.h"

#include "base/lbencoding.h"
#include "base/lbexception.h"
#include "base/lbfilesystem.h"
#include "base/lbformat.h"
#include "base/lbpath.h"
#include "testing/lutestsuiterunner/journal/filenames.h"

namespace Runner
{

std::wstring GetCrashNotePath(const std::wstring& folder, std::uint32_t journal)
{
    return LbFormat(L"%s%s%scrash-%u.txt", folder, c_OutputFolderName, std::wstring(1, LbPath::c_Separator), journal);
}

std::wstring ReadCrashNote(const std::wstring& folder, std::uint32_t journal)
{
    const std::wstring path = GetCrashNotePath(folder, journal);
    return LbFileSystem::IsFile(path) ? LbEncoding::FromUtf8(LbFileSystem::ReadFile8Bit(path)) : std::wstring();
}

void CopyCrashNote(const std::wstring& folder, std::uint32_t journal, const std::wstring& targetFolder,
                   std::uint32_t targetJournal)
{
    const std::wstring note = GetCrashNotePath(folder, journal);
    if (!LbFileSystem::IsFile(note))
    {
        return;
    }
    const std::wstring target = GetCrashNotePath(targetFolder, targetJournal);
    if (!LbFileSystem::AssertDirectory(targetFolder + c_OutputFolderName) || !LbFileSystem::CopyContent(note, target))
    {
        throw LbException(LbFormat(L"Die Datei %s konnte nicht angelegt werden", target));
    }
}

} // namespace Runner

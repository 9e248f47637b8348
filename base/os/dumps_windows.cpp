#include "base/os/dumps.h"

#include "base/os/childprocess.h"
#include "base/os/windows/debughelp.h"
#include "base/os/windows/namedobject.h"

// Needs windows.h before it.
#include <dbghelp.h>

namespace
{

using namespace LbOs;

/// A new file that only the current user can read; null on failure.
Windows::Handle create(const std::wstring& path)
{
    Windows::COwnAccess access;
    const HANDLE file = CreateFileW(Windows::ToSystemPath(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0, access.Get(),
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    return Windows::Handle(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

std::wstring describe(DWORD error)
{
    // The library for dumps reports a HRESULT.
    switch (error & 0xFFFFU)
    {
    case ERROR_PATH_NOT_FOUND:
        return L"den Ordner gibt es nicht";
    case ERROR_ACCESS_DENIED:
        return L"der Zugriff ist nicht erlaubt";
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return L"der Datenträger ist voll";
    default:
        return L"Systemfehler " + std::to_wstring(error);
    }
}

/// Empty on success.
std::wstring write(const CChildProcess& child, const std::optional<SCrashedThread>& crashed, HANDLE file)
{
    const auto writeDump =
        Windows::FindSystemFunction<decltype(MiniDumpWriteDump)>(L"dbghelp.dll", "MiniDumpWriteDump");
    if (writeDump == nullptr)
    {
        return L"dbghelp.dll fehlt";
    }
    constexpr auto c_Type = static_cast<MINIDUMP_TYPE>(MiniDumpWithDataSegs | MiniDumpWithIndirectlyReferencedMemory);
    MINIDUMP_EXCEPTION_INFORMATION exception = {};
    if (crashed)
    {
        exception.ThreadId = static_cast<DWORD>(crashed->thread);
        // NOLINTNEXTLINE(performance-no-int-to-ptr)
        exception.ExceptionPointers = reinterpret_cast<EXCEPTION_POINTERS*>(crashed->context);
        exception.ClientPointers = TRUE;
    }
    const HANDLE process = reinterpret_cast<HANDLE>(child.GetWaitHandle());
    if (writeDump(process, static_cast<DWORD>(child.GetId()), file, c_Type, crashed ? &exception : nullptr, nullptr,
                  nullptr) != FALSE)
    {
        return {};
    }
    const DWORD error = GetLastError();
    return WaitForSingleObject(process, 0) == WAIT_OBJECT_0 ? std::wstring(L"der Prozess endete vorher")
                                                            : describe(error);
}

} // namespace

LbOs::SDump LbOs::WriteDump(const CChildProcess& child, const std::optional<SCrashedThread>& crashed,
                            const std::wstring& path, std::chrono::milliseconds longest)
{
    const std::wstring file = path + L".dmp";
    const auto lock = Windows::LockDebugHelp(std::chrono::steady_clock::now() + longest);
    if (!lock)
    {
        return {L"", L"die Zeit reichte nicht"};
    }
    Windows::Handle handle = create(file);
    if (!handle)
    {
        return {L"", describe(GetLastError())};
    }
    std::wstring failure = write(child, crashed, handle.get());
    handle.reset();
    if (!failure.empty())
    {
        DeleteFileW(Windows::ToSystemPath(file).c_str());
        return {L"", std::move(failure)};
    }
    return {file, L""};
}

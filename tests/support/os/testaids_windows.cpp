#include "tests/support/os/testaids.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <vector>

#include "base/os/files.h"
#include "base/os/process.h"
#include "base/os/windows/api.h"

// These headers need windows.h before them.
#include <aclapi.h>
#include <psapi.h>
#include <sddl.h>
#include <tlhelp32.h>

namespace
{

/// A TOKEN_USER with the security id to which it points; empty on failure.
std::vector<char> getUser()
{
    HANDLE opened = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened) == FALSE)
    {
        return {};
    }
    const LbOs::Windows::Handle token(opened);
    DWORD size = 0;
    GetTokenInformation(token.get(), TokenUser, nullptr, 0, &size);
    std::vector<char> user(size);
    if (GetTokenInformation(token.get(), TokenUser, user.data(), size, &size) == FALSE)
    {
        user.clear();
    }
    // The vector must be moved and not copied, because the TOKEN_USER points into it.
    return user;
}

/// True if the access list has a single entry, and that entry allows the user access.
bool isOnlyFor(ACL* list, SID* user)
{
    void* entry = nullptr;
    if (list == nullptr || list->AceCount != 1 || GetAce(list, 0, &entry) == FALSE)
    {
        return false;
    }
    auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    return allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE && EqualSid(&allowed->SidStart, user) != FALSE;
}

/// True if the bytes up to `offset` can be read. Wine accepts byte-range locks but does not enforce them for reading.
bool canRead(const std::wstring& path, std::uint32_t offset)
{
    const LbOs::FileHandle file = LbOs::OpenForReading(path);
    std::vector<char> bytes(std::size_t{offset} + 1);
    const bool isRead = LbOs::ReadFileBytes(file, bytes.data(), bytes.size()) == std::int64_t{offset} + 1;
    LbOs::CloseFile(file);
    return isRead;
}

} // namespace

bool LbOs::LoadAndUnloadModule(const std::wstring& path)
{
    const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    return module != nullptr && FreeLibrary(module) != FALSE;
}

bool LbOs::MakeLink(const std::wstring& path, const std::wstring& target)
{
    const std::size_t name = path.find_last_of(L"\\/") + 1;
    const std::wstring place = IsAbsolutePath(target) ? target : path.substr(0, name) + target;
    const DWORD kind = QueryEntry(place) == EEntry::Directory ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0;
    // Wine reports success without any effect.
    return CreateSymbolicLinkW(path.c_str(), target.c_str(), kind | SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE) !=
               FALSE &&
           IsLink(path);
}

std::optional<int> LbOs::RunInFork(const std::function<int()>& /*function*/)
{
    return std::nullopt;
}

std::optional<int> LbOs::RunInForkWithSameId(const std::function<int()>& /*function*/)
{
    return std::nullopt;
}

bool LbOs::GiveUpRights()
{
    return false;
}

bool LbOs::MountFolder(const std::wstring& /*place*/, const std::wstring& /*folder*/)
{
    return false;
}

bool LbOs::CallCanceled(const std::function<void()>& /*function*/)
{
    return false;
}

std::optional<long> LbOs::Fork()
{
    return std::nullopt;
}

void LbOs::WaitForFork(long /*id*/) {}

bool LbOs::CallWhileFlushing(void (* /*function*/)())
{
    return false;
}

bool LbOs::ResetRealTimeSignals()
{
    return false;
}

std::vector<unsigned long> LbOs::ListChildren()
{
    std::vector<unsigned long> children;
    const Windows::Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL isFound = Process32FirstW(snapshot.get(), &entry); isFound != FALSE;
         isFound = Process32NextW(snapshot.get(), &entry))
    {
        if (entry.th32ParentProcessID == GetCurrentProcessId())
        {
            children.push_back(entry.th32ProcessID);
        }
    }
    return children;
}

bool LbOs::MakePipe(const std::wstring& /*path*/)
{
    return false;
}

std::optional<std::string> LbOs::CaptureThroughFullPipe(const std::function<void()>& /*function*/)
{
    return std::nullopt;
}

void LbOs::WaitForEnd(unsigned long process)
{
    if (const Windows::Handle opened(OpenProcess(SYNCHRONIZE, FALSE, process)); opened)
    {
        WaitForSingleObject(opened.get(), INFINITE);
    }
}

std::shared_ptr<void> LbOs::HoldEnd(std::uint64_t /*process*/)
{
    return nullptr;
}

std::shared_ptr<void> LbOs::HoldFile(const std::wstring& path)
{
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    return file == INVALID_HANDLE_VALUE ? nullptr : std::shared_ptr<void>(file, CloseHandle);
}

std::shared_ptr<void> LbOs::HoldBytes(const std::wstring& path, std::uint32_t offset, std::uint32_t size)
{
    constexpr DWORD c_Sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, c_Sharing, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE)
    {
        return nullptr;
    }
    std::shared_ptr<void> held(file, CloseHandle);
    OVERLAPPED place = {};
    place.Offset = offset;
    constexpr DWORD c_Kind = LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY;
    const bool isLocked = LockFileEx(file, c_Kind, 0, size, 0, &place) != FALSE;
    return isLocked && !canRead(path, offset) ? held : nullptr;
}

bool LbOs::SetFilesForbidden(bool /*areForbidden*/)
{
    return false;
}

std::optional<std::uint64_t> LbOs::MeasurePeakMemory(const std::function<bool()>& /*function*/)
{
    return std::nullopt;
}

bool LbOs::SetInterruptedOften(bool /*isInterrupted*/)
{
    return false;
}

bool LbOs::SetPagesForbidden(bool /*areForbidden*/)
{
    return false;
}

bool LbOs::SetSignalsForbidden(bool /*areForbidden*/)
{
    return false;
}

bool LbOs::IsForOwnUserOnly(const std::wstring& name)
{
    const std::wstring objectName = L"Local\\" + name;
    Windows::Handle object(OpenEventW(READ_CONTROL, FALSE, objectName.c_str()));
    if (!object)
    {
        object.reset(OpenFileMappingW(READ_CONTROL, FALSE, objectName.c_str()));
    }
    ACL* list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    std::vector<char> user = getUser();
    if (!object || user.empty() ||
        GetSecurityInfo(object.get(), SE_KERNEL_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list, nullptr,
                        &descriptor) != ERROR_SUCCESS)
    {
        return false;
    }
    const bool isOnlyForUser = isOnlyFor(list, static_cast<SID*>(reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid));
    LocalFree(descriptor);
    return isOnlyForUser;
}

std::shared_ptr<void> LbOs::MakeMemoryOfAnotherUser(const std::wstring& name, std::size_t size)
{
    // Makes the group of administrators the owner.
    SECURITY_ATTRIBUTES access = {sizeof(access), nullptr, FALSE};
    if (ConvertStringSecurityDescriptorToSecurityDescriptorW(L"O:BAD:(A;;GA;;;WD)", SDDL_REVISION_1,
                                                             &access.lpSecurityDescriptor, nullptr) == FALSE)
    {
        return nullptr;
    }
    const HANDLE mapping = CreateFileMappingW(INVALID_HANDLE_VALUE, &access, PAGE_READWRITE, 0,
                                              static_cast<DWORD>(size), (L"Local\\" + name).c_str());
    LocalFree(access.lpSecurityDescriptor);
    return mapping == nullptr ? nullptr : std::shared_ptr<void>(mapping, CloseHandle);
}

std::vector<std::wstring> LbOs::GetOwnArguments()
{
    return GetArguments(0, nullptr);
}

bool LbOs::RemembersForgottenChildren()
{
    return true;
}

bool LbOs::SetSignalsDisturbed(bool)
{
    return false;
}

std::wstring LbOs::DescribeSignals()
{
    return {};
}

bool LbOs::RemoveObjectNames(unsigned long)
{
    return false;
}

bool LbOs::JoinGroupOfParent()
{
    return false;
}

bool LbOs::WaitForEndedChildren()
{
    return false;
}

bool LbOs::SetChildrenForgotten(bool /*areForgotten*/)
{
    return false;
}

bool LbOs::SetTimersArmed(bool /*areArmed*/)
{
    return false;
}

void LbOs::SetAlarm() {}

int LbOs::CountArmedTimers()
{
    return 0;
}

bool LbOs::CauseSignal(const std::wstring& /*name*/)
{
    return false;
}

std::vector<std::pair<int, std::string>> LbOs::ListEndingSignals()
{
    return {};
}

void LbOs::RaiseOwnException()
{
    constexpr DWORD c_Code = 0xE0000001;
    RaiseException(c_Code, EXCEPTION_NONCONTINUABLE, 0, nullptr);
}

void LbOs::EndKeeper() {}

bool LbOs::SetRightsMasked(bool /*areMasked*/)
{
    return false;
}

bool LbOs::CloseForOthers(std::intptr_t /*handle*/)
{
    return false;
}

bool LbOs::FloodEvent(const std::wstring& /*name*/)
{
    return false;
}

unsigned long LbOs::GetOwnThreadId()
{
    return GetCurrentThreadId();
}

bool LbOs::HasThreadEnded(unsigned long id)
{
    const Windows::Handle thread(OpenThread(SYNCHRONIZE, FALSE, id));
    return !thread || WaitForSingleObject(thread.get(), 0) == WAIT_OBJECT_0;
}

void LbOs::ExitQuickly()
{
    std::exit(0);
}

void LbOs::LeaveThread()
{
    ExitThread(0);
}

bool LbOs::AllowDumps()
{
    return false;
}

bool LbOs::LimitMemory(std::size_t bytes)
{
    PROCESS_MEMORY_COUNTERS used = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &used, sizeof(used));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_PROCESS_MEMORY;
    limits.ProcessMemoryLimit = used.PagefileUsage + bytes;
    // Never closed: the limit must last as long as the process.
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    const bool isLimited =
        SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof(limits)) != FALSE &&
        AssignProcessToJobObject(job, GetCurrentProcess()) != FALSE;
    // Checks the limit, because some systems accept but do not enforce it.
    void* const beyond = VirtualAlloc(nullptr, bytes * 2, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (beyond != nullptr)
    {
        VirtualFree(beyond, 0, MEM_RELEASE);
    }
    return isLimited && beyond == nullptr;
}

std::optional<std::uint64_t> LbOs::GetOpenFileLimit()
{
    return std::nullopt;
}

bool LbOs::SetOpenFileLimit(std::uint64_t /*count*/)
{
    return false;
}

std::uint32_t LbOs::CountOwnProcessors()
{
    DWORD_PTR own = 0;
    DWORD_PTR all = 0;
    GetProcessAffinityMask(GetCurrentProcess(), &own, &all);
    return std::max(1U, static_cast<std::uint32_t>(std::popcount(own)));
}

#include "tests/support/openedfiles.h"

#include <chrono>
#include <filesystem>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>

#include "base/lbencoding.h"
#include "base/lbfilesystem.h"
#include "base/lbpath.h"

bool OpenedFiles::CanStandIn()
{
    return LbPath::c_Separator == L'/';
}

OpenedFiles::OpenedFiles()
{
    const std::wstring path = m_folder.WriteFile(L"xdg-open", "#!/bin/sh\n"
                                                              "PATH=/usr/bin:/bin\n"
                                                              "cd \"$(dirname \"$0\")\"\n"
                                                              "while [ ! -e go ]; do sleep 0.02; done\n"
                                                              "echo \"$1\" >>noting && cp noting noted.tmp && "
                                                              "mv noted.tmp noted\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

std::vector<std::wstring> OpenedFiles::Await() const
{
    constexpr std::chrono::seconds c_Limit(60);
    const std::wstring noted = m_folder.GetPathOf(L"noted");
    m_folder.WriteFile(L"go", "");
    // The opener is not a child of this process, so this process cannot wait for its end.
    const auto end = std::chrono::steady_clock::now() + c_Limit;
    while (!LbFileSystem::IsFile(noted) && std::chrono::steady_clock::now() < end)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_TRUE(LbFileSystem::IsFile(noted)) << "nothing was opened";
    std::vector<std::wstring> files;
    std::istringstream lines(LbFileSystem::IsFile(noted) ? LbFileSystem::ReadFile8Bit(noted) : std::string());
    for (std::string line; std::getline(lines, line);)
    {
        files.push_back(LbEncoding::FromUtf8(line));
    }
    return files;
}

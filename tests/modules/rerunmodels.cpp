/// Unit tests whose cases end differently when they are run again, or in another process.

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "base/lbfilesystem.h"
#include "base/lustream.h"
#include "base/luunittest.h"

namespace
{

bool s_isDirty = false;

/// Cases that remember in the data directory that they have run.
class CFlakyModel : public LuUnitTest
{
    LB_RTTI(CFlakyModel)

    void InitSubtests() override
    {
        AddSubtest(L"besteht beim zweiten Mal", [this] { Check(markRun(L"zweites"), L"erster Versuch"); });
        AddSubtest(L"besteht nie", [this] { Check(false, L"wie immer"); });
        AddSubtest(L"beendet den Prozess beim ersten Mal", [this] {
            if (!markRun(L"Ende"))
            {
                std::_Exit(EXIT_SUCCESS);
            }
        });
    }

    /// True if an earlier call in this data directory had the same name.
    bool markRun(const std::wstring& name)
    {
        const std::wstring path = GetDataDirectory() + name;
        const bool isMarked = LbFileSystem::IsFile(path);
        LuStreamWriteBinaryFile(path).Close();
        return isMarked;
    }
};

/// The first case reports no message and ends each process that runs it.
class CVanishingModel : public LuUnitTest
{
    LB_RTTI(CVanishingModel)

    void InitSubtests() override
    {
        AddSubtest(L"_Exit", [] { std::_Exit(EXIT_SUCCESS); });
        AddSubtest(L"danach", [] {});
    }
};

/// Each case compares a file twice with the reference beside it.
class CReferenceModel : public LuUnitTest
{
    LB_RTTI(CReferenceModel)

    void InitSubtests() override
    {
        AddFileSubtests(L"*.txt", [this](const std::wstring& path) {
            const std::string received = LbFileSystem::ReadFile8Bit(path);
            CompareWithReference(received, path + L".expected");
            return CompareWithReference(received, path + L".expected");
        });
    }
};

/// Cases that request the end of their process, as a user at the keyboard or a build server does.
class CInterruptingModel : public LuUnitTest
{
    LB_RTTI(CInterruptingModel)

    void InitSubtests() override
    {
        AddSubtest(L"Strg-C", [] { std::raise(SIGINT); });
        AddSubtest(L"Ende verlangt", [] { std::raise(SIGTERM); });
        AddSubtest(L"zweimal Strg-C", [] {
            std::raise(SIGINT);
            std::raise(SIGINT);
        });
        AddSubtest(L"Strg-C ohne Ende", [] {
            std::raise(SIGINT);
            std::this_thread::sleep_for(std::chrono::minutes(1));
        });
        AddSubtest(L"Ende für alle", [] {
            // The shell's parent is this process, whose parent is the host.
            static_cast<void>(std::system("kill -TERM $(cut -d ' ' -f 4 /proc/$PPID/stat)"));
            std::raise(SIGTERM);
        });
        AddSubtest(L"danach", [] {});
    }
};

/// Cases that notice what earlier cases of their process have changed.
class CSharedStateModel : public LuUnitTest
{
    LB_RTTI(CSharedStateModel)

    void InitSubtests() override
    {
        AddSubtest(L"hinterlässt etwas", [] { s_isDirty = true; });
        AddSubtest(L"braucht einen frischen Prozess", [this] { Check(!s_isDirty, L"der Prozess ist nicht frisch"); });
    }
};

/// Messages of many lines.
class CTalkingModel : public LuUnitTest
{
    LB_RTTI(CTalkingModel)

    void InitSubtests() override
    {
        AddSubtest(L"viele Zeilen", [this] {
            for (int line = 1; line < 100; ++line)
            {
                Info(L"Zeile %d", line);
            }
            Check(false, L"am Ende");
        });
    }
};

} // namespace

LB_RTTI_CLASS(CFlakyModel, LuUnitTest)
LB_RTTI_CLASS(CVanishingModel, LuUnitTest)
LB_RTTI_CLASS(CReferenceModel, LuUnitTest)
LB_RTTI_CLASS(CInterruptingModel, LuUnitTest)
LB_RTTI_CLASS(CSharedStateModel, LuUnitTest)
LB_RTTI_CLASS(CTalkingModel, LuUnitTest)

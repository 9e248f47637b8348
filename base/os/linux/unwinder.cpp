#include "base/os/linux/unwinder.h"

#include "base/lbencoding.h"

#ifdef LUTESTSUITE_HAS_LIBDW

#include <cstdlib>
#include <string>

#include <cxxabi.h>
#include <dlfcn.h>
#include <elfutils/libdwfl.h>

namespace LbOs::Linux
{

namespace
{

/// The functions of libdw. Linking the library would make each start of a process slower.
struct SLibrary
{
    decltype(&dwfl_begin) begin = nullptr;
    decltype(&dwfl_end) end = nullptr;
    decltype(&dwfl_linux_proc_report) reportProcess = nullptr;
    decltype(&dwfl_report_end) endReport = nullptr;
    decltype(&dwfl_linux_proc_find_elf) findFile = nullptr;
    decltype(&dwfl_attach_state) attach = nullptr;
    decltype(&dwfl_getthread_frames) getFrames = nullptr;
    decltype(&dwfl_thread_state_registers) setRegisters = nullptr;
    decltype(&dwfl_frame_pc) getAddress = nullptr;
    decltype(&dwfl_addrmodule) findModule = nullptr;
    decltype(&dwfl_module_addrname) findName = nullptr;
    decltype(&dwfl_module_getsrc) findLine = nullptr;
    decltype(&dwfl_lineinfo) describeLine = nullptr;
};

template<typename Function>
bool find(void* library, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
}

bool findAll(void* library, SLibrary& functions)
{
    return find(library, "dwfl_begin", functions.begin) && find(library, "dwfl_end", functions.end) &&
           find(library, "dwfl_linux_proc_report", functions.reportProcess) &&
           find(library, "dwfl_report_end", functions.endReport) &&
           find(library, "dwfl_linux_proc_find_elf", functions.findFile) &&
           find(library, "dwfl_attach_state", functions.attach) &&
           find(library, "dwfl_getthread_frames", functions.getFrames) &&
           find(library, "dwfl_thread_state_registers", functions.setRegisters) &&
           find(library, "dwfl_frame_pc", functions.getAddress) &&
           find(library, "dwfl_addrmodule", functions.findModule) &&
           find(library, "dwfl_module_addrname", functions.findName) &&
           find(library, "dwfl_module_getsrc", functions.findLine) &&
           find(library, "dwfl_lineinfo", functions.describeLine);
}

/// Null if the system does not have the library.
const SLibrary* getLibrary()
{
    static SLibrary s_functions;
    static const bool s_isThere = [] {
        void* const library = dlopen("libdw.so.1", RTLD_NOW | RTLD_LOCAL);
        return library != nullptr && findAll(library, s_functions);
    }();
    return s_isThere ? &s_functions : nullptr;
}

/// Never searches for debug information outside the module, because such information may be on a server.
int findNoDebugFile(Dwfl_Module*, void**, const char*, Dwarf_Addr, const char*, const char*, GElf_Word, char**)
{
    return -1;
}

std::wstring demangle(const char* name)
{
    int status = -1;
    const std::unique_ptr<char, decltype(&std::free)> readable(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                               &std::free);
    return LbEncoding::FromNative(status == 0 ? readable.get() : name);
}

} // namespace

struct CUnwinder::SState
{
    pid_t process = 0;
    const SLibrary& library;
    Dwfl_Callbacks callbacks = {};
    Dwfl* session = nullptr;

    // These belong to the thread that is being unwound.
    Registers registers = {};
    Deadline deadline = {};
    std::vector<std::uint64_t> frames = {};

    bool Begin();
    static bool GetThread(Dwfl*, pid_t, void* state, void** threadState);
    static pid_t GetNextThread(Dwfl*, void*, void**) { return 0; }
    static bool ReadMemory(Dwfl*, Dwarf_Addr address, Dwarf_Word* word, void* state);
    static bool SetRegisters(Dwfl_Thread* thread, void* state);
    static int AddFrame(Dwfl_Frame* frame, void* state);
};

bool CUnwinder::SState::GetThread(Dwfl*, pid_t, void* state, void** threadState)
{
    *threadState = state;
    return true;
}

bool CUnwinder::SState::ReadMemory(Dwfl*, Dwarf_Addr address, Dwarf_Word* word, void* state)
{
    const std::optional<std::uint64_t> found = ReadWord(static_cast<SState*>(state)->process, address);
    *word = found.value_or(0);
    return found.has_value();
}

bool CUnwinder::SState::SetRegisters(Dwfl_Thread* thread, void* state)
{
    const auto& self = *static_cast<SState*>(state);
    return self.library.setRegisters(thread, 0, static_cast<unsigned>(self.registers.size()), self.registers.data());
}

int CUnwinder::SState::AddFrame(Dwfl_Frame* frame, void* state)
{
    auto& self = *static_cast<SState*>(state);
    Dwarf_Addr address = 0;
    const bool isKnown = self.library.getAddress(frame, &address, nullptr);
    if (!isKnown || self.frames.size() >= SThreadStack::sc_uiMostFrames ||
        std::chrono::steady_clock::now() > self.deadline)
    {
        return DWARF_CB_ABORT;
    }
    self.frames.push_back(address);
    return DWARF_CB_OK;
}

bool CUnwinder::SState::Begin()
{
    static constexpr Dwfl_Thread_Callbacks c_ThreadCallbacks = {&GetNextThread, &GetThread, &ReadMemory,
                                                                &SetRegisters,  nullptr,    nullptr};
    callbacks.find_elf = library.findFile;
    callbacks.find_debuginfo = &findNoDebugFile;
    session = library.begin(&callbacks);
    return session != nullptr && library.reportProcess(session, process) == 0 &&
           library.endReport(session, nullptr, nullptr) == 0 &&
           library.attach(session, nullptr, process, &c_ThreadCallbacks, this);
}

CUnwinder::CUnwinder(std::unique_ptr<SState> state) : m_state(std::move(state)) {}

CUnwinder::~CUnwinder()
{
    if (m_state->session != nullptr)
    {
        m_state->library.end(m_state->session);
    }
}

std::unique_ptr<CUnwinder> CUnwinder::Create(pid_t process)
{
    const SLibrary* const library = getLibrary();
    if (library == nullptr)
    {
        return nullptr;
    }
    std::unique_ptr<CUnwinder> unwinder(new CUnwinder(std::unique_ptr<SState>(new SState{process, *library})));
    return unwinder->m_state->Begin() ? std::move(unwinder) : nullptr;
}

std::vector<std::uint64_t> CUnwinder::Unwind(pid_t thread, const Registers& registers, Deadline deadline)
{
    m_state->registers = registers;
    m_state->deadline = deadline;
    m_state->frames.clear();
    m_state->library.getFrames(m_state->session, thread, &SState::AddFrame, m_state.get());
    return m_state->frames;
}

void CUnwinder::Name(SStackFrame& frame, bool isCall) const
{
    const SLibrary& library = m_state->library;
    const Dwarf_Addr address = frame.address - (isCall ? 1 : 0);
    Dwfl_Module* const module = library.findModule(m_state->session, address);
    if (module == nullptr)
    {
        return;
    }
    if (const char* const name = library.findName(module, address))
    {
        frame.function = demangle(name);
    }
    int number = 0;
    Dwfl_Line* const line = library.findLine(module, address);
    const char* const file =
        line == nullptr ? nullptr : library.describeLine(line, nullptr, &number, nullptr, nullptr, nullptr);
    if (file != nullptr)
    {
        frame.file = LbEncoding::FromNative(file);
        frame.line = static_cast<std::uint32_t>(number);
    }
}

} // namespace LbOs::Linux

#else

namespace LbOs::Linux
{

struct CUnwinder::SState
{
};

CUnwinder::CUnwinder(std::unique_ptr<SState> state) : m_state(std::move(state)) {}
CUnwinder::~CUnwinder() = default;

std::unique_ptr<CUnwinder> CUnwinder::Create(pid_t /*process*/)
{
    return nullptr;
}

std::vector<std::uint64_t> CUnwinder::Unwind(pid_t /*thread*/, const Registers& /*registers*/, Deadline /*deadline*/)
{
    return {};
}

void CUnwinder::Name(SStackFrame& /*frame*/, bool /*isCall*/) const {}

} // namespace LbOs::Linux

#endif

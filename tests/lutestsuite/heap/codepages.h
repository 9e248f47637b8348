/// Functions assembled from bytes, as targets for the patch engine.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>

#include "base/inoncopyable.h"
#include "base/os/pages.h"

/// A function on its own pages, far from this program. It has no parameters and returns a number.
class CodePages : public INonCopyable
{
public:
    explicit CodePages(std::initializer_list<std::uint8_t> code)
    {
        std::copy(code.begin(), code.end(), m_begin);
        LbOs::ProtectPages(m_begin, sc_uiSize, LbOs::c_ProtectionAll);
        LbOs::FlushCode(m_begin, sc_uiSize);
    }
    ~CodePages() { LbOs::ReleasePages(m_begin, sc_uiSize); }

    void* Get() const { return m_begin; }
    std::uint8_t* GetBytes() const { return m_begin; }
    int Call() const { return Call(m_begin); }
    static int Call(void* function) { return reinterpret_cast<int (*)()>(function)(); }

private:
    static constexpr std::size_t sc_uiSize = 4096;
    std::uint8_t* m_begin = static_cast<std::uint8_t*>(LbOs::AllocatePages(sc_uiSize));
};

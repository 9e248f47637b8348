/// How the C library formats numbers.
#pragma once

#include <cstdint>
#include <string>

#include "base/lbexport.h"

namespace LbOs
{

/// While an object exists, the C library formats numbers of the calling thread with a decimal point, whatever locale
/// the program has set. Destroyed by the same thread.
class LB_API CPlainNumbers
{
public:
    CPlainNumbers();
    ~CPlainNumbers();
    CPlainNumbers(const CPlainNumbers&) = delete;
    CPlainNumbers& operator=(const CPlainNumbers&) = delete;

private:
    std::uintptr_t m_former = 0; ///< 0 if nothing was changed
    std::string m_formerName;
};

} // namespace LbOs

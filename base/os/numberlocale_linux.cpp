#include "base/os/numberlocale.h"

#include <clocale>

// This locale always exists, and the C library allocates nothing for it.
LbOs::CPlainNumbers::CPlainNumbers()
    : m_former(reinterpret_cast<std::uintptr_t>(uselocale(newlocale(LC_ALL_MASK, "C", nullptr))))
{
}

LbOs::CPlainNumbers::~CPlainNumbers()
{
    uselocale(reinterpret_cast<locale_t>(m_former));
}

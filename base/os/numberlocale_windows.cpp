#include "base/os/numberlocale.h"

#include <clocale>
#include <string_view>

LbOs::CPlainNumbers::CPlainNumbers()
{
    // Setting a locale allocates memory.
    if (std::string_view(std::localeconv()->decimal_point) != ".")
    {
        m_former = static_cast<std::uintptr_t>(_configthreadlocale(_ENABLE_PER_THREAD_LOCALE));
        m_formerName = std::setlocale(LC_NUMERIC, nullptr);
        std::setlocale(LC_NUMERIC, "C");
    }
}

LbOs::CPlainNumbers::~CPlainNumbers()
{
    if (m_former != 0)
    {
        std::setlocale(LC_NUMERIC, m_formerName.c_str());
        _configthreadlocale(static_cast<int>(m_former));
    }
}

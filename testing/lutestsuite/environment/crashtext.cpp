#include "testing/lutestsuite/environment/crashtext.h"

#include <algorithm>
#include <iterator>

#include "base/lbutf8.h"
#include "base/os/crash.h"

namespace LuTestSuite
{

void CCrashText::Add(std::string_view text)
{
    const std::size_t length = std::min(text.size(), sizeof(m_bytes) - m_size);
    std::copy_n(text.begin(), length, m_bytes + m_size);
    m_size += length;
}

void CCrashText::AddNumber(std::uint64_t number)
{
    char digits[2 * sizeof(number)];
    char* digit = std::end(digits);
    do
    {
        *--digit = "0123456789abcdef"[number % 16];
        number /= 16;
    }
    while (number != 0);
    Add("0x");
    Add({digit, static_cast<std::size_t>(std::end(digits) - digit)});
}

void CCrashText::AddName(const char16_t* name, std::size_t capacity)
{
    // Each unit of UTF-16 becomes at most three bytes; 16 bytes are for the text after the name.
    if (sizeof(m_bytes) - m_size < 3 * capacity + 16)
    {
        Write();
    }
    std::size_t length = 0;
    while (length < capacity && name[length] != u'\0')
    {
        ++length;
    }
    char* const bytes = m_bytes + m_size;
    const std::size_t size = LbEncoding::ToUtf8({name, length}, {bytes, sizeof(m_bytes) - m_size});
    std::replace_if(
        bytes, bytes + size, [](unsigned char byte) { return byte < 0x20; }, ' ');
    m_size += size;
}

void CCrashText::Write()
{
    LbOs::WriteCrashText({m_bytes, m_size});
    m_size = 0;
}

} // namespace LuTestSuite

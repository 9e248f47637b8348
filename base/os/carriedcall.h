/// A call that runs on another thread. Internal to base/os.
#pragma once

#include <exception>
#include <functional>

namespace LbOs
{

/// Carries the exception of a function back to the thread that waits for it.
class CCarriedCall
{
public:
    explicit CCarriedCall(const std::function<void()>& function) : m_function(function) {}

    /// On the other thread. Never throws.
    void Run() noexcept
    {
        try
        {
            m_function();
        }
        catch (...)
        {
            m_exception = std::current_exception();
        }
    }

    /// After the other thread has ended.
    void Rethrow() const
    {
        if (m_exception)
        {
            std::rethrow_exception(m_exception);
        }
    }

private:
    const std::function<void()>& m_function;
    std::exception_ptr m_exception;
};

} // namespace LbOs

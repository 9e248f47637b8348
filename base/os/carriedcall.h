/// A call that runs on another thread. Internal to base/os.
#pragma once

#include <exception>
#include <functional>

namespace LbOs
{

/// Runs a function on another thread and passes its exception to the waiting thread.
class CCarriedCall
{
public:
    explicit CCarriedCall(const std::function<void()>& function) : m_function(function) {}

    /// Called on the other thread. Never throws.
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

    /// Called after the other thread has ended; rethrows the exception.
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

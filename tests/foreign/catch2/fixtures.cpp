// Fixtures and listeners.

#include <catch2/catch_test_macros.hpp>
#include <catch2/reporters/catch_reporter_event_listener.hpp>
#include <catch2/reporters/catch_reporter_registrars.hpp>

namespace
{

int s_runs = 0;

class CListener : public Catch::EventListenerBase
{
public:
    using EventListenerBase::EventListenerBase;

    void testRunStarting(const Catch::TestRunInfo& /*info*/) override { ++s_runs; }
    void testRunEnded(const Catch::TestRunStats& /*stats*/) override { --s_runs; }
};

CATCH_REGISTER_LISTENER(CListener)

struct SBuffer
{
    int size = 7;
};

TEST_CASE_METHOD(SBuffer, "buffers are set up")
{
    CHECK(size == 7);
    CHECK(s_runs == 1);
}

} // namespace

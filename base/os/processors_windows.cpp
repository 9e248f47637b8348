#include "base/os/processors.h"

namespace LbOs
{

struct CThreadProcessors::SState
{
};

CThreadProcessors::CThreadProcessors() = default;

CThreadProcessors::~CThreadProcessors() = default;

void CThreadProcessors::Read() {}

void CThreadProcessors::ShareProcessorWith(const CChildProcess& /*child*/) {}

void CThreadProcessors::Restore() {}

} // namespace LbOs

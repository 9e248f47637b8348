#include "testing/lutestsuite/run/children/childobjects.h"

#include "base/lbexception.h"
#include "base/lbformat.h"
#include "base/lbuniqueid.h"

namespace LuTestSuiteRun
{

namespace
{

std::unique_ptr<LbOs::CNamedEvent> createEvent(const std::wstring& name)
{
    std::wstring failure;
    std::unique_ptr<LbOs::CNamedEvent> event = LbOs::CNamedEvent::Create(name, &failure);
    if (!event)
    {
        throw LbException(LbFormat(L"Das Ereignis '%s' kann nicht angelegt werden (%s)", name, failure));
    }
    return event;
}

} // namespace

SChildObjects::SChildObjects()
    : requestId(LbUniqueId::Generate()), responseId(LbUniqueId::Generate()),
      buffer(LbUniqueId::Generate(), CSharedMemoryWorkBuffer::eO_Create), request(createEvent(requestId)),
      response(createEvent(responseId))
{
    ClearRequest(*buffer.GetWriteAccess());
}

bool SChildObjects::AreNamed() const
{
    return buffer.IsNamed() && request->IsNamed() && response->IsNamed();
}

} // namespace LuTestSuiteRun

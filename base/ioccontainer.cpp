#include "base/ioccontainer.h"

#include <atomic>
#include <map>
#include <utility>
#include <vector>

#include "base/lbcriticalsection.h"
#include "base/lbrtti.h"
#include "base/xmlnode.h"

namespace
{

constexpr const char* c_RootName = "Container";

struct SService
{
    std::wstring className;
    bool isTransient = false;
    bool isBeingMade = false;
    std::shared_ptr<IObject> object; ///< the singleton after its creation, else null
};

std::atomic<IOC::CContainer*> s_Current = nullptr;

std::shared_ptr<IObject> create(const std::wstring& className)
{
    const LbRTTI::CreateFunction create = LbRTTI::getCreate(className);
    return create == nullptr ? nullptr : create();
}

/// Marks a service while its object is being created.
class CMakingMark : public INonCopyable
{
public:
    explicit CMakingMark(SService& service) : m_service(service) { m_service.isBeingMade = true; }
    ~CMakingMark() { m_service.isBeingMade = false; }

private:
    SService& m_service;
};

} // namespace

struct IOC::CContainer::SContent
{
    ~SContent();

    bool Configure(const XMLNode& root);
    bool AddService(const XMLNode& node);
    std::shared_ptr<IObject> GetOnlyObject(SService& service);

    std::map<std::wstring, SService> services;

    // Re-entrant, because a service's constructor may resolve other services.
    LbCriticalSection criticalSection;
    std::vector<SService*> made; ///< services with an object, in order of creation
};

IOC::CContainer::SContent::~SContent()
{
    for (; !made.empty(); made.pop_back())
    {
        made.back()->object.reset();
    }
}

bool IOC::CContainer::SContent::Configure(const XMLNode& root)
{
    for (const XMLNode& node : root.GetChildren())
    {
        if (node.GetName() == L"Service" && !AddService(node))
        {
            return false;
        }
    }
    return true;
}

bool IOC::CContainer::SContent::AddService(const XMLNode& node)
{
    const std::wstring name = node.GetAttribute("name");
    const std::wstring lifetime = node.HasAttribute("lifetime") ? node.GetAttribute("lifetime") : L"singleton";
    SService service;
    service.className = node.GetAttribute("class");
    service.isTransient = lifetime == L"transient";
    return !name.empty() && !service.className.empty() && (service.isTransient || lifetime == L"singleton") &&
           services.emplace(name, std::move(service)).second;
}

std::shared_ptr<IObject> IOC::CContainer::SContent::GetOnlyObject(SService& service)
{
    const LbCriticalSectionLock lock(criticalSection);
    if (!service.object && !service.isBeingMade)
    {
        const CMakingMark mark(service);
        std::shared_ptr<IObject> object = create(service.className);
        if (object)
        {
            made.push_back(&service);
            service.object = std::move(object);
        }
    }
    return service.object;
}

IOC::CContainer::CContainer() : m_content(std::make_unique<SContent>()) {}

IOC::CContainer::~CContainer() = default;

IOC::CContainer* IOC::CContainer::GetCurrent() noexcept
{
    return s_Current;
}

void IOC::CContainer::SetCurrent(CContainer* container) noexcept
{
    s_Current = container;
}

std::unique_ptr<IOC::CContainer> IOC::CContainer::CreateFromFile(const std::wstring& path)
{
    XMLDocument document;
    return document.Load(path, c_RootName) == XMLDocument::EResult::Ok ? createFrom(document) : nullptr;
}

std::unique_ptr<IOC::CContainer> IOC::CContainer::CreateFromText(const std::string& xml)
{
    XMLDocument document;
    return document.LoadText(xml, c_RootName) == XMLDocument::EResult::Ok ? createFrom(document) : nullptr;
}

std::unique_ptr<IOC::CContainer> IOC::CContainer::createFrom(const XMLDocument& document)
{
    std::unique_ptr<CContainer> container(new CContainer);
    return container->m_content->Configure(document.GetRoot()) ? std::move(container) : nullptr;
}

bool IOC::CContainer::HasService(const std::wstring& name) const
{
    return m_content->services.contains(name);
}

std::shared_ptr<IObject> IOC::CContainer::Resolve(const std::wstring& name)
{
    const auto entry = m_content->services.find(name);
    if (entry == m_content->services.end())
    {
        return nullptr;
    }
    SService& service = entry->second;
    return service.isTransient ? create(service.className) : m_content->GetOnlyObject(service);
}

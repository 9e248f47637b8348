/// The dependency-injection container: services by name, created from registered classes.
///
/// Its configuration is XML:
///
///     <Container>
///       <Service name="Clock" class="CSystemClock"/>
///       <Service name="Job" class="CJob" lifetime="transient"/>
///     </Container>
///
/// A service of lifetime "singleton" (the default) is one shared object, created on first use. Each Resolve of a
/// "transient" service creates a new object.
#pragma once

#include <memory>
#include <string>

#include "base/inoncopyable.h"
#include "base/iobject.h"
#include "base/lbexport.h"

class XMLDocument;

namespace IOC
{

/// Any thread may resolve. The destructor of the container releases the singletons in reverse order of creation.
class LB_API CContainer : public INonCopyable
{
public:
    /// Null if the file cannot be read, or if the file or text is not a valid configuration: wrong syntax or root, a
    /// service without name or class, a duplicate name, or an unknown lifetime.
    static std::unique_ptr<CContainer> CreateFromFile(const std::wstring& path);
    static std::unique_ptr<CContainer> CreateFromText(const std::string& xml);

    ~CContainer();

    /// The container that the program shares with its modules; null if none is set. Callable from any thread.
    static CContainer* GetCurrent() noexcept;

    /// Sets the shared container; null unsets it. The caller keeps ownership and must not destroy the container while
    /// it is set.
    static void SetCurrent(CContainer* container) noexcept;

    bool HasService(const std::wstring& name) const;

    /// The service's object. Null if the name is unknown, if no object of the class can be created, or if the
    /// constructor of a singleton resolves the singleton itself. Looks the class up whenever it creates an object, so
    /// the module of the class may be loaded after the container was created. Exceptions of the constructor pass
    /// through; the next call tries again.
    std::shared_ptr<IObject> Resolve(const std::wstring& name);

    /// The same, cast to an interface; also null if the object does not implement it.
    template<typename Interface>
    std::shared_ptr<Interface> Resolve(const std::wstring& name)
    {
        return std::dynamic_pointer_cast<Interface>(Resolve(name));
    }

private:
    CContainer();
    static std::unique_ptr<CContainer> createFrom(const XMLDocument& document);

    struct SContent;
    std::unique_ptr<SContent> m_content;
};

} // namespace IOC

/// The dependency-injection container: services by name, made from registered classes.
///
/// Its configuration is XML:
///
///     <Container>
///       <Service name="Clock" class="CSystemClock"/>
///       <Service name="Job" class="CJob" lifetime="transient"/>
///     </Container>
///
/// A service of the lifetime "singleton", which it has unless another is given, is one object for all, made when first
/// asked for; each asker gets an object of its own of a "transient" one.
#pragma once

#include <memory>
#include <string>

#include "base/inoncopyable.h"
#include "base/iobject.h"
#include "base/lbexport.h"

class XMLDocument;

namespace IOC
{

/// Any thread may resolve; services made once are destroyed with the container, in reverse order of their making.
class LB_API CContainer : public INonCopyable
{
public:
    /// Null when the file or text is not a container configuration (syntax, root, a service without name or class, a
    /// name twice, an unknown lifetime).
    static std::unique_ptr<CContainer> CreateFromFile(const std::wstring& path);
    static std::unique_ptr<CContainer> CreateFromText(const std::string& xml);

    ~CContainer();

    /// The container that the program shares with the modules it loads; null while there is none. Any thread may ask.
    static CContainer* GetCurrent() noexcept;

    /// Shares a container, which must not end before another one, or none (null), is shared.
    static void SetCurrent(CContainer* container) noexcept;

    bool HasService(const std::wstring& name) const;

    /// The service's object; null when the name is unknown or its class cannot be created (modules that bring the class
    /// may be loaded later: the class is looked up when asked for), or when its own constructor asks for it. Exceptions
    /// of the constructor pass through; the next asker tries again.
    std::shared_ptr<IObject> Resolve(const std::wstring& name);

    /// The same, cast to an interface; null also when the object does not have it.
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

/// The run-time class registry.
///
/// Each class has one record, a static object in the class's own module. It is registered while the module is loaded.
/// Two macros declare and define it:
///
///     class CMyTest : public LuUnitTest
///     {
///         LB_RTTI(CMyTest)
///         ...
///     };
///     LB_RTTI_CLASS(CMyTest, LuUnitTest)
#pragma once

#include <memory>
#include <string>

#include "base/inoncopyable.h"
#include "base/iobject.h"
#include "base/lbexport.h"

/// The record of one class. Records are compared by identity. All operations may be called from any thread. A record
/// stays valid while its module is loaded.
class LB_API LbRTTI : public INonCopyable
{
public:
    /// Creates an object, owned by the caller. Exceptions of the constructor pass through.
    using CreateFunction = std::unique_ptr<IObject> (*)();

    /// Registers a class. `base` is null only for a root class; `create` is null for a class that cannot be created by
    /// name. If the name is taken, Find returns the record that was registered first, until its module is unloaded.
    LbRTTI(const wchar_t* name, const LbRTTI* base, CreateFunction create);
    ~LbRTTI();

    const std::wstring& GetName() const noexcept { return m_name; }
    const LbRTTI* GetBase() const noexcept { return m_base; }
    CreateFunction GetCreate() const noexcept { return m_create; }

    /// True if this class is `type` or derived from it.
    bool IsDerivedFrom(const LbRTTI& type) const noexcept;
    bool IsExactly(const LbRTTI& type) const noexcept { return this == &type; }

    /// The record registered under `name` (compared exactly); null if there is none.
    static const LbRTTI* Find(const std::wstring& name);

    /// The factory registered under `name`; null if the name is unknown or the class cannot be created.
    static CreateFunction getCreate(const std::wstring& name);

private:
    std::wstring m_name;
    const LbRTTI* m_base;
    CreateFunction m_create;
};

/// Declares the record inside the class. Leaves the access at private.
#define LB_RTTI(Class)                                                                                                 \
public:                                                                                                                \
    static const LbRTTI RTTI;                                                                                          \
    const LbRTTI& GetRTTI() const override                                                                             \
    {                                                                                                                  \
        return RTTI;                                                                                                   \
    }                                                                                                                  \
                                                                                                                       \
private:

/// Defines the record of a class that can be created by name, at namespace scope of one source file. The class needs a
/// constructor without arguments.
#define LB_RTTI_CLASS(Class, Base) LB_RTTI_NAMED_CLASS(Class, Base, #Class)

/// The same with an explicit name, for example with a namespace.
#define LB_RTTI_NAMED_CLASS(Class, Base, Name)                                                                         \
    const LbRTTI Class::RTTI(L"" Name, &Base::RTTI,                                                                    \
                             []() -> std::unique_ptr<IObject> { return std::make_unique<Class>(); });

/// Defines the record of a class that cannot be created by name.
#define LB_RTTI_ABSTRACT(Class, Base) const LbRTTI Class::RTTI(L"" #Class, &Base::RTTI, nullptr);

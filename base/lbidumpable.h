/// Objects that can write their state down for a developer.
#pragma once

class LuStreamWriteText;

/// `Version` is the version of the dump's layout; classes with several layouts derive from several of them.
template<int Version>
class LbIDumpable
{
public:
    virtual ~LbIDumpable() = default;

    /// Writes the state as text lines. The stream is the caller's.
    virtual void dump(LuStreamWriteText& stream) const = 0;
};

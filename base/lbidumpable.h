/// Objects that can write their state for developers.
#pragma once

class LuStreamWriteText;

/// `Version` is the version of the dump's layout. A class that writes several layouts derives from one LbIDumpable for
/// each.
template<int Version>
class LbIDumpable
{
public:
    virtual ~LbIDumpable() = default;

    /// Writes the state as text lines. The caller owns the stream.
    virtual void dump(LuStreamWriteText& stream) const = 0;
};

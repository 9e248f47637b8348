/// Objects that have an identity.
#pragma once

/// Base of classes whose objects are neither copied nor moved.
class INonCopyable
{
protected:
    INonCopyable() = default;
    ~INonCopyable() = default;

public:
    INonCopyable(const INonCopyable&) = delete;
    INonCopyable& operator=(const INonCopyable&) = delete;
};

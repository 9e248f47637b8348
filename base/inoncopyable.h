/// Base of classes whose objects have an identity.
#pragma once

class INonCopyable
{
protected:
    INonCopyable() = default;
    ~INonCopyable() = default;

public:
    INonCopyable(const INonCopyable&) = delete;
    INonCopyable& operator=(const INonCopyable&) = delete;
};

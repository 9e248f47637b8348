/// A base class that forbids copying and moving.
#pragma once

/// Base of classes whose objects cannot be copied or moved.
class INonCopyable
{
protected:
    INonCopyable() = default;
    ~INonCopyable() = default;

public:
    INonCopyable(const INonCopyable&) = delete;
    INonCopyable& operator=(const INonCopyable&) = delete;
};

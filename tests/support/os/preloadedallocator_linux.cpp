#include <cstddef>

// A library that tests preload. Its allocator replaces that of the C library.

extern "C"
{
    // Further names of the C library's functions. No header declares these names.
    void* __libc_malloc(std::size_t size); // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
    void __libc_free(void* block);         // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
    void* __libc_realloc(void* block,
                         std::size_t size); // NOLINT(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

    __attribute__((visibility("default"))) void* malloc(std::size_t size) noexcept
    {
        return __libc_malloc(size);
    }

    __attribute__((visibility("default"))) void free(void* block) noexcept
    {
        __libc_free(block);
    }

    __attribute__((visibility("default"))) void* realloc(void* block, std::size_t size) noexcept
    {
        return __libc_realloc(block, size);
    }
}

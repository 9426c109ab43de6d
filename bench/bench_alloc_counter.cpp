// Global operator new / delete of the benchmark executable, counting allocations.
#include "AllocCounter.h"
#include <atomic>
#include <cstdlib>
#include <new>

namespace
{

std::atomic<long long> s_nAllocations{0};

void* Allocate(std::size_t size)
{
    s_nAllocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size ? size : 1);
}

void* AllocateAligned(std::size_t size, std::align_val_t align)
{
    s_nAllocations.fetch_add(1, std::memory_order_relaxed);
    std::size_t a = (std::size_t)align < sizeof(void*) ? sizeof(void*) : (std::size_t)align;
    void* p = nullptr;
    return posix_memalign(&p, a, size ? size : 1) == 0 ? p : nullptr;
}

void* OrThrow(void* p)
{
    if (!p)
        throw std::bad_alloc();
    return p;
}

} // namespace

long long KyrAllocCount()
{
    return s_nAllocations.load(std::memory_order_relaxed);
}

void* operator new(std::size_t size)
{
    return OrThrow(Allocate(size));
}
void* operator new[](std::size_t size)
{
    return OrThrow(Allocate(size));
}
void* operator new(std::size_t size, std::nothrow_t const&) noexcept
{
    return Allocate(size);
}
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept
{
    return Allocate(size);
}
void* operator new(std::size_t size, std::align_val_t align)
{
    return OrThrow(AllocateAligned(size, align));
}
void* operator new[](std::size_t size, std::align_val_t align)
{
    return OrThrow(AllocateAligned(size, align));
}
void* operator new(std::size_t size, std::align_val_t align, std::nothrow_t const&) noexcept
{
    return AllocateAligned(size, align);
}
void* operator new[](std::size_t size, std::align_val_t align, std::nothrow_t const&) noexcept
{
    return AllocateAligned(size, align);
}

void operator delete(void* p) noexcept
{
    std::free(p);
}
void operator delete[](void* p) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept
{
    std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::nothrow_t const&) noexcept
{
    std::free(p);
}
void operator delete[](void* p, std::nothrow_t const&) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::align_val_t) noexcept
{
    std::free(p);
}
void operator delete[](void* p, std::align_val_t) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept
{
    std::free(p);
}
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::align_val_t, std::nothrow_t const&) noexcept
{
    std::free(p);
}
void operator delete[](void* p, std::align_val_t, std::nothrow_t const&) noexcept
{
    std::free(p);
}

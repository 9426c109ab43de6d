// The one ownership idiom of the library. Effects copy pointers as they stand, so two copies
// share what they hold; a member that holds something it may free is an eShared (or, for a
// raw OpenGL name, an eSharedName). Whatever a destructor, UnInitialize, Reset or a setter
// "frees" it drops with Reset(): the object itself goes when its last holder lets go, so
// copies may be destroyed, assigned and self-assigned in any order. Counts are atomic, so
// holders on several threads are safe; what they point at keeps its own lock.
//
// How a class uses it:
// - Members are eShared<T> / eSharedName and copy construction and assignment stay the
//   compiler's: they copy the holders, which is what makes them safe in every order.
// - A raw pointer handed in (AddMesh, a setter that takes ownership) is taken once, with
//   Reset(p) or eShared<T>(p); handing in a pointer some holder already holds would free it
//   twice, so a class that may see the same pointer again shares the holder it has instead.
// - A destructor frees nothing by hand: it drops its holders (the members' own destructors
//   do that), and the last holder frees. A destructor that would "destroy the buffers" of
//   something shared leaves that to the last holder, whose delete releases them.
// - Copies that share a pending queue or strategy share its lock too: eShared<eMutex>.
// - A GL name whose context is gone is forgotten with Abandon(), never deleted.
#pragma once
#include <cstddef>
#include <memory>
#include <utility>

namespace KYR
{

// A holder of T shared by copies; the last holder frees T with delete (delete[] for
// eShared<T[]>) or with the function given on taking it. Reads as the raw pointer it holds.
template <typename T> class eShared
{
public:
    using element_type = typename std::shared_ptr<T>::element_type;

    eShared() noexcept = default;
    eShared(std::nullptr_t) noexcept {}
    // Takes p; the last holder frees it.
    explicit eShared(element_type* p) : m_p(p) {}
    template <typename Free> eShared(element_type* p, Free free) : m_p(p, std::move(free)) {}

    // Drops this holder's share (frees when it was the last), then optionally takes p.
    void Reset() noexcept { m_p.reset(); }
    void Reset(element_type* p) { m_p.reset(p); }
    template <typename Free> void Reset(element_type* p, Free free)
    {
        m_p.reset(p, std::move(free));
    }

    element_type* Get() const noexcept { return m_p.get(); }
    operator element_type*() const noexcept { return m_p.get(); }
    element_type* operator->() const noexcept { return m_p.get(); }
    element_type& operator*() const noexcept { return *m_p.get(); }
    element_type& operator[](std::ptrdiff_t i) const noexcept { return m_p.get()[i]; }

    // How many holders share what this one holds (0 when empty).
    long Holders() const noexcept { return m_p.use_count(); }
    bool IsLast() const noexcept { return m_p.use_count() == 1; }

private:
    std::shared_ptr<T> m_p;
};

// An OpenGL object name (texture, frame buffer, buffer, vertex array) shared by copies and
// deleted once, by its last holder, through the function given with it. 0 is "none". The
// value types know nothing of OpenGL: the library passes the delete call in.
class eSharedName
{
public:
    using Free = void (*)(unsigned int);

    eSharedName() noexcept = default;
    eSharedName(unsigned int name, Free free) { Reset(name, free); }

    void Reset() noexcept
    {
        m_p.reset();
        m_nStale = 0;
    }
    void Reset(unsigned int name, Free free)
    {
        m_nStale = 0;
        if (!name)
        {
            m_p.reset();
            return;
        }
        m_p = std::shared_ptr<Holder>(new Holder{name, free});
    }
    // Forgets the name without deleting it (for a name whose context is gone).
    void Abandon() noexcept
    {
        if (m_p)
            m_p->free = nullptr;
        m_p.reset();
        m_nStale = 0;
    }
    // Lets go as Reset() does (the last holder deletes the name), but Get() goes on reporting
    // the number: for a name that is kept readable after its release. Nothing deletes it
    // again from here, whether or not a copy still holds it.
    void ResetKeepingNumber() noexcept
    {
        m_nStale = Get();
        m_p.reset();
    }

    unsigned int Get() const noexcept { return m_p ? m_p->name : m_nStale; }
    operator unsigned int() const noexcept { return Get(); }
    long Holders() const noexcept { return m_p.use_count(); }

private:
    struct Holder
    {
        unsigned int name;
        Free free;
        ~Holder()
        {
            if (free && name)
                free(name);
        }
    };
    std::shared_ptr<Holder> m_p;
    unsigned int m_nStale = 0; // number kept by ResetKeepingNumber, held by no one here
};

} // namespace KYR

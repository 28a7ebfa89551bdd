#ifndef PKOAPI_SHAREDPOINTER_H
#define PKOAPI_SHAREDPOINTER_H

// The SDK's own reference-counted pointer. Every SDK object a client holds
// (cameras, features, observers) is held through it, so that an object stays
// alive while any client or any SDK thread still uses it.
//
// Contract:
// - Counting is thread-safe: copies may be made and dropped on any thread at
//   the same time. One shared_ptr object itself is not safe to write from two
//   threads at once (as with any value type).
// - The object is deleted, through the type it was created with, when the last
//   shared_ptr that shares its count is dropped.
// - shared_ptr<Derived> converts to shared_ptr<Base>; dynamic_pointer_cast and
//   static_pointer_cast give a pointer of another type that shares the count.
// - If allocating the count fails, the constructor deletes the object it was
//   given and rethrows std::bad_alloc, so no object leaks.

#include <atomic>
#include <cstddef>
#include <new>
#include <utility>

namespace ZMT {
namespace PkoAPI {

namespace detail {

class RefCountBase {
public:
    RefCountBase() = default;
    RefCountBase(const RefCountBase&) = delete;
    RefCountBase& operator=(const RefCountBase&) = delete;
    virtual ~RefCountBase() = default;

    void AddRef() noexcept { m_count.fetch_add(1, std::memory_order_relaxed); }
    // Drops one reference; the last one disposes of the object and the count.
    void Release() noexcept
    {
        if (m_count.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            Dispose();
            delete this;
        }
    }
    long UseCount() const noexcept { return m_count.load(std::memory_order_acquire); }

private:
    virtual void Dispose() noexcept = 0;
    std::atomic<long> m_count{1};
};

template <class T>
class RefCountFor final : public RefCountBase {
public:
    explicit RefCountFor(T* object) noexcept : m_object(object) {}

private:
    void Dispose() noexcept override { delete m_object; }
    T* m_object;
};

}  // namespace detail

template <class T>
class shared_ptr {
public:
    using element_type = T;

    shared_ptr() noexcept = default;
    shared_ptr(std::nullptr_t) noexcept {}

    // Takes ownership of object (which may be null).
    template <class U>
    explicit shared_ptr(U* object) : m_ptr(object)
    {
        if (object == nullptr)
            return;
        try {
            m_count = new detail::RefCountFor<U>(object);
        } catch (...) {
            delete object;
            throw;
        }
    }

    shared_ptr(const shared_ptr& other) noexcept : m_ptr(other.m_ptr), m_count(other.m_count)
    {
        if (m_count)
            m_count->AddRef();
    }
    shared_ptr(shared_ptr&& other) noexcept : m_ptr(other.m_ptr), m_count(other.m_count)
    {
        other.m_ptr = nullptr;
        other.m_count = nullptr;
    }
    template <class U>
    shared_ptr(const shared_ptr<U>& other) noexcept : m_ptr(other.m_ptr), m_count(other.m_count)
    {
        if (m_count)
            m_count->AddRef();
    }
    // Aliasing: shares other's count but points at object (used by the casts).
    template <class U>
    shared_ptr(const shared_ptr<U>& other, T* object) noexcept
        : m_ptr(object), m_count(object ? other.m_count : nullptr)
    {
        if (m_count)
            m_count->AddRef();
    }

    ~shared_ptr()
    {
        if (m_count)
            m_count->Release();
    }

    shared_ptr& operator=(shared_ptr other) noexcept
    {
        swap(other);
        return *this;
    }

    void reset() noexcept { shared_ptr().swap(*this); }
    template <class U>
    void reset(U* object)
    {
        shared_ptr(object).swap(*this);
    }
    void swap(shared_ptr& other) noexcept
    {
        std::swap(m_ptr, other.m_ptr);
        std::swap(m_count, other.m_count);
    }

    T* get() const noexcept { return m_ptr; }
    T& operator*() const noexcept { return *m_ptr; }
    T* operator->() const noexcept { return m_ptr; }
    explicit operator bool() const noexcept { return m_ptr != nullptr; }
    long use_count() const noexcept { return m_count ? m_count->UseCount() : 0; }

private:
    template <class U>
    friend class shared_ptr;

    T* m_ptr = nullptr;
    detail::RefCountBase* m_count = nullptr;
};

template <class T, class U>
bool operator==(const shared_ptr<T>& a, const shared_ptr<U>& b) noexcept
{
    return a.get() == b.get();
}
template <class T, class U>
bool operator!=(const shared_ptr<T>& a, const shared_ptr<U>& b) noexcept
{
    return a.get() != b.get();
}
template <class T>
bool operator==(const shared_ptr<T>& a, std::nullptr_t) noexcept
{
    return a.get() == nullptr;
}
template <class T>
bool operator==(std::nullptr_t, const shared_ptr<T>& a) noexcept
{
    return a.get() == nullptr;
}
template <class T>
bool operator!=(const shared_ptr<T>& a, std::nullptr_t) noexcept
{
    return a.get() != nullptr;
}
template <class T>
bool operator!=(std::nullptr_t, const shared_ptr<T>& a) noexcept
{
    return a.get() != nullptr;
}

// Null when from is null or does not point at a T.
template <class T, class U>
shared_ptr<T> dynamic_pointer_cast(const shared_ptr<U>& from) noexcept
{
    return shared_ptr<T>(from, dynamic_cast<T*>(from.get()));
}

template <class T, class U>
shared_ptr<T> static_pointer_cast(const shared_ptr<U>& from) noexcept
{
    return shared_ptr<T>(from, static_cast<T*>(from.get()));
}

}  // namespace PkoAPI
}  // namespace ZMT

#endif

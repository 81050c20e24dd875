#pragma once

#include <cstdint>
#include <utility>

namespace tbScripts
{

/// Base of objects that several others hold. The count lies in the object itself, so sharing needs
/// no further memory. The count is not atomic (docs/reliability.md#threads).
///
/// A derived `T` says how it is destroyed: `static void T::destroy(T* object) noexcept`.
class HolderCount
{
public:
    HolderCount(const HolderCount&) = delete;
    HolderCount& operator=(const HolderCount&) = delete;

    /// Returns whether more than one hold on the object exists.
    bool isShared() const { return m_holders > 1; }

protected:
    constexpr HolderCount() noexcept = default; // without hold yet
    ~HolderCount() = default;

private:
    template <typename T>
    friend class Counted;

    std::uint32_t m_holders = 0;
};

/// One hold on a `T`, or none. The last hold destroys the object.
template <typename T>
class Counted
{
public:
    Counted() noexcept = default;

    /// Holds `object` as well. Null creates an empty one.
    explicit Counted(T* object) noexcept
        : m_object(object)
    {
        if (m_object)
            hold(*m_object);
    }

    Counted(const Counted& other) noexcept
        : Counted(other.m_object)
    {
    }

    Counted(Counted&& other) noexcept
        : m_object(std::exchange(other.m_object, nullptr))
    {
    }

    Counted& operator=(Counted other) noexcept
    {
        std::swap(m_object, other.m_object);
        return *this;
    }

    ~Counted()
    {
        if (m_object)
            letGo(*m_object);
    }

    explicit operator bool() const { return m_object != nullptr; }

    T* get() const { return m_object; }

    T& operator*() const { return *m_object; }

    T* operator->() const { return m_object; }

    ///@{
    /// For classes that keep a plain pointer, because their public header cannot know this one: one
    /// more hold, one less, and the hold of this object, which is empty afterwards.
    static void hold(HolderCount& object) noexcept { ++object.m_holders; }

    static void letGo(T& object) noexcept
    {
        HolderCount& count = object;
        if (--count.m_holders == 0)
            T::destroy(&object);
    }

    T* detach() noexcept { return std::exchange(m_object, nullptr); }

    ///@}

private:
    T* m_object = nullptr; // counted
};

/// Returns the first hold on a new `T`.
template <typename T, typename... Arguments>
Counted<T> makeCounted(Arguments&&... arguments)
{
    return Counted<T>(new T(std::forward<Arguments>(arguments)...));
}

} // namespace tbScripts

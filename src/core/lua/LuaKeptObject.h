#pragma once

#include <memory>
#include <utility>

namespace tbScripts::lua
{

class LuaKeptObjects;

/// Base of objects that must live until the state has closed. They form an intrusive list because
/// finalisers register them, possibly while memory is exhausted.
class LuaKeptObject
{
public:
    bool isKeptUntilClosed() const { return m_isKept; }

protected:
    ~LuaKeptObject() = default;

private:
    friend class LuaKeptObjects;

    bool m_isKept = false;
    std::shared_ptr<LuaKeptObject> m_next;
};

/// The list of such objects. Allocates nothing.
class LuaKeptObjects
{
public:
    /// Adds `object`, unless some list holds it already.
    void add(std::shared_ptr<LuaKeptObject> object)
    {
        if (std::exchange(object->m_isKept, true))
            return;
        object->m_next = std::move(m_first);
        m_first = std::move(object);
    }

    /// Releases all objects one after the other: a list may be long, and releasing the first of a
    /// chain at once would recurse to the last.
    void release()
    {
        while (std::shared_ptr<LuaKeptObject> released = std::move(m_first))
            m_first = std::move(released->m_next);
    }

private:
    std::shared_ptr<LuaKeptObject> m_first;
};

} // namespace tbScripts::lua

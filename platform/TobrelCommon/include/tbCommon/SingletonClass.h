#pragma once

#include <utility>

namespace tbCommon
{

/// Base of a class of which the process needs one registered instance, created on first use.
///
/// `T` derives from `SingletonClass<T>`, keeps its constructor private and befriends this template.
/// Further objects of `T`, copies for example, may exist; they are not the registered instance, but
/// the destruction of any of them unregisters the registered instance.
///
/// A shared library that owns `T` declares
/// `extern template class <its export macro> tbCommon::SingletonClass<T>;` before `T` and puts
/// `template class tbCommon::SingletonClass<T>;` in one source. The process then has one instance;
/// without these, the library and its users would each have their own instance.
///
/// Creation and `kill` take no lock.
template <typename T>
class SingletonClass
{
public:
    /// Copies nothing: which instance is registered does not change.
    SingletonClass(const SingletonClass&) noexcept {}

    /// Does nothing, for the same reason.
    SingletonClass& operator=(const SingletonClass&) noexcept { return *this; }

    /// Returns the registered instance, and creates it if there is none.
    ///
    /// Valid until: `kill`, or the destruction of any object of `T`.
    static T* getInstance()
    {
        if (s_instance == nullptr)
            s_instance = new T();
        return s_instance;
    }

    /// The same as a reference.
    static T& getInstanceRef() { return *getInstance(); }

    /// Returns the registered instance, null if there is none. Creates nothing.
    static T* getInstanceIfExisting() noexcept { return s_instance; }

    /// Destroys the registered instance, if there is one, whichever object this is called on.
    ///
    /// A call of `getInstance` during the destruction of the old instance creates a new one, which
    /// is destroyed before `kill` returns. A nested `kill` of the same class leaves the work to the
    /// outer one.
    void kill()
    {
        // Nothing of `*this` may be used from here on: it is usually what gets deleted.
        if (s_isKilling)
            return;
        s_isKilling = true;
        for (int round = 0; s_instance != nullptr && round < s_maxKillRounds; ++round)
            delete std::exchange(s_instance, nullptr);
        s_isKilling = false;
    }

protected:
    SingletonClass() noexcept = default;

    virtual ~SingletonClass()
    {
        // During a kill a registered instance was created during the kill. Forgetting it
        // here would leak it; `kill` destroys it next.
        if (!s_isKilling || _isRegistered())
            s_instance = nullptr;
    }

private:
    /// A destructor that asks for the instance each time would keep `kill` busy for ever. After
    /// this many rounds the last new instance stays registered.
    static constexpr int s_maxKillRounds = 16;

    bool _isRegistered() const noexcept
    {
        return static_cast<const SingletonClass*>(s_instance) == this;
    }

    static T* s_instance;
    static bool s_isKilling;
};

// Defined here, outside the class, so that an explicit instantiation covers them.
template <typename T>
T* SingletonClass<T>::s_instance = nullptr;

template <typename T>
bool SingletonClass<T>::s_isKilling = false;

} // namespace tbCommon

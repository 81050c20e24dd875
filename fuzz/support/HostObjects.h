#pragma once

#include <deque>
#include <unordered_set>

namespace tbScripts::fuzz
{

/// What has to become of a host object by the time that all interpreters are closed.
enum class FATE
{
    NEVER,        // the host's: no script may destroy it
    EXACTLY_ONCE, // made by `new`
    AT_MOST_ONCE, // ownership is transferred in a way that may fail, or in bytes
    ANY           // given more than one owner, which only the host can avoid
};

/// One object of the host, seen by scripts as an instance. It stays readable after its destruction,
/// which is only counted.
struct HostObject
{
    double value = 0.0;
    int destructions = 0;
    int transfers = 0;
    bool isAliased = false; // has instances that do not own it: they may be used after its end
    int brand = 0;          // of the declaration whose constructor made it; 0: of any
    FATE fate = FATE::NEVER;
};

/// All objects of one run.
class HostObjects
{
public:
    HostObject* make(FATE fate);

    /// Returns one that the host keeps.
    HostObject* anyHostOwned(std::size_t index);

    /// Notes that a destructor was called.
    void destroy(void* object);

    /// Expects `object` to be one that the declaration `brand` made, or any that has no brand. Null
    /// is fine.
    void expectBrand(void* object, int brand) const;

    /// Notes that an instance is used. Requires: `object` is one of these, or null.
    void use(void* object) const;

    /// Notes that a further instance is made of `object`, one that owns it too if `isOwner`.
    void shareWith(void* object, bool isOwner);

    /// Notes that `object` was written to bytes, to be owned by what is read if `isTransfer`.
    void write(void* object, bool isTransfer);

    /// Returns whether `object` is one of these.
    bool contains(const void* object) const;

    /// Weakens what is expected of all: a script has taken the finaliser away.
    void allowLeaks() { m_mayLeak = true; }

    bool mayLeak() const { return m_mayLeak; }

    /// Compares with what is expected, at the end of the run.
    void check() const;

private:
    std::deque<HostObject> m_objects;
    std::unordered_set<const void*> m_addresses; // of them: scripts may make very many
    bool m_mayLeak = false;
};

} // namespace tbScripts::fuzz

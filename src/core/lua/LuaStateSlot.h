#pragma once

// One interpreter state with everything that its users have to agree on.
//
// References, views, host functions, user types and namespaces can all outlive the state that they
// belong to, so none of them stores a `lua_State*`. They hold a `LuaStateHandle`, which points to
// the state's one slot (docs/decisions/0001-state-handle.md). The slot keeps these promises:
//
// - Life. A slot is created without state, opens once and closes once. From the first step of
//   closing on, no operation returns the state any more: finalisers that run inside `lua_close`
//   already find none. A teardown may precede the closing; then only upkeep may enter.
// - The running thread. Inside a host function that a coroutine has called, the host works on that
//   coroutine (docs/decisions/0004-host-calls-on-the-running-coroutine.md). `enterCallback` and
//   `leaveCallback` set and reset the thread together with the scope that lends views.
// - Host calls. `enterHostCall` and `leaveHostCall` count them. What must not happen while one runs
//   is deferred, and the end of the outermost call runs it.
// - Registry. Scripts can replace every global, and `debug.getregistry` lets them write to the
//   registry, so the values that the library needs later are stored under integer keys that only
//   this class knows.

#include "core/Counted.h"
#include "core/lua/LuaApi.h"
#include "core/lua/LuaKeptObject.h"
#include "core/lua/LuaLeafTypes.h"
#include "core/lua/LuaReportedNames.h"
#include "core/lua/LuaTypeDirectory.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tbScripts::lua
{

class LuaCallbackScope;

/// Registry slots of ours that wait for the next value: storing a value there is one call of the
/// interpreter, and finding a slot takes six. They hold a number as all free slots do, but are on
/// nobody else's list (docs/decisions/0016-reusing-registry-slots.md).
struct LuaSpareKeys
{
    static constexpr std::size_t CAPACITY = 16;
    static constexpr int PLACEHOLDER = 0;

    std::array<int, CAPACITY> keys{};
    std::size_t count = 0;
    unsigned freed = 0; // how many values have been released in this way or another
};

/// The thread and the scope that a callback replaces while it runs.
struct LuaOuterCallback
{
    lua_State* thread;
    LuaCallbackScope* scope;
};

/// Where on the stack the outermost host call and the innermost one began (see LuaStackRoom.h).
struct LuaCallPlaces
{
    std::uintptr_t outermost = 0;
    std::uintptr_t innermost = 0;
};

class LuaStateSlot : public HolderCount
{
public:
    /// Called when the last handle lets go.
    static void destroy(LuaStateSlot* slot) noexcept;

    // Life

    /// Creates a state with the standard libraries. Returns false if there is no memory for it.
    ///
    /// Requires: the slot never had a state.
    bool open();

    /// Closes the state. Errors that finalisers raise are lost. Kept objects are released, then
    /// deferred actions run. Does nothing if there is no state.
    ///
    /// Requires: something else holds the slot.
    void close();

    bool isOpen() const { return m_main != nullptr; }

    /// Returns whether finalisers run inside the closing of the state.
    bool isClosing() const { return m_isClosing; }

    /// Returns whether blocks of the interpreter may be touched: also while the state closes.
    bool hasMemory() const { return m_main || m_isClosing; }

    /// From here on operations of the host are refused; only upkeep may enter.
    void beginTeardown() { m_restrictions.isTearingDown = 1; }

    bool isTearingDown() const { return m_restrictions.isTearingDown != 0; }

    /// Returns whether operations have to ask what they may: during teardown, and while compiled
    /// script code runs a leaf.
    bool isRestricted() const
    {
        std::uint64_t restrictions = 0; // in one look
        static_assert(sizeof(restrictions) == sizeof(m_restrictions));
        std::memcpy(&restrictions, &m_restrictions, sizeof(restrictions));
        return restrictions != 0;
    }

    /// Keeps `object` until the state has closed.
    void keepUntilClosed(std::shared_ptr<LuaKeptObject> object) { m_kept.add(std::move(object)); }

    // The thread that runs

    /// Returns the thread that host calls work on; null once the state closes. The interpreter's
    /// calls have to work on the thread that runs: its collector would not see them on another.
    lua_State* getRunning() const { return m_running; }

    bool isMainThread(const lua_State* thread) const { return thread == m_main; }

    /// Returns the scope of the host function that runs, null if none does.
    LuaCallbackScope* getInnermostCallback() const { return m_innermostCallback; }

    /// Makes host calls work on `thread`, on behalf of `scope`. A closing state stays closed.
    LuaOuterCallback enterCallback(LuaCallbackScope& scope, lua_State* thread)
    {
        const LuaOuterCallback outer{m_running, m_innermostCallback};
        m_innermostCallback = &scope;
        if (m_running)
            m_running = thread;
        return outer;
    }

    /// Undoes the `enterCallback` that returned `outer`. Callbacks leave in the reverse order.
    void leaveCallback(const LuaOuterCallback& outer)
    {
        m_innermostCallback = outer.scope;
        if (m_running)
            m_running = outer.thread;
    }

    // Host calls

    /// Counts one more host call. Returns how many were open before.
    unsigned enterHostCall() { return m_hostCalls++; }

    /// Undoes one `enterHostCall`. The end of the outermost call runs the deferred actions, which
    /// may release this slot.
    void leaveHostCall()
    {
        if (--m_hostCalls == 0 && !m_deferred.empty())
            runDeferred();
    }

    bool isInHostCall() const { return m_hostCalls > 0; }

    bool isInOutermostHostCall() const { return m_hostCalls == 1; }

    /// Returns where on the stack host calls began.
    const LuaCallPlaces& getPlaces() const { return m_places; }

    void setPlaces(const LuaCallPlaces& places) { m_places = places; }

    /// Returns whether code of scripts or finalisers may be on the C stack.
    bool isRunning() const { return isInHostCall() || m_isClosing; }

    /// Defers `action` until the outermost host call returns, or until the state has closed.
    void defer(std::function<void()> action) { m_deferred.push_back(std::move(action)); }

    /// Runs what was deferred, in order, and what that defers. This may release the slot.
    void runDeferred();

    // What the registry holds

    /// Returns how many registry slots can be reused (see LuaRegistry.h).
    std::size_t countSpareKeys() const { return m_spareKeys.count; }

    /// Counts the values that the host has released.
    unsigned countFreedKeys() const { return m_spareKeys.freed; }

    /// Stack: +1, the interpreter's own `rawget`.
    void pushRawget(lua_State* state) const { _pushRegistered(state, m_rawgetKey); }

    /// Stack: +1, the interpreter's own `type`.
    void pushType(lua_State* state) const { _pushRegistered(state, m_typeKey); }

    /// Stack: +1, the function that `LuaBoundary` calls protected.
    void pushTrampoline(lua_State* state) const { _pushRegistered(state, m_trampolineKey); }

    /// Stack: +1, the weak table of the tables of user types and namespaces (see LuaNamedTables.h).
    void pushTypeTables(lua_State* state) const { _pushRegistered(state, m_typeTablesKey); }

    /// Stack: +1, the main thread.
    void pushMainThread(lua_State* state) const { _pushRegistered(state, m_mainThreadKey); }

    /// Stack: +1, the global table of the main thread, whichever thread runs.
    void pushGlobals(lua_State* state) const;

    // Types by their tables

    /// Registers `table` as the table of the existing type `type`, which stays until `removeType`.
    void addType(const void* table, const LuaTypeIdentity& type) { m_types.add(table, type); }

    /// Removes `table`, of whatever type. Allocates nothing.
    void forgetType(const void* table)
    {
        m_types.forget(table);
        m_leafTypes.forgetTable(table);
    }

    /// Removes `table`, unless it is registered for another type. Allocates nothing.
    void removeType(const void* table, const LuaTypeIdentity& type)
    {
        m_types.remove(table, type);
        if (!m_types.find(table))
            m_leafTypes.forgetTable(table);
    }

    /// Returns the existing type that `table` belongs to, null if there is none.
    const LuaTypeIdentity* findIdentity(const void* table) const { return m_types.find(table); }

    /// Returns its name.
    const tbMemory::String* findType(const void* table) const
    {
        const LuaTypeIdentity* const type = m_types.find(table);
        return type ? &type->fullName : nullptr;
    }

    /// Makes `type` the one that objects of the host's type `id` are passed as.
    void bindType(const typed::TypeId& id, const LuaTypeIdentity& type)
    {
        m_boundTypes.add(&id, type);
    }

    /// Ends that, if it is so.
    void unbindType(const typed::TypeId& id, const LuaTypeIdentity& type)
    {
        m_boundTypes.remove(&id, type);
        if (!m_boundTypes.find(&id))
            m_leafTypes.forgetType(id);
    }

    /// Returns the type that objects of the host's type `id` are passed as, null if there is none.
    const LuaTypeIdentity* findBoundType(const typed::TypeId& id) const
    {
        return m_boundTypes.find(&id);
    }

    /// Declares the values of the host's enumeration `id`, in place of earlier ones.
    void setEnumValues(const typed::TypeId& id, std::vector<double> values)
    {
        m_enums[&id] = std::move(values);
    }

    /// Returns whether `value` without fraction is one of `id`; true if none are declared.
    bool isEnumValue(const typed::TypeId& id, double value) const;

    /// Lists the registry slot `key`, which holds the parts of an existing type (see
    /// LuaTypeTable.h).
    void addTypeParts(int key) { m_typeParts.push_back(key); }

    void removeTypeParts(int key)
    {
        m_typeParts.erase(
            std::remove(m_typeParts.begin(), m_typeParts.end(), key), m_typeParts.end());
    }

    const std::vector<int>& getTypeParts() const { return m_typeParts; }

    // Leaves (docs/decisions/0034-compiled-leaves.md)

    /// Returns whether compiled script code runs a leaf. It has set nothing up, so the interpreter
    /// must not be touched until the leaf has returned.
    bool isInLeaf() const { return m_restrictions.leaf.running != 0; }

    /// Counts the leaves that run.
    typed::LeafGuard& getLeafGuard() { return m_restrictions.leaf; }

    /// Returns the registry slot of what all leaves share; `LUA_NOREF` before the first one,
    /// `LUA_REFNIL` if there can be none.
    int& getLeafKey() { return m_leafKey; }

    /// The types that leaves expect.
    LuaLeafTypes& getLeafTypes() { return m_leafTypes; }

    /// Returns true for the first question inside the running leaf, which is to be reported;
    /// reporting may lead to others.
    bool beginRefusal() { return !std::exchange(m_isRefusing, true); }

    void endRefusal() { m_isRefusing = false; }

    /// Notes that hosts are told of `typeName`, which nobody declared. Returns false if they have
    /// been told already. Allocates nothing.
    bool reportType(const tbMemory::StringView& typeName) { return m_reportedTypes.add(typeName); }

private:
    friend int takeRegistrySlot(LuaStateSlot& slot, lua_State* state);
    friend void giveRegistrySlotBack(LuaStateSlot& slot, lua_State* state, int key);

    // Side by side, so that one look serves both questions. Compiled code knows the address.
    struct Restrictions
    {
        typed::LeafGuard leaf{0};
        std::int32_t isTearingDown = 0;
    };

    static int _furnish(lua_State* state);

    static void _pushRegistered(lua_State* state, int key)
    {
        lua_rawgeti(state, LUA_REGISTRYINDEX, key);
    }

    // Both are null without state and from the first step of closing on.
    lua_State* m_main = nullptr;
    lua_State* m_running = nullptr;

    int m_mainThreadKey = LUA_NOREF;
    int m_trampolineKey = LUA_NOREF;
    int m_typeTablesKey = LUA_NOREF;
    int m_rawgetKey = LUA_NOREF;
    int m_typeKey = LUA_NOREF;

    LuaTypeDirectory m_types;      // the tables whose types exist
    LuaTypeDirectory m_boundTypes; // those bound by type, by the addresses of their identities
    std::unordered_map<const typed::TypeId*, std::vector<double>> m_enums;
    std::vector<int> m_typeParts;

    LuaSpareKeys m_spareKeys; // LuaRegistry.h takes them and puts them back

    Restrictions m_restrictions;
    LuaLeafTypes m_leafTypes;
    int m_leafKey = LUA_NOREF;

    unsigned m_hostCalls = 0; // entered and not left
    LuaCallPlaces m_places;
    bool m_isClosing = false;
    bool m_isRefusing = false; // reports an operation inside a leaf
    LuaCallbackScope* m_innermostCallback = nullptr;
    std::vector<std::function<void()>> m_deferred;
    LuaKeptObjects m_kept;

    LuaReportedNames m_reportedTypes; // names of user types that nobody declared
};

} // namespace tbScripts::lua

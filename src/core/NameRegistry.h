#pragma once

#include <tbMemory/StringView.h>

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tbScripts
{

/// Objects by exact name, owned.
template <typename T>
using OwningRegistry = std::unordered_map<std::string, std::unique_ptr<T>>;

/// Returns `name` as the key of a registry: all of its bytes.
inline std::string keyOf(const tbMemory::StringView& name)
{
    return std::string(std::string_view(name));
}

/// Returns the object registered under `name`, null if there is none.
template <typename T>
T* findIn(const OwningRegistry<T>& registry, const tbMemory::StringView& name)
{
    const auto known = registry.find(keyOf(name));
    return known == registry.end() ? nullptr : known->second.get();
}

/// The same for a registry that does not own its objects.
template <typename T>
T* findIn(const std::unordered_map<std::string, T*>& registry, const tbMemory::StringView& name)
{
    const auto known = registry.find(keyOf(name));
    return known == registry.end() ? nullptr : known->second;
}

} // namespace tbScripts

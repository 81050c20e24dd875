#include "demo/VecStore.h"

#include <utility>

namespace demo
{

Vec* VecStore::make(const Vec& value)
{
    auto made = std::make_unique<Vec>(value);
    Vec* const vec = made.get();
    m_vecs.emplace(vec, std::move(made));
    ++m_made;
    return vec;
}

void VecStore::destroy(void* vec)
{
    m_vecs.erase(vec);
    ++m_destroyed;
}

Vec* VecStore::find(void* vec) const
{
    const auto place = m_vecs.find(vec);
    return place == m_vecs.end() ? nullptr : place->second.get();
}

} // namespace demo

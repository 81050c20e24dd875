// The one place where the JSON library is compiled: it becomes a part of this one and is hidden
// with the rest of its inside.

#include <boost/json/src.hpp>

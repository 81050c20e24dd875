#include "tbExport/Exportable.h"

namespace tbExport
{

// Here, so that the class has one virtual table in the process.
Exportable::~Exportable() = default;

} // namespace tbExport

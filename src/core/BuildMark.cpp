#include "tbScripts/BuildMark.h"

#if defined(TBSCRIPTS_CONTAINER_MARK)

namespace tbScripts::buildMark
{

// Only their addresses count.
const char TBSCRIPTS_CONTAINER_MARK = 0;
const char TBSCRIPTS_STRING_MARK = 0;

} // namespace tbScripts::buildMark

#endif

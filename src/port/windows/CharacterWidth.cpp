#include "port/CharacterWidth.h"

namespace tbScripts::port
{

int characterWidth(char32_t /*codePoint*/)
{
    return -1; // the consoles of the system differ, and no function tells
}

} // namespace tbScripts::port

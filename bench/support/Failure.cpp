#include "support/Failure.h"

#include <cstdlib>
#include <iostream>

namespace bench
{

void fail(const std::string& reason)
{
    std::cerr << "benchmark: " << reason << '\n';
    std::exit(EXIT_FAILURE);
}

} // namespace bench

#include "growth/GrowthRows.h"

namespace bench
{

GrowthRowList makeGrowthRows(bool isSmoke)
{
    const GrowthScale full{{1, 100, 10'000}, {1'000, 10'000, 100'000, 1'000'000}, 200'000, 100};
    const GrowthScale smoke{{1, 10}, {10, 100}, 100, 10};
    const GrowthScale& scale = isSmoke ? smoke : full;

    GrowthRowList rows;
    addDeclarationGrowth(rows, scale);
    addRegistryGrowth(rows, scale);
    addEntityGrowth(rows, scale);
    return rows;
}

} // namespace bench

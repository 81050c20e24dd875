#include "growth/GrowthRows.h"
#include "rows/EntityTables.h"

// Tables turned into bytes and back: the time for each entity in it. The interpreter's own library
// shows what its memory management adds to large tables, whoever makes them.

namespace bench
{

namespace
{

using MakeVariant = Variant (*)(BYTES_WORK work, std::size_t entities);

GrowthRow makeRow(const char* name, MakeVariant make, BYTES_WORK work, const GrowthScale& scale)
{
    return {
        name,
        "entities",
        scale.entityCounts,
        0,
        true,
        [make, work](std::size_t entities, std::size_t /*operations*/)
        {
            Variant variant = make(work, entities);
            // The runner compares results; here they would be different numbers of entities.
            return Variant{
                [run = variant.run]
                {
                    run();
                    return 1.0;
                },
                variant.prepare};
        }};
}

} // namespace

void addEntityGrowth(GrowthRowList& rows, const GrowthScale& scale)
{
    rows.push_back(makeRow("table written", &makeLibraryVariant, BYTES_WORK::WRITE, scale));
    rows.push_back(makeRow("table read", &makeLibraryVariant, BYTES_WORK::READ, scale));
    rows.push_back(
        makeRow("written by string.buffer", &makeStringBufferVariant, BYTES_WORK::WRITE, scale));
    rows.push_back(
        makeRow("read by string.buffer", &makeStringBufferVariant, BYTES_WORK::READ, scale));
}

} // namespace bench

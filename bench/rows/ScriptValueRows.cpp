#include "rows/EntityTables.h"
#include "rows/Rows.h"

namespace bench
{

namespace
{

constexpr std::size_t ENTITIES = 100'000;
constexpr std::size_t ENTITIES_IN_SMOKE = 200;

Row makeRow(const char* name, BYTES_WORK work, double goalAgainstPeer)
{
    return {
        "Values as bytes, per entity",
        name,
        {{RIVAL_KIND::PEER, "lua-cjson", goalAgainstPeer},
         {RIVAL_KIND::LIMIT, "string.buffer", 0.0}},
        ENTITIES,
        ENTITIES_IN_SMOKE,
        [work](std::size_t entities)
        {
            return std::vector<Variant>{
                makeLibraryVariant(work, entities),
                makeCjsonVariant(work, entities),
                makeStringBufferVariant(work, entities)};
        }};
}

} // namespace

void addScriptValueRows(RowList& rows)
{
    rows.push_back(makeRow("table written and read", BYTES_WORK::BOTH, 0.5));
    rows.push_back(makeRow("table written", BYTES_WORK::WRITE, 0.0));
    rows.push_back(makeRow("table read", BYTES_WORK::READ, 0.0));
}

} // namespace bench

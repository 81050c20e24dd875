#include "report/JsonReport.h"

#include <tbExport/JsonExporter.h>
#include <tbExport/Node.h>

namespace bench
{

namespace
{

using tbExport::Node;

Node& addObject(Node& array)
{
    Node* const object = array.addElement();
    object->setObject();
    return *object;
}

Node& addArray(Node& object, const char* name)
{
    Node* const array = object.addMember(name);
    array->setArray();
    return *array;
}

void addText(Node& object, const char* name, const std::string& text)
{
    object.addMember(name)->setString(text.c_str());
}

void addNumber(Node& object, const char* name, double number)
{
    object.addMember(name)->setNumber(number);
}

void addTiming(Node& object, const char* name, const Timing& timing)
{
    Node* const node = object.addMember(name);
    node->setObject();
    addNumber(*node, "median", timing.median);
    Node& repetitions = addArray(*node, "repetitions");
    for (const double repetition : timing.repetitions)
        repetitions.addElement()->setNumber(repetition);
}

const char* kindText(RIVAL_KIND kind)
{
    switch (kind)
    {
    case RIVAL_KIND::BINDING:
        return "binding";
    case RIVAL_KIND::LIMIT:
        return "limit";
    case RIVAL_KIND::PEER:
        return "peer";
    }
    return "";
}

void addRatio(Node& array, const RatioResult& ratio)
{
    Node& node = addObject(array);
    addText(node, "subject", ratio.subject);
    addText(node, "name", ratio.name);
    addText(node, "way", textOf(ratio.way));
    addText(node, "rival", ratio.rival.name);
    addText(node, "kind", kindText(ratio.rival.kind));
    addNumber(node, "ratio", ratio.getRatio());
    if (ratio.hasGoal())
    {
        addNumber(node, "goal", ratio.goal);
        node.addMember("isMet")->setBool(ratio.isMet());
    }
    addTiming(node, "libraryNanoseconds", ratio.library);
    addTiming(node, "rivalNanoseconds", ratio.other);
}

void addMean(Node& array, const MeanResult& mean)
{
    Node& node = addObject(array);
    addText(node, "name", mean.name);
    addNumber(node, "rows", static_cast<double>(mean.rows));
    addNumber(node, "mean", mean.mean);
    addNumber(node, "highest", mean.highest);
    addNumber(node, "goal", mean.goal);
    node.addMember("isMet")->setBool(mean.isMet());
}

void addGrowth(Node& array, const GrowthResult& growth)
{
    Node& node = addObject(array);
    addText(node, "name", growth.name);
    addText(node, "countOf", growth.countOf);
    addNumber(node, "factor", growth.getFactor());
    Node& points = addArray(node, "points");
    for (std::size_t i = 0; i < growth.counts.size(); ++i)
    {
        Node& point = addObject(points);
        addNumber(point, "count", static_cast<double>(growth.counts[i]));
        addTiming(point, "nanoseconds", growth.timings[i]);
    }
}

void addMemory(Node& array, const MemoryResult& memory)
{
    Node& node = addObject(array);
    addText(node, "name", memory.name);
    addNumber(node, "libraryBytes", memory.library);
    if (memory.otherName.empty())
        return;
    addText(node, "other", memory.otherName);
    addNumber(node, "otherBytes", memory.other);
}

} // namespace

tbMemory::String makeJsonReport(const Results& results)
{
    Node root;
    root.setObject();
    addNumber(root, "repetitions", results.repetitions);
    Node& means = addArray(root, "geometricMeans");
    for (const MeanResult& mean : results.getMeans())
        addMean(means, mean);
    Node& ratios = addArray(root, "ratios");
    for (const RatioResult& ratio : results.ratios)
        addRatio(ratios, ratio);
    Node& growth = addArray(root, "growth");
    for (const GrowthResult& line : results.growth)
        addGrowth(growth, line);
    Node& memory = addArray(root, "memory");
    for (const MemoryResult& line : results.memory)
        addMemory(memory, line);
    return tbExport::JsonExporter::exportTreeIntoString(&root);
}

} // namespace bench

// A script's declaration: an object with the strings "name", "type" and "sources".

#include "scripts/ScriptState.h"

#include "tbScripts/Script.h"
#include "tbScripts/StringUtils.h"

#include <tbExport/Node.h>

namespace tbScripts
{

namespace
{

constexpr const char* MEMBER_NAME = "name";
constexpr const char* MEMBER_TYPE = "type";
constexpr const char* MEMBER_SOURCES = "sources";

void addText(tbExport::Node& node, const char* memberName, const tbMemory::StringView& text)
{
    if (tbExport::Node* const member = node.addMember(memberName))
        member->setString(text);
}

// Null if there is no such member, or if it is no string.
const tbExport::Node* findText(const tbExport::Node& node, const char* memberName)
{
    const tbExport::Node* const member = node.getMember(memberName);
    return member && member->isString() ? member : nullptr;
}

} // namespace

void Script::exportClassToTree(tbExport::Node* node)
{
    if (!node)
        return;
    addText(*node, MEMBER_NAME, getName());
    addText(*node, MEMBER_TYPE, StringUtils::interpreterToString(m_state->targetInterpreter));
    addText(*node, MEMBER_SOURCES, m_state->sources);
}

void Script::importClassFromTree(tbExport::Node* node)
{
    if (!node)
        return;
    if (const tbExport::Node* const type = findText(*node, MEMBER_TYPE))
        setTargetInterpreter(StringUtils::stringToInterpreter(type->getString()));
    if (const tbExport::Node* const sources = findText(*node, MEMBER_SOURCES))
        setSources(sources->getString());
}

} // namespace tbScripts

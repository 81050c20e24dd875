#include "JsonTree.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <cstddef>
#include <new>
#include <utility>
#include <vector>

namespace tbExport::json
{

namespace
{

static_assert(sizeof(Node) == sizeof(value));
static_assert(alignof(Node) == alignof(value));

// The library copies and destroys by recursion. So many levels of it fit on any C stack.
constexpr int SHALLOW = 64;

/// Whether the tree has at most `levels` levels of arrays and objects.
bool isWithin(const value& tree, int levels) noexcept
{
    if (!hasChildren(tree))
        return true;
    if (levels == 0)
        return false;
    if (const array* elements = tree.if_array())
    {
        for (const value& element : *elements)
        {
            if (!isWithin(element, levels - 1))
                return false;
        }
        return true;
    }
    for (const key_value_pair& member : tree.get_object())
    {
        if (!isWithin(member.value(), levels - 1))
            return false;
    }
    return true;
}

/// The last element or member of a value that has children.
value& lastChild(value& tree) noexcept
{
    if (array* elements = tree.if_array())
        return elements->back();
    return (tree.get_object().end() - 1)->value();
}

void removeLastChild(value& tree) noexcept
{
    if (array* elements = tree.if_array())
        elements->pop_back();
    else
        tree.get_object().erase(tree.get_object().end() - 1);
}

struct CopyStep
{
    value* to; // null still
    const value* from;
};

void copyElements(const CopyStep& step, std::vector<CopyStep>& pending)
{
    const array& from = step.from->get_array();
    array& to = step.to->emplace_array();
    to.resize(from.size()); // before addresses are taken
    for (std::size_t index = 0; index < from.size(); ++index)
        pending.push_back({&to[index], &from[index]});
}

void copyMembers(const CopyStep& step, std::vector<CopyStep>& pending)
{
    const object& from = step.from->get_object();
    object& to = step.to->emplace_object();
    to.reserve(from.size()); // before addresses are taken
    for (const key_value_pair& member : from)
        pending.push_back({&to.emplace(member.key(), nullptr).first->value(), &member.value()});
}

} // namespace

value& valueOf(Node& node) noexcept
{
    return *std::launder(reinterpret_cast<value*>(&node));
}

const value& valueOf(const Node& node) noexcept
{
    return *std::launder(reinterpret_cast<const value*>(&node));
}

Node* nodeOf(value* inside) noexcept
{
    return reinterpret_cast<Node*>(inside);
}

const Node* nodeOf(const value* inside) noexcept
{
    return reinterpret_cast<const Node*>(inside);
}

bool hasChildren(const value& tree) noexcept
{
    if (const array* elements = tree.if_array())
        return !elements->empty();
    const object* members = tree.if_object();
    return members != nullptr && !members->empty();
}

void copyTree(value& to, const value& from)
{
    if (isWithin(from, SHALLOW))
    {
        to = from;
        return;
    }

    std::vector<CopyStep> pending = {{&to, &from}};
    while (!pending.empty())
    {
        const CopyStep step = pending.back();
        pending.pop_back();
        if (step.from->is_array())
            copyElements(step, pending);
        else if (step.from->is_object())
            copyMembers(step, pending);
        else
            *step.to = *step.from;
    }
}

void dismantle(value& tree) noexcept
{
    if (isWithin(tree, SHALLOW))
        return;

    // Down to the last child of the last child and so on, taking each one out of its parent. What
    // lies above `current` hangs together: the place that each child left holds the parent's own
    // parent.
    value current = std::move(tree);
    value above; // null at the top
    for (;;)
    {
        if (!hasChildren(current))
        {
            if (above.is_null())
                return;
            current = std::move(above);
            above = std::move(lastChild(current));
            removeLastChild(current);
        }
        else if (hasChildren(lastChild(current)))
        {
            value child = std::move(lastChild(current));
            lastChild(current) = std::move(above);
            above = std::move(current);
            current = std::move(child);
        }
        else
        {
            removeLastChild(current);
        }
    }
}

} // namespace tbExport::json

#include "tbExport/Node.h"

#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace tbExport
{

/// The nodes below an array or an object.
struct Node::Children
{
    // Ordered, not hashed: nobody can choose names that make the search slow.
    using Index = std::map<tbMemory::String, std::size_t, std::less<>>;

    std::vector<std::unique_ptr<Node>> nodes; // in the order of their adding
    std::vector<Index::const_iterator> names; // of an object, in step with `nodes`
    Index index;                              // of an object: name to place in `nodes`
    Children* next = nullptr;                 // see _destroy

    Node* addUnnamed()
    {
        nodes.push_back(std::make_unique<Node>());
        return nodes.back().get();
    }

    Node* addNamed(tbMemory::StringView name)
    {
        const auto found = index.find(name);
        if (found != index.end())
        {
            Node* existing = nodes[found->second].get();
            existing->setNull();
            return existing;
        }

        // Nothing may be half added when memory runs out: the entry in the index comes last.
        auto node = std::make_unique<Node>();
        nodes.reserve(_grown(nodes.size(), nodes.capacity()));
        names.reserve(_grown(names.size(), names.capacity()));
        names.push_back(index.emplace(name, nodes.size()).first);
        nodes.push_back(std::move(node));
        return nodes.back().get();
    }

private:
    /// A capacity for one more element, doubled so that adding stays cheap.
    static std::size_t _grown(std::size_t size, std::size_t capacity)
    {
        return size < capacity ? capacity : 2 * capacity + 1;
    }
};

Node::Node() = default;

Node::Node(const Node& other)
{
    struct Pair
    {
        Node* to;
        const Node* from;
    };

    // A throw below runs the destructor of `copy`, not that of this unfinished object.
    Node copy;
    std::vector<Pair> pending = {{&copy, &other}};
    while (!pending.empty())
    {
        const Pair pair = pending.back();
        pending.pop_back();
        pair.to->_copyLevel(*pair.from);
        for (std::size_t index = 0; index < pair.from->getSize(); ++index)
            pending.push_back({pair.to->getElement(index), pair.from->getElement(index)});
    }
    *this = std::move(copy);
}

Node::Node(Node&& other) noexcept
{
    *this = std::move(other);
}

Node& Node::operator=(const Node& other)
{
    if (this != &other)
        *this = Node(other);
    return *this;
}

Node& Node::operator=(Node&& other) noexcept
{
    if (this == &other)
        return *this;

    // Out of `other` first: it may be a part of what is destroyed next.
    const KIND kind = other.m_kind;
    const bool boolean = other.m_bool;
    const double number = other.m_number;
    tbMemory::String text = std::move(other.m_text);
    Children* children = std::exchange(other.m_children, nullptr);
    other._become(KIND::NOTHING);

    _become(kind);
    m_bool = boolean;
    m_number = number;
    m_text = std::move(text);
    m_children = children;
    return *this;
}

Node::~Node()
{
    _destroy(m_children);
}

bool Node::isNull() const noexcept
{
    return m_kind == KIND::NOTHING;
}

bool Node::isBool() const noexcept
{
    return m_kind == KIND::BOOL;
}

bool Node::isNumber() const noexcept
{
    return m_kind == KIND::NUMBER;
}

bool Node::isString() const noexcept
{
    return m_kind == KIND::STRING;
}

bool Node::isArray() const noexcept
{
    return m_kind == KIND::ARRAY;
}

bool Node::isObject() const noexcept
{
    return m_kind == KIND::OBJECT;
}

void Node::setNull() noexcept
{
    _become(KIND::NOTHING);
}

void Node::setBool(bool value) noexcept
{
    _become(KIND::BOOL);
    m_bool = value;
}

void Node::setNumber(double value) noexcept
{
    _become(KIND::NUMBER);
    m_number = value;
}

void Node::setString(tbMemory::StringView text)
{
    tbMemory::String copy = text; // before the old content, which may hold the bytes, goes
    _become(KIND::STRING);
    m_text = std::move(copy);
}

void Node::setArray()
{
    _become(KIND::ARRAY);
}

void Node::setObject()
{
    _become(KIND::OBJECT);
}

bool Node::getBool() const noexcept
{
    return m_bool;
}

double Node::getNumber() const noexcept
{
    return m_number;
}

tbMemory::StringView Node::getString() const noexcept
{
    return isString() ? tbMemory::StringView(m_text) : tbMemory::StringView();
}

Node* Node::addMember(tbMemory::StringView name)
{
    if (!isObject())
        return nullptr;
    if (m_children == nullptr)
        m_children = new Children();
    return m_children->addNamed(name);
}

Node* Node::getMember(tbMemory::StringView name) noexcept
{
    return const_cast<Node*>(std::as_const(*this).getMember(name));
}

const Node* Node::getMember(tbMemory::StringView name) const noexcept
{
    if (m_children == nullptr)
        return nullptr;
    const auto found = m_children->index.find(name);
    return found == m_children->index.end() ? nullptr : m_children->nodes[found->second].get();
}

tbMemory::StringView Node::getMemberName(std::size_t index) const noexcept
{
    if (!isObject() || index >= getSize())
        return tbMemory::StringView();
    return m_children->names[index]->first;
}

Node* Node::addElement()
{
    if (!isArray())
        return nullptr;
    if (m_children == nullptr)
        m_children = new Children();
    return m_children->addUnnamed();
}

Node* Node::getElement(std::size_t index) noexcept
{
    return const_cast<Node*>(std::as_const(*this).getElement(index));
}

const Node* Node::getElement(std::size_t index) const noexcept
{
    return index < getSize() ? m_children->nodes[index].get() : nullptr;
}

std::size_t Node::getSize() const noexcept
{
    return m_children == nullptr ? 0 : m_children->nodes.size();
}

void Node::_become(KIND kind) noexcept
{
    // Taken off first: the node is already what it becomes when the old tree is destroyed.
    Children* old = std::exchange(m_children, nullptr);
    m_kind = kind;
    m_bool = false;
    m_number = 0.0;
    m_text = tbMemory::String(); // not clear(): a long text must not keep its storage
    _destroy(old);
}

void Node::_copyLevel(const Node& other)
{
    _become(other.m_kind);
    m_bool = other.m_bool;
    m_number = other.m_number;
    m_text = other.m_text;
    for (std::size_t index = 0; index < other.getSize(); ++index)
    {
        if (isObject())
            addMember(other.getMemberName(index));
        else
            addElement();
    }
}

void Node::_destroy(Children* top) noexcept
{
    // The levels wait in a list that they form themselves. A recursion would overflow the C stack
    // on a deep tree, and a container of them could run out of memory here.
    Children* pending = top;
    while (pending != nullptr)
    {
        Children* current = std::exchange(pending, pending->next);
        for (const std::unique_ptr<Node>& node : current->nodes)
        {
            if (Children* below = std::exchange(node->m_children, nullptr))
            {
                below->next = pending;
                pending = below;
            }
        }
        delete current;
    }
}

} // namespace tbExport

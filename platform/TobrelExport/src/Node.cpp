#include "tbExport/Node.h"

#include "JsonTree.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/string.hpp>

#include <new>
#include <utility>

namespace tbExport
{

using json::value;
using json::valueOf;

namespace
{

/// What `node` becomes next: nothing of the old content is left, the tree below included.
void become(Node& node, value next) noexcept
{
    // Taken out first: the node is already what it becomes when the old tree is destroyed.
    value old = std::exchange(valueOf(node), std::move(next));
    json::dismantle(old);
}

boost::json::string_view libraryView(tbMemory::StringView text)
{
    // The library would report a length, but it is memory that nobody has.
    if (text.size() > boost::json::string::max_size())
        throw std::bad_alloc();
    return text.isNull() ? boost::json::string_view("")
                         : boost::json::string_view(text.data(), text.size());
}

tbMemory::StringView familyView(boost::json::string_view text) noexcept
{
    return {text.data(), text.size()};
}

} // namespace

Node::Node()
{
    new (m_value) value();
}

Node::Node(const Node& other)
    : Node()
{
    // A throw below runs the destructor: the delegation above has made this a whole object.
    json::copyTree(valueOf(*this), valueOf(other));
}

Node::Node(Node&& other) noexcept
{
    new (m_value) value(std::move(valueOf(other)));
}

Node& Node::operator=(const Node& other)
{
    if (this != &other)
        *this = Node(other);
    return *this;
}

Node& Node::operator=(Node&& other) noexcept
{
    // Out of `other` first: it may be a part of what is destroyed.
    if (this != &other)
        become(*this, std::move(valueOf(other)));
    return *this;
}

Node::~Node()
{
    json::dismantle(valueOf(*this));
    valueOf(*this).~value();
}

bool Node::isNull() const noexcept
{
    return valueOf(*this).is_null();
}

bool Node::isBool() const noexcept
{
    return valueOf(*this).is_bool();
}

bool Node::isNumber() const noexcept
{
    return valueOf(*this).is_number();
}

bool Node::isString() const noexcept
{
    return valueOf(*this).is_string();
}

bool Node::isArray() const noexcept
{
    return valueOf(*this).is_array();
}

bool Node::isObject() const noexcept
{
    return valueOf(*this).is_object();
}

void Node::setNull() noexcept
{
    become(*this, value());
}

void Node::setBool(bool value) noexcept
{
    become(*this, json::value(value));
}

void Node::setNumber(double value) noexcept
{
    become(*this, json::value(value));
}

void Node::setString(tbMemory::StringView text)
{
    // The copy is made before the old content, which may hold the bytes, is destroyed.
    become(*this, value(boost::json::string(libraryView(text))));
}

void Node::setArray()
{
    become(*this, value(json::array()));
}

void Node::setObject()
{
    become(*this, value(json::object()));
}

bool Node::getBool() const noexcept
{
    const bool* found = valueOf(*this).if_bool();
    return found != nullptr && *found;
}

double Node::getNumber() const noexcept
{
    const value& number = valueOf(*this);
    switch (number.kind())
    {
    case boost::json::kind::int64:
        return static_cast<double>(number.get_int64());
    case boost::json::kind::uint64:
        return static_cast<double>(number.get_uint64());
    case boost::json::kind::double_:
        return number.get_double();
    default:
        return 0.0;
    }
}

tbMemory::StringView Node::getString() const noexcept
{
    const boost::json::string* text = valueOf(*this).if_string();
    return text == nullptr ? tbMemory::StringView() : familyView(*text);
}

Node* Node::addMember(tbMemory::StringView name)
{
    json::object* members = valueOf(*this).if_object();
    if (members == nullptr)
        return nullptr;
    if (Node* existing = getMember(name))
    {
        existing->setNull();
        return existing;
    }

    // Made before the members move: the name may be the text of one of them.
    json::key_value_pair member(libraryView(name), nullptr);
    return json::nodeOf(&members->insert(std::move(member)).first->value());
}

Node* Node::getMember(tbMemory::StringView name) noexcept
{
    return const_cast<Node*>(std::as_const(*this).getMember(name));
}

const Node* Node::getMember(tbMemory::StringView name) const noexcept
{
    const json::object* members = valueOf(*this).if_object();
    if (members == nullptr || name.size() > boost::json::string::max_size())
        return nullptr;
    return json::nodeOf(members->if_contains(libraryView(name)));
}

tbMemory::StringView Node::getMemberName(std::size_t index) const noexcept
{
    const json::object* members = valueOf(*this).if_object();
    if (members == nullptr || index >= members->size())
        return tbMemory::StringView();
    return familyView(members->begin()[index].key());
}

Node* Node::addElement()
{
    json::array* elements = valueOf(*this).if_array();
    return elements == nullptr ? nullptr : json::nodeOf(&elements->emplace_back(nullptr));
}

Node* Node::getElement(std::size_t index) noexcept
{
    return const_cast<Node*>(std::as_const(*this).getElement(index));
}

const Node* Node::getElement(std::size_t index) const noexcept
{
    if (index >= getSize())
        return nullptr;
    if (const json::array* elements = valueOf(*this).if_array())
        return json::nodeOf(&(*elements)[index]);
    return json::nodeOf(&valueOf(*this).get_object().begin()[index].value());
}

std::size_t Node::getSize() const noexcept
{
    if (const json::array* elements = valueOf(*this).if_array())
        return elements->size();
    const json::object* members = valueOf(*this).if_object();
    return members == nullptr ? 0 : members->size();
}

} // namespace tbExport

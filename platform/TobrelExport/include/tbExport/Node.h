#pragma once

#include "tbExport/Api.h"

#include <tbMemory/StringView.h>

#include <cstddef>

namespace tbExport
{

/// One value of a JSON tree: null, bool, number, string, array or object.
///
/// A node owns the nodes below it. They are destroyed when its kind is set again or the node is
/// destroyed. Adding an element or a member may move its siblings: pointers to them, and views of
/// their strings, are valid until then. Nodes below the moved ones keep their addresses.
///
/// Trees of any depth are copied and destroyed without deep recursion. A string or a name has at
/// most 2^31 - 2 bytes; a longer one is refused as if there were no memory for it.
///
/// A member is found by a hash of its name that is salted with an address. That spreads
/// all usual names, but it is not cryptographic: an attacker can construct an object whose members
/// are slow to add.
class TBEXPORT_API Node
{
public:
    /// Creates a null node.
    Node();

    /// Creates a copy of the whole tree below `other`.
    Node(const Node& other);

    /// Takes the tree and leaves `other` null.
    Node(Node&& other) noexcept;

    /// `other` may be a part of this tree, or this a part of it.
    Node& operator=(const Node& other);

    /// Leaves `other` null. `other` may be a part of this tree, which is destroyed with the rest of
    /// it; this node must not be a part of `other`.
    Node& operator=(Node&& other) noexcept;

    ~Node();

    bool isNull() const noexcept;
    bool isBool() const noexcept;
    bool isNumber() const noexcept;
    bool isString() const noexcept;
    bool isArray() const noexcept;
    bool isObject() const noexcept;

    // Each of these sets the kind and drops the old content, also if the node has that kind
    // already.

    void setNull() noexcept;
    void setBool(bool value) noexcept;
    void setNumber(double value) noexcept;

    /// Keeps every byte. `text` may view this node's own string or that of a node below it.
    void setString(tbMemory::StringView text);

    /// Creates an array without elements.
    void setArray();

    /// Creates an object without members.
    void setObject();

    /// The bool; false for a node of another kind.
    bool getBool() const noexcept;

    /// The number; 0 for a node of another kind. An integer of a document keeps its digits, up
    /// to 64 bits, in the tree; here it is the nearest double.
    double getNumber() const noexcept;

    /// The string; a null view for a node of another kind.
    ///
    /// Valid until: the node is changed, moved or destroyed.
    tbMemory::StringView getString() const noexcept;

    /// Adds a null member; one that exists already is set to null and keeps its place. `name` may
    /// view a string of this tree.
    ///
    /// On failure: null, if this is no object.
    Node* addMember(tbMemory::StringView name);

    /// The member of that name; null if there is none or this is no object.
    Node* getMember(tbMemory::StringView name) noexcept;
    const Node* getMember(tbMemory::StringView name) const noexcept;

    /// The name of the member that was added as number `index`; a null view if there is none or
    /// this is no object.
    ///
    /// Valid until: the node's kind is set or the node is destroyed.
    tbMemory::StringView getMemberName(std::size_t index) const noexcept;

    /// Adds a null element at the end.
    ///
    /// On failure: null, if this is no array.
    Node* addElement();

    /// An array's element or, in the order of their adding, an object's member; null if `index` is
    /// too large or this is neither.
    Node* getElement(std::size_t index) noexcept;
    const Node* getElement(std::size_t index) const noexcept;

    /// The count of elements or members; 0 for a node of another kind.
    std::size_t getSize() const noexcept;

private:
    // One value of the JSON library, whose headers only the sources include. There must be no other
    // member: the values inside of arrays and objects are nodes too.
    alignas(8) unsigned char m_value[2 * sizeof(void*) + 8];
};

} // namespace tbExport

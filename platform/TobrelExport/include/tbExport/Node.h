#pragma once

#include "tbExport/Api.h"

#include <tbMemory/StringView.h>

#include <cstddef>

namespace tbExport
{

/// One value of a JSON tree: null, bool, number, string, array or object.
///
/// A node owns the nodes below it. They are gone when its kind is set again or it dies. Adding an
/// element or a member may move those beside it: pointers to them, and views of their texts, are
/// good until then. What lies below the moved ones stays at its address.
///
/// Trees of any depth are copied and destroyed without deep recursion. A text or a name has at most
/// 2^31 - 2 bytes; a longer one is refused like one for which there is no memory.
///
/// A member is found by a hash of its name that is salted with an address. That spreads any names
/// that come along, but it is not cryptographic: who knows how and wants it badly enough can make
/// up an object whose members are slow to add.
class TBEXPORT_API Node
{
public:
    /// Makes a null node.
    Node();

    /// Makes a copy of the whole tree below `other`.
    Node(const Node& other);

    /// Takes the tree over and leaves `other` null.
    Node(Node&& other) noexcept;

    /// `other` may be a part of this tree, or this a part of it.
    Node& operator=(const Node& other);

    /// Leaves `other` null. It may be a part of this tree, which ends with the rest of it; this
    /// must not be a part of it.
    Node& operator=(Node&& other) noexcept;

    ~Node();

    bool isNull() const noexcept;
    bool isBool() const noexcept;
    bool isNumber() const noexcept;
    bool isString() const noexcept;
    bool isArray() const noexcept;
    bool isObject() const noexcept;

    // Each of these sets the kind, also where the node has it already: what it held is dropped.

    void setNull() noexcept;
    void setBool(bool value) noexcept;
    void setNumber(double value) noexcept;

    /// Keeps every byte. `text` may view this node's own text or that of a node below it.
    void setString(tbMemory::StringView text);

    /// Makes an array without elements.
    void setArray();

    /// Makes an object without members.
    void setObject();

    /// The bool; false for a node of another kind.
    bool getBool() const noexcept;

    /// The number; 0 for a node of another kind. An integer of a document keeps its digits, up
    /// to 64 bits, in the tree; here it is the nearest double.
    double getNumber() const noexcept;

    /// The text; a null view for a node of another kind.
    ///
    /// Valid until: the node is changed, moves or dies.
    tbMemory::StringView getString() const noexcept;

    /// Adds a null member; one that exists already is set to null and keeps its place. `name` may
    /// view a text of this tree.
    ///
    /// On failure: null, if this is no object.
    Node* addMember(tbMemory::StringView name);

    /// The member of that name; null if there is none or this is no object.
    Node* getMember(tbMemory::StringView name) noexcept;
    const Node* getMember(tbMemory::StringView name) const noexcept;

    /// The name of the member that was added as number `index`; a null view if there is none or
    /// this is no object.
    ///
    /// Valid until: the node's kind is set or it dies.
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
    // One value of the JSON library, which is seen by the sources alone. Nothing may be added: the
    // values inside of arrays and objects are nodes too.
    alignas(8) unsigned char m_value[2 * sizeof(void*) + 8];
};

} // namespace tbExport

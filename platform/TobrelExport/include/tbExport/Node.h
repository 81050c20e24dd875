#pragma once

#include "tbExport/Api.h"

#include <tbMemory/String.h>
#include <tbMemory/StringView.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tbExport
{

/// One value of a JSON tree: null, bool, number, string, array or object.
///
/// A node owns the nodes below it. They keep their addresses as long as it lives and its kind is
/// not set again. Trees of any depth are copied and destroyed without recursion.
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

    /// The number; 0 for a node of another kind.
    double getNumber() const noexcept;

    /// The text; a null view for a node of another kind.
    ///
    /// Valid until: the node is changed or dies.
    tbMemory::StringView getString() const noexcept;

    /// Adds a null member; one that exists already is set to null and keeps its place.
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
    enum class KIND : std::int32_t
    {
        NOTHING,
        BOOL,
        NUMBER,
        STRING,
        ARRAY,
        OBJECT
    };

    struct Children;

    /// What the node becomes next: nothing of the old content is left, the tree below included.
    void _become(KIND kind) noexcept;

    /// Copies one level; the nodes below the copies are still to be copied.
    void _copyLevel(const Node& other);

    /// Destroys the whole tree below `top`.
    static void _destroy(Children* top) noexcept;

    KIND m_kind = KIND::NOTHING;
    bool m_bool = false;
    double m_number = 0.0;
    tbMemory::String m_text;
    Children* m_children = nullptr; // owned; null unless an array or object, and in those that
                                    // hold nothing yet
};

} // namespace tbExport

#pragma once

#include "tbExport/Api.h"

namespace tbExport
{

class Node;

/// An object that can write itself into a tree and read itself back.
///
/// The order of the virtual operations is part of the interface.
class TBEXPORT_API Exportable
{
public:
    virtual ~Exportable();

    /// Adds this object's members to `node`, an object node that the caller supplies.
    virtual void exportClassToTree(Node* node) = 0;

    /// Takes this object's members from `node`.
    virtual void importClassFromTree(Node* node) = 0;

protected:
    Exportable() = default;
    Exportable(const Exportable&) = default;
    Exportable& operator=(const Exportable&) = default;
};

} // namespace tbExport

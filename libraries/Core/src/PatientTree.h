#pragma once

#include "DataTreeNode.h"

#include <memory>
#include <vector>

/// A patient with all that a store keeps of it: the header, which names the studies, and the body
/// of each study in the header's order.
struct PatientTree
{
    DataTreeNode header;
    std::vector<std::unique_ptr<DataTreeNode>> studies;
};

/// Whether a node's attribute of this name is one of its item's URIs.
bool isUriAttribute(const QString& name);

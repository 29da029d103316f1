#pragma once

#include "Patient.h"

namespace kelp::patients {

/// What one line below a patient stands for: a study, an item of it, or a stored item that could
/// not be read.
struct TreeNode
{
    DataPointer<Study> study;
    /// Null for the study itself and for an unreadable item.
    DataPointer<Data> item;
    QString unreadableId;

    bool isNull() const { return study.isNull(); }
    bool isStudy() const { return study && !item && unreadableId.isEmpty(); }
    bool isUnreadable() const { return !unreadableId.isEmpty(); }
};

} // namespace kelp::patients

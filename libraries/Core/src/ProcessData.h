#pragma once

#include "Data.h"

/// Base of results that are computed from data items.
class ProcessData : public Data
{
    Q_OBJECT

public:
    static _kelp::StringMixer classId();

    _kelp::StringMixer getClassId() const override;
    bool isA(const _kelp::StringMixer& classId) const override;
    using Data::doLoad;
    using Data::doSave;
    CaError doSave(DataTreeNode* node, DataSaveContext& context) override;
    CaError doLoad(DataTreeNode* node, DataLoadContext& context) override;
};

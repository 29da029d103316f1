#include "ProcessData.h"

_kelp::StringMixer ProcessData::classId()
{
    return "ProcessData";
}

_kelp::StringMixer ProcessData::getClassId() const
{
    return classId();
}

bool ProcessData::isA(const _kelp::StringMixer& wanted) const
{
    return wanted == classId() || Data::isA(wanted);
}

CaError ProcessData::doSave(DataTreeNode* node, DataSaveContext& context)
{
    return Data::doSave(node, context);
}

CaError ProcessData::doLoad(DataTreeNode* node, DataLoadContext& context)
{
    return Data::doLoad(node, context);
}

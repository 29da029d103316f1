#include "DataTreeIO.h"

#include "DataIOManager.h"

CaFactory<DataTreeIO>& DataTreeIO::getFactory()
{
    static CaFactory<DataTreeIO> factory;
    return factory;
}

kelp::URI DataTreeIO::binaryDataDirUri()
{
    const DataTreeIO* const io = DataIOManager::currentIO();
    return io ? kelp::URI::compose(QString(), io->getFolder() + "/binary") : kelp::URI();
}

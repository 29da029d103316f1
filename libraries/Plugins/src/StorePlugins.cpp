#include "StorePlugins.h"

#include "XMLDataTreeIO.h"

namespace {

class XMLDataTreeIOFactory : public CaFactory<DataTreeIO>::Factory
{
public:
    DataTreeIO* createInstance() const override { return new XMLDataTreeIO; }
};

} // namespace

int createXMLDataTreeIOFactory()
{
    static const bool registered =
        DataTreeIO::getFactory().registerFactory("xml", std::make_shared<XMLDataTreeIOFactory>());
    return static_cast<int>(registered);
}

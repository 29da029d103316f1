#include "Startup.h"

#include "OCTDecoderHeidelbergXML.h"
#include "OCTScanSegmentation.h"
#include "StorePlugins.h"

namespace kelp::command {

void registerScanLibrary()
{
    createFileIOFactory();
    createXMLDataTreeIOFactory();
    createOCTScanFactory();
    createOCTScanSegmentationFactory();
    createOCTDecoderHeidelbergXMLFactory();
}

} // namespace kelp::command

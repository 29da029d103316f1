#pragma once

#include "OCTDecoder.h"

/// Reads one series of a Heidelberg Eye Explorer XML export, named by the URI
/// "file++hra:<xml path>?seriesId=<id>", with the images beside the XML file.
class OCTDecoderHeidelbergXML : public OCTDecoder
{
public:
    bool decode() override;
};

/// Registers the decoder under "hra" once. Returns 1.
int createOCTDecoderHeidelbergXMLFactory();

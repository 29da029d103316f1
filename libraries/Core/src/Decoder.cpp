#include "Decoder.h"

void Decoder::setUris(const QList<kelp::URI>& uris)
{
    m_uris = uris;
    urisChanged();
}

#pragma once

#include "kelpURI.h"

#include <QList>

/// Base of everything that translates between stored and living data.
class Codec
{
public:
    virtual ~Codec() = default;
};

/// A codec that reads. Lives for one reading: set URIs, decode, read out, destroy.
class Decoder : public Codec
{
public:
    /// Stores the URIs and calls urisChanged.
    void setUris(const QList<kelp::URI>& uris);
    const QList<kelp::URI>& getUris() const { return m_uris; }

    virtual void urisChanged() {}
    /// False on failure.
    virtual bool decode() = 0;

private:
    QList<kelp::URI> m_uris;
};

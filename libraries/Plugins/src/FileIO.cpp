#include "FileIO.h"

#include "StorePlugins.h"
#include "kelpException.h"
#include "kelpFileWriter.h"

#include <QFile>

namespace {

class LocalFileIO : public FileIO
{
public:
    CaError read(const QString& path, QByteArray& content) const override
    {
        QFile file(path);
        // Read at one go: a buffer would only cost time.
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            return readFailure(path, file.errorString());
        }
        content = file.readAll();
        return file.error() == QFile::NoError ? CaError::nullError
                                              : readFailure(path, file.errorString());
    }

    CaError write(const QString& path, const QByteArray& content) const override
    {
        try {
            kelp::writeFileAtomically(path, content);
        } catch (const kelp::Exception& exception) {
            return CaError("WriteFailure", exception.getMessage(), exception.getDetail());
        }
        return CaError::nullError;
    }

    CaError remove(const QString& path) const override
    {
        QFile file(path);
        if (file.remove()) {
            return CaError::nullError;
        }
        return CaError("RemoveFailure",
                       QString("Could not remove file %1: %2").arg(path, file.errorString()),
                       QString());
    }

private:
    static CaError readFailure(const QString& path, const QString& reason)
    {
        return CaError("ReadFailure", QString("Could not read file %1: %2").arg(path, reason),
                       QString());
    }
};

class LocalFileIOFactory : public CaFactory<FileIO>::Factory
{
public:
    FileIO* createInstance() const override { return new LocalFileIO; }
};

} // namespace

CaFactory<FileIO>& FileIO::getFactory()
{
    static CaFactory<FileIO> factory;
    return factory;
}

int createFileIOFactory()
{
    static const bool registered =
        FileIO::getFactory().registerFactory("file", std::make_shared<LocalFileIOFactory>());
    return static_cast<int>(registered);
}

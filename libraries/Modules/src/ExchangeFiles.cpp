#include "ExchangeFiles.h"

#include "Patient.h"
#include "PatientTree.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace kelp::exchange {

namespace {

[[noreturn]] void failWriting(const QString& path, const QString& reason)
{
    throw IOFailure(QStringLiteral("Could not write file %1: %2").arg(path, reason));
}

/// Counts and digests what it writes.
class NewFile
{
public:
    explicit NewFile(const QString& path) : m_file(path)
    {
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
            failWriting(path, m_file.errorString());
        }
    }
    void write(const QByteArray& bytes)
    {
        if (m_file.write(bytes) != bytes.size()) {
            failWriting(m_file.fileName(), m_file.errorString());
        }
        m_hash.addData(bytes);
        m_size += bytes.size();
    }
    FileDigest close()
    {
        if (!m_file.flush()) {
            failWriting(m_file.fileName(), m_file.errorString());
        }
        m_file.close();
        return {m_size, m_hash.result().toHex()};
    }

private:
    QFile m_file;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
    qint64 m_size = 0;
};

QString withSlashes(QString path)
{
    return path.replace('\\', '/');
}

/// The path as it stands: not everybody who wrote URIs has encoded them.
QString plainPath(const URI& uri)
{
    const QString beforeQuery = uri.toString().section('?', 0, 0);
    return beforeQuery.mid(beforeQuery.indexOf(':') + 1);
}

} // namespace

FileDigest copyFile(const QString& source, const QString& target)
{
    const auto failReading = [&source](const QString& reason) {
        throw SourceFailure(QStringLiteral("Could not read file %1: %2").arg(source, reason));
    };
    QFile file(source);
    if (!QFileInfo(source).isFile() && QFileInfo::exists(source)) {
        // Opening a pipe or a device would wait, or never come to an end.
        failReading(QStringLiteral("It is no regular file."));
    }
    if (!file.open(QIODevice::ReadOnly)) {
        failReading(file.errorString());
    }
    constexpr qint64 blockSize = 1 << 20;
    NewFile copy(target);
    while (!file.atEnd()) {
        const QByteArray block = file.read(blockSize);
        if (block.isEmpty()) {
            break;
        }
        copy.write(block);
    }
    if (file.error() != QFile::NoError) {
        QFile::remove(target);
        failReading(file.errorString());
    }
    return copy.close();
}

FileDigest writeNewFile(const QString& path, const QByteArray& content)
{
    NewFile file(path);
    file.write(content);
    return file.close();
}

void flushToDisk(const QString& folder)
{
    const int descriptor =
        ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const bool isFlushed = descriptor >= 0 && ::syncfs(descriptor) == 0;
    const int systemError = errno;
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    if (!isFlushed) {
        failWriting(folder, qt_error_string(systemError));
    }
}

QString makeFolder(const QString& parent, const QString& wishedName)
{
    const QString name = DataTreeNode::makeIdValid(wishedName);
    const bool isUsable = !name.isEmpty() && !name.startsWith('.');
    const QString base = isUsable ? name : QStringLiteral("files");
    QString path = parent + '/' + base;
    for (int number = 2; QFileInfo::exists(path); ++number) {
        path = QStringLiteral("%1/%2_%3").arg(parent, base).arg(number);
    }
    if (!QDir().mkpath(path)) {
        throw IOFailure(
            QStringLiteral("Could not create folder %1: %2").arg(path, qt_error_string(errno)));
    }
    return path;
}

LocatedFile locate(const URI& uri, const std::function<bool(const QString& path)>& exists)
{
    for (const QString& path : {uri.path(), plainPath(uri)}) {
        if (!path.isEmpty() && exists(path)) {
            return {path, false};
        }
        if (path.contains('\\') && exists(withSlashes(path))) {
            return {withSlashes(path), true};
        }
    }
    const QString path = uri.path();
    const bool hasBackslashes = path.contains('\\') && !path.contains('/');
    return {hasBackslashes ? withSlashes(path) : path, hasBackslashes};
}

URI relocated(const URI& uri, const LocatedFile& former, const QString& path)
{
    QString written = path;
    if (former.hasBackslashes) {
        written.replace('/', '\\');
    }
    const QString encoded = URI::compose(QString(), written).toString().section(':', 1);
    const QString& text = uri.toString();
    const QString query = text.contains('?') ? text.mid(text.indexOf('?')) : QString();
    const QString beforeQuery = text.left(text.size() - query.size());
    return URI(beforeQuery.left(beforeQuery.indexOf(':') + 1) + encoded + query);
}

void rewriteUris(DataTreeNode& root, const std::function<URI(const URI&)>& rewrite)
{
    // A copy: the attributes change meanwhile.
    const QList<QPair<QString, QString>> attributes = root.getAttributes();
    for (const auto& [name, value] : attributes) {
        if (isUriAttribute(name)) {
            root.setAttribute(name, rewrite(URI(value)).toString());
        }
    }
    const QList<DataTreeNode*> children = root.getChildren();
    for (DataTreeNode* const child : children) {
        rewriteUris(*child, rewrite);
    }
}

bool PatientProgress::tell(int done, int all, const QString& what)
{
    constexpr int stepsOfPatient = 1000;
    const int steps = all > 0 ? static_cast<int>(qint64(stepsOfPatient) * done / all) : 0;
    if (m_progress && !m_isCancelled) {
        m_isCancelled =
            !m_progress(m_patient * stepsOfPatient + steps, m_patients * stepsOfPatient, what);
    }
    return !m_isCancelled;
}

TemporaryFolder::~TemporaryFolder()
{
    if (!m_isKept) {
        QDir(m_path).removeRecursively();
    }
}

QString displayName(const QString& name, const QString& guid)
{
    return name.trimmed().isEmpty() ? QStringLiteral("Patient ID %1").arg(Patient::numberOf(guid))
                                    : name;
}

} // namespace kelp::exchange

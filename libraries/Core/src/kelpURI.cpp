#include "kelpURI.h"

#include <QByteArray>
#include <QStringList>

namespace kelp {

namespace {

const QString codecPrefix = QStringLiteral("file++");

/// Turns "%41" into "A" (bytes of UTF-8). A percent sign that starts no such triple stays, since
/// URIs are also put together from plain paths.
QString decoded(const QString& text)
{
    if (!text.contains('%')) {
        return text;
    }
    const QByteArray source = text.toUtf8();
    QByteArray result;
    result.reserve(source.size());
    for (int i = 0; i < source.size(); ++i) {
        if (source[i] == '%' && i + 2 < source.size()) {
            bool isHexadecimal = false;
            const int value = source.mid(i + 1, 2).trimmed().toInt(&isHexadecimal, 16);
            if (isHexadecimal && source[i + 1] != '-' && source[i + 1] != '+' &&
                source[i + 1] != ' ' && source[i + 2] != ' ') {
                result.append(static_cast<char>(value));
                i += 2;
                continue;
            }
        }
        result.append(source[i]);
    }
    return QString::fromUtf8(result);
}

/// Encodes only what would be misread, so that an ordinary path stays as it is.
QString encoded(QString text, const QString& delimiters)
{
    text.replace('%', "%25");
    for (const QChar delimiter : delimiters) {
        text.replace(delimiter,
                     QString("%%1").arg(static_cast<int>(delimiter.unicode()), 2, 16, QChar('0')));
    }
    return text;
}

QString encodedPath(const QString& path)
{
    return encoded(path, "?");
}

} // namespace

QString URI::codecScheme() const
{
    const QString scheme = m_text.section(':', 0, 0);
    return m_text.contains(':') && scheme.startsWith(codecPrefix) ? scheme.mid(codecPrefix.size())
                                                                  : QString();
}

QString URI::path() const
{
    const QString beforeQuery = m_text.section('?', 0, 0);
    return decoded(beforeQuery.mid(beforeQuery.indexOf(':') + 1));
}

bool URI::hasQueryItem(const QString& key) const
{
    return findQueryItem(key, nullptr);
}

QString URI::queryItem(const QString& key) const
{
    QString value;
    findQueryItem(key, &value);
    return value;
}

bool URI::findQueryItem(const QString& key, QString* value) const
{
    const int queryMark = m_text.indexOf('?');
    if (queryMark < 0) {
        return false;
    }
    for (const QString& item : m_text.mid(queryMark + 1).split('&')) {
        if (decoded(item.section('=', 0, 0)) == key) {
            if (value) {
                *value = decoded(item.section('=', 1));
            }
            return true;
        }
    }
    return false;
}

URI URI::compose(const QString& codecScheme, const QString& path)
{
    const QString scheme = codecScheme.isEmpty() ? QString("file") : codecPrefix + codecScheme;
    return URI(scheme + ":" + encodedPath(path));
}

URI URI::compose(const QString& codecScheme, const QString& path, const QString& queryKey,
                 const QString& queryValue)
{
    return URI(compose(codecScheme, path).toString() + "?" + encoded(queryKey, "&=") + "=" +
               encoded(queryValue, "&"));
}

} // namespace kelp

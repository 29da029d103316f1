#include "JsonWriter.h"

#include <QByteArrayList>

#include <array>
#include <charconv>
#include <cmath>

namespace kelp::command {

namespace {

QByteArray quoted(const QString& text)
{
    QByteArray result = "\"";
    for (const QChar character : text) {
        const ushort code = character.unicode();
        if (code == '"' || code == '\\') {
            result += '\\';
            result += static_cast<char>(code);
        } else if (code == '\n') {
            result += "\\n";
        } else if (code == '\t') {
            result += "\\t";
        } else if (code < 0x20 || character.isSurrogate()) {
            result += "\\u" + QByteArray::number(code, 16).rightJustified(4, '0');
        } else {
            result += QString(character).toUtf8();
        }
    }
    return result + '"';
}

} // namespace

QByteArray plainNumber(double number)
{
    if (!std::isfinite(number)) {
        return "null";
    }
    std::array<char, 400> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                      std::chars_format::fixed);
    return QByteArray(buffer.data(), static_cast<int>(result.ptr - buffer.data()));
}

void JsonWriter::startItem(const QString& key)
{
    if (m_depth > 0) {
        m_text += m_first ? "\n" : ",\n";
        m_text += QByteArray(2 * m_depth, ' ');
    }
    m_first = false;
    if (!key.isEmpty()) {
        m_text += quoted(key) + ": ";
    }
}

void JsonWriter::begin(const QString& key, char bracket)
{
    startItem(key);
    m_text += bracket;
    ++m_depth;
    m_first = true;
}

void JsonWriter::end(char bracket)
{
    --m_depth;
    if (!m_first) {
        m_text += '\n' + QByteArray(2 * m_depth, ' ');
    }
    m_text += bracket;
    m_first = false;
}

void JsonWriter::value(const QString& key, const QString& text)
{
    startItem(key);
    m_text += quoted(text);
}

void JsonWriter::value(const QString& key, double number)
{
    startItem(key);
    m_text += plainNumber(number);
}

void JsonWriter::value(const QString& key, std::int64_t number)
{
    startItem(key);
    m_text += QByteArray::number(static_cast<qlonglong>(number));
}

void JsonWriter::value(const QString& key, bool truth)
{
    startItem(key);
    m_text += truth ? "true" : "false";
}

void JsonWriter::texts(const QString& key, const QStringList& texts)
{
    beginArray(key);
    for (const QString& text : texts) {
        value(QString(), text);
    }
    endArray();
}

void JsonWriter::numbers(const QString& key, const QList<double>& numbers)
{
    startItem(key);
    QByteArrayList texts;
    for (const double number : numbers) {
        texts.append(plainNumber(number));
    }
    m_text += '[' + texts.join(", ") + ']';
}

void JsonWriter::null(const QString& key)
{
    startItem(key);
    m_text += "null";
}

} // namespace kelp::command

#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <cstdint>

namespace kelp::command {

/// Writes indented JSON whose keys keep the order in which they are given, with plain numbers: no
/// exponents, and as many digits as it takes to read the same number back. The caller keeps the
/// nesting right. Numbers that JSON does not know become null.
class JsonWriter
{
public:
    /// The key is empty inside an array and at the top.
    void beginObject(const QString& key = QString()) { begin(key, '{'); }
    void endObject() { end('}'); }
    void beginArray(const QString& key = QString()) { begin(key, '['); }
    void endArray() { end(']'); }

    void value(const QString& key, const QString& text);
    void value(const QString& key, const char* text) { value(key, QString::fromUtf8(text)); }
    void value(const QString& key, double number);
    void value(const QString& key, std::int64_t number);
    void value(const QString& key, int number) { value(key, static_cast<std::int64_t>(number)); }
    void value(const QString& key, bool truth);
    void null(const QString& key);
    /// An array of texts, one a line.
    void texts(const QString& key, const QStringList& texts);
    /// An array on one line.
    void numbers(const QString& key, const QList<double>& numbers);

    /// The whole text, ended by a line feed.
    QByteArray text() const { return m_text + '\n'; }

private:
    void begin(const QString& key, char bracket);
    void end(char bracket);
    void startItem(const QString& key);

    QByteArray m_text;
    int m_depth = 0;
    bool m_first = true;
};

/// The shortest plain decimal text that reads back as this number.
QByteArray plainNumber(double number);

} // namespace kelp::command

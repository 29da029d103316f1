#pragma once

#include <QString>

#include <ostream>
#include <string>

namespace _kelp {

/// Text that may come as a QString, a character string (UTF-8) or a standard string.
class StringMixer
{
public:
    StringMixer() = default;
    StringMixer(const QString& text) : m_text(text) {}
    StringMixer(const char* text) : m_text(QString::fromUtf8(text)) {}
    StringMixer(const std::string& text) : m_text(QString::fromStdString(text)) {}

    operator std::string() const { return m_text.toStdString(); }
    const QString& toQString() const { return m_text; }

    friend bool operator==(const StringMixer& a, const StringMixer& b)
    {
        return a.m_text == b.m_text;
    }
    friend bool operator!=(const StringMixer& a, const StringMixer& b) { return !(a == b); }
    friend bool operator<(const StringMixer& a, const StringMixer& b)
    {
        return a.m_text < b.m_text;
    }

private:
    QString m_text;
};

std::ostream& operator<<(std::ostream& stream, const StringMixer& text);

} // namespace _kelp

/// Prints the text as UTF-8, so that diagnostics can be written with plain standard streams.
std::ostream& operator<<(std::ostream& stream, const QString& text);

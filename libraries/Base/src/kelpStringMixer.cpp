#include "kelpStringMixer.h"

std::ostream& _kelp::operator<<(std::ostream& stream, const StringMixer& text)
{
    return ::operator<<(stream, text.toQString());
}

std::ostream& operator<<(std::ostream& stream, const QString& text)
{
    return stream << text.toUtf8().constData();
}

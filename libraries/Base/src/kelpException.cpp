#include "kelpException.h"

namespace kelp {

Exception::Exception(const _kelp::StringMixer& message, const _kelp::StringMixer& detail)
    : m_message(message.toQString()), m_detail(detail.toQString()), m_what(message)
{
    if (!m_detail.isEmpty()) {
        m_what += "\n" + m_detail.toStdString();
    }
}

} // namespace kelp

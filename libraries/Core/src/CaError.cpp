#include "CaError.h"

const CaError CaError::nullError;

CaError::CaError(const QString& identifier, const QString& text, const QString& detail, int code,
                 const void* origin)
    : m_identifier(identifier), m_text(text), m_detail(detail), m_code(code), m_origin(origin)
{
}

QString CaError::toString() const
{
    if (m_text.isEmpty()) {
        return m_detail.isEmpty() ? m_identifier : m_detail;
    }
    return m_detail.isEmpty() ? m_text : m_text + "\n" + m_detail;
}

bool operator==(const CaError& a, const CaError& b)
{
    return a.m_identifier == b.m_identifier && a.m_text == b.m_text && a.m_detail == b.m_detail &&
           a.m_code == b.m_code;
}

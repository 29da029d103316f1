#pragma once

#include <QString>

/// The result of a framework call. Code tests it with != against nullError, which means success.
class CaError
{
public:
    CaError() = default;
    CaError(const QString& identifier, const QString& text, const QString& detail, int code = 0,
            const void* origin = nullptr);

    static const CaError nullError;

    const QString& getIdentifier() const { return m_identifier; }
    const QString& getText() const { return m_text; }
    const QString& getDetail() const { return m_detail; }
    int getCode() const { return m_code; }
    const void* getOrigin() const { return m_origin; }

    /// For the user: the text, then the detail if there is one.
    QString toString() const;

    /// Errors are equal when their three texts and codes are; the origin does not count.
    friend bool operator==(const CaError& a, const CaError& b);
    friend bool operator!=(const CaError& a, const CaError& b) { return !(a == b); }

private:
    QString m_identifier;
    QString m_text;
    QString m_detail;
    int m_code = 0;
    const void* m_origin = nullptr;
};

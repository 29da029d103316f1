#pragma once

#include <QString>

namespace kelp {

/// A text of the form scheme, path and query, as in "file++hra:/data/e.xml?seriesId=5".
class URI
{
public:
    URI() = default;
    explicit URI(const QString& text) : m_text(text) {}

    const QString& toString() const { return m_text; }
    bool isEmpty() const { return m_text.isEmpty(); }

    /// The part of the scheme behind "file++": "hra" for "file++hra:"; empty without one.
    QString codecScheme() const;
    /// What stands between the scheme's colon and the query, fully percent-decoded.
    QString path() const;
    bool hasQueryItem(const QString& key) const;
    /// The decoded value of the first query item of this key; empty without one.
    QString queryItem(const QString& key) const;

    /// A URI whose parts are encoded such that path() and queryItem() give them back exactly.
    static URI compose(const QString& codecScheme, const QString& path);
    static URI compose(const QString& codecScheme, const QString& path, const QString& queryKey,
                       const QString& queryValue);

    friend bool operator==(const URI& a, const URI& b) { return a.m_text == b.m_text; }
    friend bool operator!=(const URI& a, const URI& b) { return !(a == b); }

private:
    bool findQueryItem(const QString& key, QString* value) const;

    QString m_text;
};

} // namespace kelp

#include "StoreMentions.h"

#include <QByteArrayMatcher>
#include <QDir>
#include <QFile>

#include <vector>

namespace {

struct Word
{
    QString text;
    QByteArrayMatcher matcher;
};

bool isWordCharacter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || character == '_' || character == '-' ||
           character == '.';
}

bool mentions(const QByteArray& content, const QByteArrayMatcher& matcher)
{
    const int length = matcher.pattern().size();
    for (int at = matcher.indexIn(content); at >= 0; at = matcher.indexIn(content, at + 1)) {
        const int end = at + length;
        const bool startsHere = at == 0 || !isWordCharacter(content[at - 1]);
        const bool endsHere = end == content.size() || !isWordCharacter(content[end]);
        if (startsHere && endsHere) {
            return true;
        }
    }
    return false;
}

} // namespace

CaError findMentions(const QString& folder, const QStringList& words, QSet<QString>& found)
{
    std::vector<Word> missing;
    for (const QString& word : words) {
        missing.push_back({word, QByteArrayMatcher(word.toUtf8())});
    }
    const QDir directory(folder);
    if (!directory.exists()) {
        return CaError("ReadFailure", QString("There is no folder %1.").arg(folder), QString());
    }
    for (const QString& name : directory.entryList(QDir::Files | QDir::Hidden, QDir::NoSort)) {
        if (missing.empty()) {
            break;
        }
        QFile file(directory.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) {
            return CaError(
                "ReadFailure",
                QString("Could not read file %1: %2").arg(file.fileName(), file.errorString()),
                QString());
        }
        const QByteArray content = file.readAll();
        std::erase_if(missing, [&](const Word& word) {
            const bool isMentioned = mentions(content, word.matcher);
            if (isMentioned) {
                found.insert(word.text);
            }
            return isMentioned;
        });
    }
    return CaError::nullError;
}

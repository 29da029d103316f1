#include "Protocol.h"

#include "kelpException.h"

#include <QJsonDocument>

#include <array>
#include <cerrno>
#include <utility>

#include <unistd.h>

namespace kelp::command {

namespace {

constexpr std::array<std::pair<char, ScanMessage::Kind>, 4> kindLetters{{
    {'P', ScanMessage::Kind::Progress},
    {'T', ScanMessage::Kind::Trace},
    {'F', ScanMessage::Kind::Failure},
    {'D', ScanMessage::Kind::Done},
}};

char letterOf(ScanMessage::Kind kind)
{
    for (const auto& [letter, candidate] : kindLetters) {
        if (candidate == kind) {
            return letter;
        }
    }
    return '?';
}

} // namespace

QByteArray ScanRequest::toJson() const
{
    QJsonObject object = settingsToJson(settings);
    object["input"] = input;
    object["series"] = series;
    object["buildFolder"] = buildFolder;
    object["verbose"] = verbose;
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

ScanRequest ScanRequest::fromJson(const QByteArray& text)
{
    const QJsonObject object = QJsonDocument::fromJson(text).object();
    const auto settings = settingsFromJson(object);
    if (!settings || !object["input"].isString() || !object["buildFolder"].isString()) {
        throw ParsingError("The request for a scan cannot be read.");
    }
    ScanRequest request;
    request.input = object["input"].toString();
    request.series = object["series"].toString();
    request.settings = *settings;
    request.buildFolder = object["buildFolder"].toString();
    request.verbose = object["verbose"].toBool();
    return request;
}

QByteArray ScanMessage::toLine() const
{
    // Percent encoding keeps line feeds of the text out of the line.
    return letterOf(kind) + QByteArray(" ") + QByteArray::number(percentage) + ' ' +
           text.toUtf8().toPercentEncoding(" :;,./()\"'=+-_#*[]<>!?|&@$^~`{}\\") + '\n';
}

std::optional<ScanMessage> ScanMessage::fromLine(const QByteArray& line)
{
    const QByteArray trimmed = line.endsWith('\n') ? line.chopped(1) : line;
    const int blank = trimmed.indexOf(' ', 2);
    if (trimmed.size() < 4 || trimmed[1] != ' ' || blank < 0) {
        return std::nullopt;
    }
    bool isNumber = false;
    ScanMessage message;
    message.percentage = trimmed.mid(2, blank - 2).toInt(&isNumber);
    message.text = QString::fromUtf8(QByteArray::fromPercentEncoding(trimmed.mid(blank + 1)));
    for (const auto& [letter, kind] : kindLetters) {
        if (trimmed[0] == letter && isNumber) {
            message.kind = kind;
            return message;
        }
    }
    return std::nullopt;
}

void MessageSender::send(const ScanMessage& message)
{
    const QByteArray line = message.toLine();
    const std::lock_guard lock(m_mutex);
    const char* position = line.constData();
    auto left = static_cast<std::size_t>(line.size());
    while (left > 0) {
        const ssize_t written = write(STDOUT_FILENO, position, left);
        if (written < 0 && errno != EINTR) {
            return; // the command is gone, and so will be this process
        }
        if (written > 0) {
            position += written;
            left -= static_cast<std::size_t>(written);
        }
    }
}

void TraceBuffer::add(char character)
{
    if (character != '\n') {
        m_line += character;
        return;
    }
    m_sender.send({ScanMessage::Kind::Trace, 0, QString::fromUtf8(m_line)});
    m_line.clear();
}

TraceBuffer::int_type TraceBuffer::overflow(int_type character)
{
    if (character != traits_type::eof()) {
        add(traits_type::to_char_type(character));
    }
    return traits_type::not_eof(character);
}

std::streamsize TraceBuffer::xsputn(const char* text, std::streamsize count)
{
    for (std::streamsize i = 0; i < count; ++i) {
        add(text[i]);
    }
    return count;
}

} // namespace kelp::command

#include "LayerDistributionDocument.h"

#include <QBuffer>
#include <QXmlStreamReader>

#include <algorithm>
#include <charconv>
#include <utility>

namespace kelp::oct {

namespace {

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

/// As QString::toDouble, whose 0 for what is no number also holds here. Plain decimals, that is all
/// of a sound model, take the way without a QString.
double toNumber(const char* begin, const char* end)
{
    const char* const digits = *begin == '-' ? begin + 1 : begin;
    if (digits != end && isDigit(*digits) && isDigit(*(end - 1))) {
        double number = 0.0;
        const auto [stop, error] = std::from_chars(begin, end, number);
        if (error == std::errc() && stop == end) {
            return number;
        }
    }
    return QString::fromLatin1(begin, static_cast<int>(end - begin)).toDouble();
}

/// Split at blanks, empty parts skipped.
std::vector<double> toNumbers(const QString& text, std::size_t expected)
{
    const QByteArray characters = text.toLatin1();
    std::vector<double> numbers;
    numbers.reserve(expected);
    const char* const end = characters.constData() + characters.size();
    for (const char* begin = characters.constData(); begin != end;) {
        if (*begin == ' ') {
            ++begin;
            continue;
        }
        const char* const stop = std::find(begin, end, ' ');
        numbers.push_back(toNumber(begin, stop));
        begin = stop;
    }
    return numbers;
}

/// Reads elements by name; of elements of one name only the first counts where one is meant.
class Reader
{
public:
    explicit Reader(QIODevice* device) : m_xml(device)
    {
        // Prefixes have no meaning in this text.
        m_xml.setNamespaceProcessing(false);
    }

    bool read(LayerDistributionDocument& document)
    {
        while (!m_xml.atEnd()) {
            if (m_xml.readNext() == QXmlStreamReader::StartElement) {
                document.rootName = m_xml.qualifiedName().toString();
                readModel(document);
            }
        }
        return !m_xml.hasError();
    }

private:
    /// Calls the handler, which must read the element wholly, for each child element.
    template <typename Handler>
    void forEachChild(const Handler& handler)
    {
        while (m_xml.readNextStartElement()) {
            handler(m_xml.qualifiedName().toString());
        }
    }

    QString text() { return m_xml.readElementText(QXmlStreamReader::IncludeChildElements); }

    /// The texts of the first x and the first y below the current element.
    std::pair<QString, QString> readPair()
    {
        QString x;
        QString y;
        forEachChild([&](const QString& name) {
            const QString value = text();
            if (name == "x" && x.isNull()) {
                x = value;
            } else if (name == "y" && y.isNull()) {
                y = value;
            }
        });
        return {x, y};
    }

    void readModel(LayerDistributionDocument& document)
    {
        bool hasFovea = false;
        bool hasDistributions = false;
        forEachChild([&](const QString& name) {
            if (name == "Fovea_position" && !hasFovea) {
                hasFovea = true;
                const auto [x, y] = readPair();
                document.foveaX = x.toInt();
                document.foveaY = y.toInt();
            } else if (name == "Distributions" && !hasDistributions) {
                hasDistributions = true;
                readDistributions(document);
            } else {
                m_xml.skipCurrentElement();
            }
        });
    }

    void readDistributions(LayerDistributionDocument& document)
    {
        forEachChild([&](const QString& name) {
            if (name == "Distribution") {
                document.entries.push_back(readEntry());
            } else {
                m_xml.skipCurrentElement();
            }
        });
    }

    LayerDistributionDocument::Entry readEntry()
    {
        LayerDistributionDocument::Entry entry;
        QStringList seen;
        forEachChild([&](const QString& name) {
            if (seen.contains(name)) {
                m_xml.skipCurrentElement();
                return;
            }
            seen << name;
            if (name == "Top_Layer_Name") {
                entry.upperLayerName = text();
            } else if (name == "Bottom_Layer_Name") {
                entry.lowerLayerName = text();
            } else if (name == "Spacing") {
                const auto [x, y] = readPair();
                entry.spacingX = x.toDouble();
                entry.spacingY = y.toDouble();
            } else if (name == "Dimension") {
                const auto [x, y] = readPair();
                entry.columns = x.toInt();
                entry.rows = y.toInt();
            } else if (name == "Mean_matrix") {
                entry.means = readMatrix();
            } else if (name == "Variance_matrix") {
                entry.variances = readMatrix();
            } else {
                m_xml.skipCurrentElement();
            }
        });
        return entry;
    }

    LayerDistribution::Matrix readMatrix()
    {
        LayerDistribution::Matrix matrix;
        forEachChild([&](const QString& name) {
            if (name != "row") {
                m_xml.skipCurrentElement();
                return;
            }
            // Rows are alike, so the length of the last spares the next the growing.
            const std::size_t expected = matrix.empty() ? 0 : matrix.back().size();
            matrix.push_back(toNumbers(text(), expected));
        });
        return matrix;
    }

    QXmlStreamReader m_xml;
};

} // namespace

bool LayerDistributionDocument::read(const QByteArray& content)
{
    // Through a device, since the reader would otherwise widen the whole text to UTF-16 at once.
    QBuffer buffer;
    buffer.setData(content);
    buffer.open(QIODevice::ReadOnly);
    return Reader(&buffer).read(*this);
}

} // namespace kelp::oct

#pragma once

#include "kelpImage.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

namespace imagetest {

inline void writeFile(const QString& path, const QByteArray& content)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    ASSERT_EQ(file.write(content), content.size());
}

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

template <typename T>
kelp::ImagePtr makeImage(int pixelTypeId, const kelp::Vector3<int>& size,
                         const std::vector<T>& values)
{
    const kelp::ImagePtr image = kelp::Image::create(pixelTypeId, size);
    EXPECT_EQ(image->getNumberOfPixels(), values.size());
    std::copy(values.begin(), values.end(), image->pixels<T>());
    return image;
}

template <typename T>
std::vector<T> valuesOf(const kelp::Image& image)
{
    return std::vector<T>(image.pixels<T>(), image.pixels<T>() + image.getNumberOfPixels());
}

/// An uncompressed little-endian grey TIFF of one strip.
inline QByteArray makeTiff(quint32 width, quint32 height, quint16 bitsPerSample,
                           const QByteArray& pixels)
{
    QByteArray file("II*\0\x08\0\0\0", 8);
    const auto put16 = [&file](quint32 value) {
        file.append(static_cast<char>(value & 0xff)).append(static_cast<char>(value >> 8 & 0xff));
    };
    const auto put32 = [&](quint32 value) {
        put16(value & 0xffff);
        put16(value >> 16);
    };
    constexpr quint32 entries = 9;
    const auto entry = [&](quint32 tag, quint32 value) {
        constexpr quint32 longType = 4;
        put16(tag);
        put16(longType);
        put32(1);
        put32(value);
    };
    put16(entries);
    entry(256, width);
    entry(257, height);
    entry(258, bitsPerSample);
    entry(259, 1); // uncompressed
    entry(262, 1); // black is zero
    entry(273, 8 + 2 + entries * 12 + 4);
    entry(277, 1); // samples per pixel
    entry(278, height);
    entry(279, static_cast<quint32>(pixels.size()));
    put32(0);
    return file + pixels;
}

} // namespace imagetest

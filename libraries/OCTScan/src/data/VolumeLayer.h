#pragma once

#include <QSharedPointer>

#include <cstddef>
#include <memory>

namespace kelp::oct {

/// A matrix of one value per A-scan: row = B-scan, column = A-scan, row-major.
template <typename T>
class ScanMatrix
{
public:
    /// All zero. A size of 0 is legal.
    ScanMatrix(unsigned nrRows, unsigned nrColumns)
        : rows(nrRows), columns(nrColumns), m_owned(new T[size()]()), data(m_owned.get())
    {
    }
    /// Elements that someone else owns and frees.
    ScanMatrix(T* elements, unsigned nrRows, unsigned nrColumns)
        : rows(nrRows), columns(nrColumns), external(true), data(elements)
    {
    }
    ScanMatrix(const ScanMatrix&) = delete;
    ScanMatrix& operator=(const ScanMatrix&) = delete;

    std::size_t size() const { return static_cast<std::size_t>(rows) * columns; }
    T& operator()(std::size_t row, std::size_t column) { return data[row * columns + column]; }
    const T& operator()(std::size_t row, std::size_t column) const
    {
        return data[row * columns + column];
    }
    T* begin() { return data; }
    T* end() { return data + size(); }
    const T* begin() const { return data; }
    const T* end() const { return data + size(); }

    const unsigned rows;
    const unsigned columns;
    const bool external = false;

private:
    std::unique_ptr<T[]> m_owned;

public:
    T* const data;
};

/// One surface over a whole scan: rows of the B-scan image counted from its top, of the first pixel
/// at or below the surface.
using VolumeLayer = ScanMatrix<unsigned short>;
using VolumeLayerPtr = QSharedPointer<VolumeLayer>;

} // namespace kelp::oct

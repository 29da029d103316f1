#pragma once

#include <cstddef>
#include <vector>

namespace kelp {

/// A growable array with deep copies. The virtual accessors give the address of an element without
/// any bounds check.
template <typename T>
class DynamicVector
{
public:
    DynamicVector() = default;
    /// count elements, all zero.
    explicit DynamicVector(std::size_t count) : m_elements(count) {}
    DynamicVector(const DynamicVector&) = default;
    DynamicVector(DynamicVector&&) noexcept = default;
    DynamicVector& operator=(const DynamicVector&) = default;
    DynamicVector& operator=(DynamicVector&&) noexcept = default;
    virtual ~DynamicVector() = default;

    virtual T* at(unsigned index) { return m_elements.data() + index; }
    virtual const T* at(unsigned index) const { return m_elements.data() + index; }
    virtual T* elementAddress(unsigned index) { return m_elements.data() + index; }
    virtual const T* elementAddress(unsigned index) const { return m_elements.data() + index; }

    T& operator[](std::size_t index) { return m_elements[index]; }
    const T& operator[](std::size_t index) const { return m_elements[index]; }

    std::size_t size() const { return m_elements.size(); }
    /// New elements are zero.
    void resize(std::size_t count) { m_elements.resize(count); }
    void assign(std::size_t count, T value) { m_elements.assign(count, value); }
    T* data() { return m_elements.data(); }
    const T* data() const { return m_elements.data(); }

    friend bool operator==(const DynamicVector& a, const DynamicVector& b)
    {
        return a.m_elements == b.m_elements;
    }

private:
    std::vector<T> m_elements;
};

} // namespace kelp

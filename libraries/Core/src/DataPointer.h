#pragma once

#include "Data.h"

#include <type_traits>
#include <utility>

/// What a DataPointer needs of QObject: listens to the item's destruction. See DataPointer.
class DataPointerTracker : public QObject
{
    Q_OBJECT

public:
    DataPointerTracker() = default;
    ~DataPointerTracker() override;

    void track(Data* data);
    Data* get() const { return m_data.load(std::memory_order_acquire); }

private slots:
    void itemDestroyed();

private:
    std::atomic<Data*> m_data{nullptr};
    QMetaObject::Connection m_connection;
};

/// The tracking reference to a data item: holds one count of it, and turns null, with a warning on
/// the trace, if the item is deleted all the same.
template <typename T>
class DataPointer
{
public:
    DataPointer() = default;
    DataPointer(std::nullptr_t) {}
    DataPointer(T* data) { set(data); }
    DataPointer(const DataPointer& other) { set(other.data()); }
    template <typename U, typename = std::enable_if_t<std::is_convertible_v<U*, T*>>>
    DataPointer(const DataPointer<U>& other)
    {
        set(other.data());
    }
    ~DataPointer() { set(nullptr); }

    DataPointer& operator=(const DataPointer& other)
    {
        set(other.data());
        return *this;
    }

    T* data() const { return m_tracker.get() ? m_item : nullptr; }
    T* operator->() const { return data(); }
    T& operator*() const { return *data(); }
    bool isNull() const { return data() == nullptr; }
    explicit operator bool() const { return !isNull(); }

    friend bool operator==(const DataPointer& a, const DataPointer& b)
    {
        return a.data() == b.data();
    }
    friend bool operator!=(const DataPointer& a, const DataPointer& b) { return !(a == b); }

private:
    void set(T* item)
    {
        // The new item first, since it may live through the old one.
        if (item) {
            item->ref();
        }
        T* const former = data();
        m_item = item;
        m_tracker.track(item);
        if (former) {
            former->unref();
        }
    }

    T* m_item = nullptr;
    DataPointerTracker m_tracker;
};

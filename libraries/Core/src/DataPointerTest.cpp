#include "DataPointer.h"

#include "kelpTrace.h"

#include <QCoreApplication>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <sstream>
#include <thread>

namespace {

/// Atomic, since the last pointer may go in another thread.
using Flag = std::atomic<bool>;

class Item : public Data
{
public:
    explicit Item(Flag* deleted = nullptr) : m_deleted(deleted) {}
    ~Item() override
    {
        if (m_deleted) {
            *m_deleted = true;
        }
    }

private:
    Flag* m_deleted;
};

using ItemPointer = DataPointer<Item>;

} // namespace

Q_DECLARE_METATYPE(ItemPointer)

namespace {

/// What is traced while it lives.
class TraceCapture
{
public:
    TraceCapture() { kelp::Trace::redirect(&m_stream); }
    ~TraceCapture() { kelp::Trace::redirect(nullptr); }
    std::string text() const { return m_stream.str(); }

private:
    std::ostringstream m_stream;
};

TEST(DataPointer, AnItemLivesAsLongAsItsLastPointer)
{
    Flag deleted{false};
    {
        ItemPointer first(new Item(&deleted));
        {
            const ItemPointer second = first;
            first = nullptr;
            EXPECT_TRUE(first.isNull());
            EXPECT_FALSE(deleted);
            EXPECT_FALSE(second.isNull());
        }
        EXPECT_TRUE(deleted);
    }
}

TEST(DataPointer, AssignmentToItselfKeepsTheItem)
{
    Flag deleted{false};
    ItemPointer pointer(new Item(&deleted));
    const ItemPointer& same = pointer;
    pointer = same;
    pointer = pointer.data();
    EXPECT_FALSE(deleted);
    ASSERT_FALSE(pointer.isNull());
}

TEST(DataPointer, AssignmentLetsGoOfTheFormerItem)
{
    Flag firstDeleted{false};
    Flag secondDeleted{false};
    ItemPointer pointer(new Item(&firstDeleted));
    pointer = ItemPointer(new Item(&secondDeleted));
    EXPECT_TRUE(firstDeleted);
    EXPECT_FALSE(secondDeleted);
}

TEST(DataPointer, ConvertsToABaseAndComparesByItem)
{
    const ItemPointer item(new Item);
    const DataPointer<Data> base(item);
    EXPECT_EQ(base.data(), item.data());
    EXPECT_EQ(base, DataPointer<Data>(item));
    EXPECT_NE(base, DataPointer<Data>());
    EXPECT_TRUE(static_cast<bool>(base));
    EXPECT_FALSE(static_cast<bool>(ItemPointer()));
}

TEST(DataPointer, NormalLifeTracesNothing)
{
    const TraceCapture trace;
    {
        ItemPointer pointer(new Item);
        const ItemPointer copy(pointer);
        pointer = nullptr;
    }
    EXPECT_EQ(trace.text(), "");
}

TEST(DataPointer, TurnsNullWithAWarningWhenItsItemIsDeletedAllTheSame)
{
    auto* const item = new Item;
    const ItemPointer first(item);
    const ItemPointer second(item);
    std::ostringstream address;
    address << static_cast<const void*>(static_cast<Data*>(item));
    const std::string line =
        "The object at address " + address.str() +
        " was just deleted. This must not happen if the referece counting mechanism is used "
        "correctly. Try to find double-unref's or even better use DataPointer<> for all your data "
        "item handling.\n";
    const TraceCapture trace;
    delete item;
    EXPECT_TRUE(first.isNull());
    EXPECT_TRUE(second.isNull());
    EXPECT_EQ(first.operator->(), nullptr);
    EXPECT_EQ(trace.text(), line + line);
}

TEST(DataPointer, ADoubleUnrefIsWhatTheWarningIsAbout)
{
    auto* const item = new Item;
    const ItemPointer pointer(item);
    const TraceCapture trace;
    item->unref();
    EXPECT_TRUE(pointer.isNull());
    EXPECT_NE(trace.text().find("was just deleted"), std::string::npos);
}

TEST(DataPointer, MayBeCopiedAndDroppedByManyThreadsAtATime)
{
    Flag deleted{false};
    {
        const ItemPointer shared(new Item(&deleted));
        const auto work = [&shared] {
            for (int i = 0; i < 3000; ++i) {
                ItemPointer copy(shared);
                const ItemPointer second(copy);
                copy = nullptr;
                copy = second;
                ASSERT_EQ(copy.data(), second.data());
            }
        };
        std::thread first(work);
        std::thread second(work);
        work();
        first.join();
        second.join();
        EXPECT_FALSE(deleted);
    }
    EXPECT_TRUE(deleted);
}

TEST(DataPointer, TheLastPointerMayGoInAnotherThread)
{
    for (int round = 0; round < 50; ++round) {
        Flag deleted{false};
        auto shared = std::make_unique<ItemPointer>(new Item(&deleted));
        std::thread other([copy = ItemPointer(*shared)]() mutable { copy = nullptr; });
        shared.reset();
        other.join();
        EXPECT_TRUE(deleted);
    }
}

class Receiver : public QObject
{
    Q_OBJECT

public slots:
    void take(const ItemPointer& pointer)
    {
        m_item = pointer.data();
        QThread::currentThread()->quit();
    }

public:
    std::atomic<Item*> m_item{nullptr};
};

TEST(DataPointer, TravelsThroughAQueuedCallToAnotherThread)
{
    int argumentCount = 1;
    char name[] = "test";
    char* arguments[] = {name, nullptr};
    const QCoreApplication application(argumentCount, arguments);
    qRegisterMetaType<ItemPointer>("ItemPointer");
    Flag deleted{false};
    auto* const item = new Item(&deleted);
    {
        Receiver receiver;
        QThread thread;
        receiver.moveToThread(&thread);
        {
            const ItemPointer pointer(item);
            ASSERT_TRUE(QMetaObject::invokeMethod(&receiver, "take", Qt::QueuedConnection,
                                                  Q_ARG(ItemPointer, pointer)));
        }
        // Only the call that waits holds the item now.
        EXPECT_FALSE(deleted);
        thread.start();
        thread.wait();
        EXPECT_EQ(receiver.m_item.load(), item);
    }
    EXPECT_TRUE(deleted);
}

} // namespace

#include "DataPointerTest.moc"

#include "QtDataSelectionList.h"

#include "AppBase.h"
#include "HintOverlay.h"
#include "Waiting.h"

#include <QListWidget>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

/// A class of items of its own.
class OtherData : public Data
{
public:
    static _kelp::StringMixer classId() { return "OtherData"; }
    _kelp::StringMixer getClassId() const override { return classId(); }
    bool isA(const _kelp::StringMixer& wanted) const override
    {
        return wanted == classId() || Data::isA(wanted);
    }
};

class SelectionList : public testing::Test
{
protected:
    void SetUp() override
    {
        qRegisterMetaType<Data*>("Data*");
        m_patient->addStudy(m_study.data(), false);
        add("one");
        add("two");
        add("three");
        AppBase::setCurrent(m_patient, m_study);
        m_list = std::make_unique<QtDataSelectionList>();
        m_list->show();
        ASSERT_TRUE(waiting::untilExposed(*m_list));
        ASSERT_TRUE(waiting::untilFocused(*view()));
    }
    void TearDown() override
    {
        m_list.reset();
        AppBase::setCurrent(nullptr, nullptr);
    }

    Data* add(const char* id, Data* item = new Data)
    {
        EXPECT_EQ(m_study->addData(item, QLatin1String(id), true).toString(), QString());
        return item;
    }
    Data* item(int index) const
    {
        QList<Data*> items;
        m_study->getAllData(items);
        return items.value(index);
    }
    QListWidget* view() const
    {
        return m_list->findChild<QListWidget*>(QStringLiteral("dataSelectionList"));
    }
    QPoint placeOf(int row) const { return view()->visualItemRect(view()->item(row)).center(); }
    void click(int row, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseClick(view()->viewport(), Qt::LeftButton, modifiers, placeOf(row));
    }
    QStringList texts() const
    {
        QStringList found;
        for (int row = 0; row < view()->count(); ++row) {
            found.append(view()->item(row)->text());
        }
        return found;
    }
    QString hint() const
    {
        const auto* const overlay = m_list->findChild<kelp::HintOverlay*>();
        return overlay->isVisible() ? overlay->text() : QString();
    }
    static Data* told(const QSignalSpy& spy) { return spy.last().at(0).value<Data*>(); }

    DataPointer<Patient> m_patient{new Patient};
    DataPointer<Study> m_study{new Study};
    std::unique_ptr<QtDataSelectionList> m_list;
};

TEST_F(SelectionList, ShowsTheItemsOfTheCurrentStudyInTheirOrder)
{
    EXPECT_EQ(texts(), QStringList({"one", "two", "three"}));
    EXPECT_TRUE(m_list->getSelection().isEmpty());
    EXPECT_EQ(hint(), QString());
}

TEST_F(SelectionList, AClickSelectsAndTells)
{
    const QSignalSpy changed(m_list.get(), SIGNAL(selectionChanged(Data*)));
    click(1);
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(told(changed), item(1));
    EXPECT_EQ(m_list->getSelection(), QList<Data*>{item(1)});
}

TEST_F(SelectionList, ADoubleClickAndEnterChooseTheItem)
{
    const QSignalSpy chosen(m_list.get(), SIGNAL(selectionDoubleClicked(Data*)));
    click(2);
    QTest::mouseDClick(view()->viewport(), Qt::LeftButton, {}, placeOf(2));
    ASSERT_EQ(chosen.size(), 1);
    EXPECT_EQ(told(chosen), item(2));
    QTest::keyClick(view(), Qt::Key_Up);
    QTest::keyClick(view(), Qt::Key_Return);
    ASSERT_EQ(chosen.size(), 2);
    EXPECT_EQ(told(chosen), item(1));
    QTest::keyClick(view(), Qt::Key_Enter);
    EXPECT_EQ(chosen.size(), 3);
}

TEST_F(SelectionList, EnterWithoutASelectionChoosesNothing)
{
    const QSignalSpy chosen(m_list.get(), SIGNAL(selectionDoubleClicked(Data*)));
    QTest::keyClick(view(), Qt::Key_Return);
    EXPECT_EQ(chosen.size(), 0);
}

TEST_F(SelectionList, KeepsTheSelectionOverChangesOfTheStudy)
{
    click(1);
    const QSignalSpy changed(m_list.get(), SIGNAL(selectionChanged(Data*)));
    add("four");
    EXPECT_EQ(texts(), QStringList({"one", "two", "three", "four"}));
    EXPECT_EQ(m_list->getSelection(), QList<Data*>{item(1)});
    EXPECT_EQ(changed.size(), 0);
}

TEST_F(SelectionList, TellsThatNothingIsSelectedWhenTheSelectedItemIsRemoved)
{
    click(1);
    const QSignalSpy changed(m_list.get(), SIGNAL(selectionChanged(Data*)));
    m_study->removeData(QStringLiteral("two"));
    m_study->notify(nullptr, "removeData");
    EXPECT_EQ(texts(), QStringList({"one", "three"}));
    ASSERT_EQ(changed.size(), 1);
    EXPECT_FALSE(told(changed));
    EXPECT_TRUE(m_list->getSelection().isEmpty());
}

TEST_F(SelectionList, FollowsTheStudyThatIsSelectedInThePatientManager)
{
    const DataPointer<Study> other(new Study);
    other->addData(new Data, QStringLiteral("of the other"), false);
    AppBase::setCurrent(m_patient, other);
    EXPECT_EQ(texts(), QStringList{QStringLiteral("of the other")});
    add("not shown");
    EXPECT_EQ(texts().size(), 1);
    AppBase::setCurrent(nullptr, nullptr);
    EXPECT_EQ(texts(), QStringList());
    AppBase::setCurrent(m_patient, m_study);
    EXPECT_EQ(texts().size(), 4);
}

TEST_F(SelectionList, SaysWhatToDoWhenItIsEmpty)
{
    AppBase::setCurrent(m_patient, nullptr);
    EXPECT_TRUE(hint().contains(QStringLiteral("No study is selected")));
    const DataPointer<Study> empty(new Study);
    AppBase::setCurrent(m_patient, empty);
    EXPECT_TRUE(hint().contains(QStringLiteral("Add data in the patient manager")));
    empty->addData(new Data, QStringLiteral("first"), true);
    EXPECT_EQ(hint(), QString());
}

TEST_F(SelectionList, FiltersByClass)
{
    add("other", new OtherData);
    m_list->addFilter(QStringLiteral("OtherData"), QtDataSelectionList::Include);
    EXPECT_EQ(texts(), QStringList{QStringLiteral("other")});
    EXPECT_TRUE(m_list->filterPass(item(3)));
    EXPECT_FALSE(m_list->filterPass(item(0)));
    m_list->addFilter(QStringLiteral("OtherData"), QtDataSelectionList::Exclude);
    EXPECT_EQ(texts(), QStringList({"one", "two", "three"}));
    m_list->removeFilter(QStringLiteral("OtherData"));
    EXPECT_EQ(texts(), QStringList({"one", "two", "three", "other"}));
    m_list->addFilter(QStringLiteral("Data"), QtDataSelectionList::Exclude);
    EXPECT_EQ(texts(), QStringList());
}

TEST_F(SelectionList, ProcessDataAreListedOnRequestOnly)
{
    m_study->addProcessData(new ProcessData, QStringLiteral("result"), true);
    EXPECT_FALSE(texts().contains(QStringLiteral("result")));
    m_list->includeProcessData(true);
    EXPECT_EQ(texts().last(), QStringLiteral("result"));
    m_list->includeProcessData(false);
    EXPECT_EQ(texts().size(), 3);
}

TEST_F(SelectionList, SetSelectedIsSilentAndNothingIsSelectedForAStranger)
{
    const QSignalSpy changed(m_list.get(), SIGNAL(selectionChanged(Data*)));
    m_list->setSelected(item(2));
    EXPECT_EQ(m_list->getSelection(), QList<Data*>{item(2)});
    const DataPointer<Data> stranger(new Data);
    m_list->setSelected(stranger.data());
    EXPECT_TRUE(m_list->getSelection().isEmpty());
    m_list->setSelected(item(0));
    m_list->setSelected(nullptr);
    EXPECT_TRUE(m_list->getSelection().isEmpty());
    EXPECT_EQ(changed.size(), 0);
}

TEST_F(SelectionList, SeveralCanBeSelectedIfAllowed)
{
    m_list->setSelectionMode(QtDataSelectionList::Multiple);
    click(0);
    click(2, Qt::ControlModifier);
    EXPECT_EQ(m_list->getSelection(), QList<Data*>({item(0), item(2)}));
    add("four");
    EXPECT_EQ(m_list->getSelection(), QList<Data*>({item(0), item(2)}));
    m_list->setSelectionMode(QtDataSelectionList::Single);
    click(0);
    click(1, Qt::ControlModifier);
    EXPECT_EQ(m_list->getSelection(), QList<Data*>{item(1)});
}

TEST_F(SelectionList, OfAnItemThatSomeoneDeletedNothingIsLeftToChoose)
{
    click(1);
    delete item(1);
    EXPECT_FALSE(m_list->getSelection().contains(nullptr));
    const QSignalSpy chosen(m_list.get(), SIGNAL(selectionDoubleClicked(Data*)));
    QTest::keyClick(view(), Qt::Key_Return);
    EXPECT_EQ(chosen.size(), 0);
    m_study->notify(nullptr, "removeData");
    EXPECT_EQ(texts(), QStringList({"one", "three"}));
}

TEST_F(SelectionList, StopsListeningWhenItGoes)
{
    m_list.reset();
    add("four");
    AppBase::setCurrent(m_patient, nullptr);
    AppBase::setCurrent(m_patient, m_study);
}

} // namespace

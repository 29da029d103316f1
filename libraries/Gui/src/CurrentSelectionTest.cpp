#include "FrameTestSupport.h"

namespace {

struct Listener
{
    QStringList names;
    void* argument = nullptr;
    DataPointer<Patient> patientWhenTold;

    static void told(CaSubject*, void* argument, char const* name, void* listener)
    {
        auto* const self = static_cast<Listener*>(listener);
        self->names.append(QString::fromLatin1(name));
        self->argument = argument;
        self->patientWhenTold = AppBase::getCurrentPatient();
    }
};

TEST(CurrentSelection, TellsItsListenersWithoutAnApplicationToo)
{
    ASSERT_FALSE(AppBase::getInstance());
    const DataPointer<Patient> patient(new Patient);
    const DataPointer<Study> study(new Study);
    Listener listener;
    AppBase::currentSelection().attach(&Listener::told, &listener);
    AppBase::setCurrent(patient, study);
    EXPECT_EQ(listener.names, QStringList{QStringLiteral("currentStudy")});
    EXPECT_EQ(listener.argument, static_cast<void*>(study.data()));
    EXPECT_EQ(listener.patientWhenTold, patient);
    EXPECT_EQ(AppBase::getCurrentPatient(), patient);
    EXPECT_EQ(AppBase::getCurrentStudy(), study);

    AppBase::setCurrent(nullptr, nullptr);
    EXPECT_EQ(listener.names.size(), 2);
    EXPECT_FALSE(AppBase::getCurrentPatient());
    EXPECT_FALSE(AppBase::getCurrentStudy());
    AppBase::currentSelection().detach(&Listener::told, &listener);
    AppBase::setCurrent(nullptr, nullptr);
    EXPECT_EQ(listener.names.size(), 2);
}

TEST(CurrentSelection, WithoutAnApplicationThereIsNothingToSave)
{
    const DataPointer<Patient> patient(new Patient);
    AppBase::markChanged(patient);
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
    EXPECT_TRUE(AppBase::saveChanges());
    EXPECT_FALSE(AppBase::getMainForm());
    AppBase::setScanDescription(QStringLiteral("scan"));
    AppBase::showStatusMessage(QStringLiteral("message"));
    AppBase::setStatusNotice(QStringLiteral("notice"));
    AppBase::setScanDescription(QString());
}

class CurrentSelectionInApplication : public frametest::FrameFixture
{
};

TEST_F(CurrentSelectionInApplication, ChangingItSavesWhatIsUnsavedFirst)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Before"));
    AppBase::setCurrent(patient, nullptr);
    patient->setName(QStringLiteral("After"));
    AppBase::markCurrentChanged();
    ASSERT_TRUE(AppBase::hasUnsavedChanges());
    AppBase::setCurrent(nullptr, nullptr);
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
    EXPECT_EQ(storedNames(), QStringList{QStringLiteral("After")});
}

TEST_F(CurrentSelectionInApplication, ANewPatientEntersTheStoreByBeingMarked)
{
    const DataPointer<Patient> patient(new Patient);
    patient->setName(QStringLiteral("New"));
    patient->setId(QStringLiteral("New"));
    AppBase::markChanged(patient);
    EXPECT_TRUE(AppBase::saveChanges());
    EXPECT_EQ(storedNames(), QStringList{QStringLiteral("New")});
}

TEST_F(CurrentSelectionInApplication, ADeletedPatientDoesNotComeBackByALateSave)
{
    const DataPointer<Patient> patient = storedPatient(QStringLiteral("Gone"));
    AppBase::markChanged(patient);
    ASSERT_EQ(DataIOManager::removePatient(patient).toString(), QString());
    AppBase::forgetChanges(patient);
    EXPECT_FALSE(AppBase::hasUnsavedChanges());
    EXPECT_TRUE(AppBase::saveChanges());
    EXPECT_EQ(storedNames(), QStringList());
}

} // namespace

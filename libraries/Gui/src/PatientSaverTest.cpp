#include "PatientSaver.h"

#include "kelpException.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QSignalSpy>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <utility>

using kelp::PatientSaver;

namespace {

const CaError fullDisk(QStringLiteral("Io"), QStringLiteral("The disk is full."), QString());
const CaError noRights(QStringLiteral("Io"), QStringLiteral("Permission denied."), QString());

class Saver : public ::testing::Test
{
protected:
    static DataPointer<Patient> patient(const QString& name)
    {
        DataPointer<Patient> made(new Patient);
        made->setName(name);
        return made;
    }

    /// The reasons that the user was told.
    QStringList told() const
    {
        QStringList reasons;
        for (const QList<QVariant>& arguments : m_told) {
            reasons.append(arguments.first().toString());
        }
        return reasons;
    }

    /// Lets the event loop run until nothing is left to do. A timer of no time fires behind those
    /// started before it; the second turn is for what the first one began.
    static void becomeFree()
    {
        for (int turn = 0; turn < 2; ++turn) {
            QEventLoop loop;
            QTimer timer;
            QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
            timer.start(0);
            loop.exec();
        }
    }

    int m_argumentCount = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argumentCount, m_arguments};

    CaError m_answer;
    QStringList m_stored;
    std::function<void()> m_meanwhile;
    PatientSaver m_saver{[this](const DataPointer<Patient>& stored) {
        m_stored.append(stored->getName());
        if (m_meanwhile) {
            std::exchange(m_meanwhile, nullptr)();
        }
        return m_answer;
    }};
    QSignalSpy m_told{&m_saver, SIGNAL(saveFailed(const QString&))};
};

TEST_F(Saver, StoresAMarkedPatientOnceAsSoonAsTheEventLoopIsFree)
{
    const DataPointer<Patient> marked = patient(QStringLiteral("A"));
    m_saver.mark(marked);
    m_saver.mark(marked);
    EXPECT_TRUE(m_stored.isEmpty());
    EXPECT_TRUE(m_saver.hasUnsaved());
    becomeFree();
    EXPECT_EQ(m_stored, QStringList{QStringLiteral("A")});
    EXPECT_FALSE(m_saver.hasUnsaved());
    EXPECT_TRUE(told().isEmpty());
}

TEST_F(Saver, StoresNothingForNoPatientAndNothingTwice)
{
    m_saver.mark(nullptr);
    EXPECT_FALSE(m_saver.hasUnsaved());
    m_saver.mark(patient(QStringLiteral("A")));
    EXPECT_TRUE(m_saver.save(PatientSaver::AtRequest));
    becomeFree();
    EXPECT_EQ(m_stored, QStringList{QStringLiteral("A")});
}

TEST_F(Saver, KeepsAMarkThatCouldNotBeStoredWithItsReason)
{
    m_answer = fullDisk;
    m_saver.mark(patient(QStringLiteral("A")));
    EXPECT_FALSE(m_saver.save(PatientSaver::InPassing));
    EXPECT_TRUE(m_saver.hasUnsaved());
    EXPECT_EQ(m_saver.failure(), QStringLiteral("A: The disk is full."));

    m_answer = CaError::nullError;
    EXPECT_TRUE(m_saver.save(PatientSaver::InPassing));
    EXPECT_FALSE(m_saver.hasUnsaved());
    EXPECT_EQ(m_saver.failure(), QString());
    EXPECT_EQ(m_stored.size(), 2);
}

TEST_F(Saver, TheNextChangeTriesWhatFailedAgain)
{
    m_answer = fullDisk;
    m_saver.mark(patient(QStringLiteral("A")));
    becomeFree();
    EXPECT_EQ(m_stored, QStringList{QStringLiteral("A")});
    m_answer = CaError::nullError;
    m_saver.mark(patient(QStringLiteral("B")));
    becomeFree();
    EXPECT_EQ(m_stored,
              (QStringList{QStringLiteral("A"), QStringLiteral("A"), QStringLiteral("B")}));
    EXPECT_FALSE(m_saver.hasUnsaved());
}

TEST_F(Saver, OneThatFailsDoesNotHoldUpTheOthers)
{
    PatientSaver saver([this](const DataPointer<Patient>& stored) {
        m_stored.append(stored->getName());
        return stored->getName() == QStringLiteral("A") ? noRights : CaError::nullError;
    });
    saver.mark(patient(QStringLiteral("A")));
    saver.mark(patient(QStringLiteral("B")));
    EXPECT_FALSE(saver.save(PatientSaver::InPassing));
    EXPECT_EQ(m_stored, (QStringList{QStringLiteral("A"), QStringLiteral("B")}));
    EXPECT_EQ(saver.failure(), QStringLiteral("A: Permission denied."));
    EXPECT_FALSE(saver.save(PatientSaver::InPassing));
    EXPECT_EQ(m_stored.last(), QStringLiteral("A"));
    EXPECT_EQ(m_stored.size(), 3);
}

TEST_F(Saver, ManyEditsThatFailForOneReasonAreToldOnce)
{
    m_answer = fullDisk;
    const DataPointer<Patient> edited = patient(QStringLiteral("A"));
    for (int edit = 0; edit < 5; ++edit) {
        m_saver.mark(edited);
        becomeFree();
    }
    EXPECT_EQ(m_stored.size(), 5);
    EXPECT_EQ(told(), QStringList{QStringLiteral("A: The disk is full.")});
}

TEST_F(Saver, AnotherReasonIsToldAndSoIsTheSameOneAfterASuccess)
{
    const DataPointer<Patient> edited = patient(QStringLiteral("A"));
    for (const CaError& answer : {fullDisk, noRights, fullDisk, CaError::nullError, fullDisk}) {
        m_answer = answer;
        m_saver.mark(edited);
        becomeFree();
    }
    EXPECT_EQ(told(), (QStringList{QStringLiteral("A: The disk is full."),
                                   QStringLiteral("A: Permission denied."),
                                   QStringLiteral("A: The disk is full.")}));
}

TEST_F(Saver, ASaveAtRequestIsToldEveryTimeAndOneThatTheCallerTellsNever)
{
    m_answer = fullDisk;
    m_saver.mark(patient(QStringLiteral("A")));
    m_saver.save(PatientSaver::CallerTells);
    EXPECT_EQ(told().size(), 0);
    m_saver.save(PatientSaver::AtRequest);
    m_saver.save(PatientSaver::AtRequest);
    EXPECT_EQ(told().size(), 2);
}

TEST_F(Saver, AChangeMadeWhileItIsStoredIsStoredAgain)
{
    const DataPointer<Patient> edited = patient(QStringLiteral("A"));
    m_meanwhile = [this, &edited] { m_saver.mark(edited); };
    m_saver.mark(edited);
    EXPECT_FALSE(m_saver.save(PatientSaver::InPassing));
    EXPECT_TRUE(m_saver.hasUnsaved());
    becomeFree();
    EXPECT_EQ(m_stored.size(), 2);
    EXPECT_FALSE(m_saver.hasUnsaved());
}

TEST_F(Saver, ASaveInsideASaveDoesNothing)
{
    bool inner = true;
    m_meanwhile = [this, &inner] { inner = m_saver.save(PatientSaver::AtRequest); };
    m_saver.mark(patient(QStringLiteral("A")));
    EXPECT_TRUE(m_saver.save(PatientSaver::InPassing));
    EXPECT_FALSE(inner);
    EXPECT_EQ(m_stored.size(), 1);
}

TEST_F(Saver, AnExceptionCountsAsAFailureWithItsText)
{
    PatientSaver saver(
        [](const DataPointer<Patient>&) -> CaError { throw kelp::IOFailure("gone"); });
    saver.mark(patient(QStringLiteral("A")));
    EXPECT_FALSE(saver.save(PatientSaver::InPassing));
    EXPECT_TRUE(saver.hasUnsaved());
    EXPECT_EQ(saver.failure(), QStringLiteral("A: gone"));
}

TEST_F(Saver, AForgottenPatientIsNotStoredAndItsFailureIsGone)
{
    m_answer = fullDisk;
    const DataPointer<Patient> deleted = patient(QStringLiteral("A"));
    m_saver.mark(deleted);
    m_saver.save(PatientSaver::InPassing);
    m_saver.forget(deleted);
    EXPECT_FALSE(m_saver.hasUnsaved());
    EXPECT_EQ(m_saver.failure(), QString());
    becomeFree();
    EXPECT_EQ(m_stored.size(), 1);
}

TEST_F(Saver, KeepsAMarkedPatientAlive)
{
    m_saver.mark(patient(QStringLiteral("A")));
    becomeFree();
    EXPECT_EQ(m_stored, QStringList{QStringLiteral("A")});
}

} // namespace

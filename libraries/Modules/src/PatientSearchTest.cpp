#include "PatientSearch.h"

#include "PatientIdentity.h"

#include <gtest/gtest.h>

namespace {

using namespace kelp::patients;

class PatientSearchTest : public ::testing::Test
{
protected:
    bool finds(const QString& text) const
    {
        return PatientSearch(text).matches(searchableOf(*m_patient));
    }
    void rename(const QString& firstNames, const QString& lastName)
    {
        setDetails(*m_patient, {{firstNames, lastName}, QDate(1950, 2, 3), QString(), QString()});
    }

    DataPointer<Patient> m_patient{new Patient};
};

TEST_F(PatientSearchTest, AllWordsMustMatchInAnyOrder)
{
    rename("Ada Maria", "Lovelace");
    EXPECT_TRUE(finds("lovelace ada"));
    EXPECT_TRUE(finds("  love   mar "));
    EXPECT_TRUE(finds("Lovelace, Ada"));
    EXPECT_TRUE(finds("ada 1950"));
    EXPECT_FALSE(finds("ada 1951"));
    EXPECT_FALSE(finds("ada grace"));
    EXPECT_TRUE(finds(""));
}

TEST_F(PatientSearchTest, CaseAndAccentsDoNotMatter)
{
    rename(QString::fromUtf8("Jos\u00e9 \u00d8yvind"), QString::fromUtf8("M\u00fcller-Wei\u00df"));
    EXPECT_TRUE(finds("jose"));
    EXPECT_TRUE(finds("OYVIND"));
    EXPECT_TRUE(finds("muller"));
    EXPECT_TRUE(finds(QString::fromUtf8("M\u00dcLLER")));
    EXPECT_TRUE(finds("weiss"));
    EXPECT_TRUE(finds(QString::fromUtf8("wei\u00df")));
}

TEST_F(PatientSearchTest, ABirthDateIsFoundInEveryWrittenForm)
{
    rename("Ada", "Lovelace");
    for (const char* const form :
         {"1950-02-03", "19500203", "03.02.1950", "3.2.1950", "03/02/1950", "02/03/1950",
          "2/3/1950", "3.2.50", "3 February 1950", "Feb 3, 1950", "1950", "03.02.", "1950-02"}) {
        EXPECT_TRUE(finds(form)) << form;
    }
    EXPECT_TRUE(finds(displayDate(m_patient->getBirthDate())));
    for (const char* const form : {"1950-03-03", "4.2.1950", "50.02", "12.3.1950"}) {
        EXPECT_FALSE(finds(form)) << form;
    }
}

TEST_F(PatientSearchTest, ANumberIsFoundFromItsFirstDigitOnly)
{
    setDetails(*m_patient, {{"Ada", "L"}, QDate(1950, 2, 23), QString(), QString()});
    EXPECT_TRUE(finds("23.2.1950"));
    EXPECT_FALSE(finds("3.2.1950"));
}

TEST_F(PatientSearchTest, ThePatientIdIsFoundFromItsBeginning)
{
    rename("Quentin", "Xyz");
    const QString number = patientNumber(*m_patient);
    EXPECT_TRUE(finds(number));
    EXPECT_TRUE(finds(number.left(5).toLower()));
    EXPECT_FALSE(finds(number.mid(1) + "#"));
}

TEST_F(PatientSearchTest, WithoutABirthDateTheNameIsFoundAllTheSame)
{
    setDetails(*m_patient, {{"Ada", "Lovelace"}, QDate(), QString(), QString()});
    EXPECT_TRUE(finds("ada"));
    EXPECT_FALSE(finds("1950"));
}

} // namespace

#include "MaskFile.h"
#include "CommandFixture.h"
#include "kelpException.h"

using kelp::command::readMaskFile;

namespace {

class MaskFile : public kelp::command::test::CommandFixture
{
protected:
    QString failure(const QByteArray& content) const
    {
        write("mask.txt", content);
        try {
            readMaskFile(path("mask.txt"));
        } catch (const kelp::ParsingError& error) {
            return QString(error.what()).remove(path("mask.txt"));
        }
        return "none";
    }
};

TEST_F(MaskFile, ReadsOnePolygonALine)
{
    write("mask.txt", "# two of them\r\n1,2 3,4  5,6\r\n\n  \n-1.5,0\t0,1e-1 0,0 1,1");
    const auto polygons = readMaskFile(path("mask.txt"));
    ASSERT_EQ(polygons.size(), 2);
    EXPECT_TRUE(polygons[0] == QPolygonF({{1, 2}, {3, 4}, {5, 6}}));
    EXPECT_TRUE(polygons[1] == QPolygonF({{-1.5, 0}, {0, 0.1}, {0, 0}, {1, 1}}));
}

TEST_F(MaskFile, NamesTheLineThatDoesNotFit)
{
    EXPECT_EQ(failure("1,1 2,2 3,3\n#\n1,1 2,x 3,3\n"), ", line 3: \"x\" is not a number.");
    EXPECT_EQ(failure("1,1 2,2\n"), ", line 1: A polygon needs at least three corners.");
    EXPECT_EQ(failure("1,1 2 3,3\n"), ", line 1: \"2\" is not of the form x,y.");
    EXPECT_EQ(failure("1,1 2,2,2 3,3\n"), ", line 1: \"2,2,2\" is not of the form x,y.");
    EXPECT_EQ(failure("1,1 2,nan 3,3\n"), ", line 1: \"nan\" is not a number.");
}

TEST_F(MaskFile, RefusesAFileWithoutPolygons)
{
    EXPECT_EQ(failure("# nothing\n\n"), ": The file holds no polygon.");
    EXPECT_EQ(failure(""), ": The file holds no polygon.");
}

TEST_F(MaskFile, RefusesWhatCannotBeRead)
{
    EXPECT_THROW(readMaskFile(path("nothing")), kelp::IOFailure);
    EXPECT_THROW(readMaskFile(path(".")), kelp::IOFailure);
}

} // namespace

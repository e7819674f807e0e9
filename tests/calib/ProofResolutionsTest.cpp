#include "calib/ProofResolutions.h"
#include "common/ErrorLog.h"

#include "PrintQt.h"
#include "TempDir.h"

#include <gtest/gtest.h>
#include <QDir>

using namespace tavix;
using tavix::test::TempDir;

namespace {

class ProofResolutionsTest : public ::testing::Test {
protected:
    QString path() const { return dir.file(QStringLiteral("Proof.dat.res")); }
    QString log() const { return QString::fromUtf8(dir.read(QStringLiteral("Error.Log"))); }
    void read() { sizes.read(path(), errorLog); }
    void expectAllUnknown() const
    {
        for (int i = 0; i < ProofResolutions::Size; ++i)
            EXPECT_FALSE(sizes.at(i).isValid()) << i;
    }

    TempDir dir;
    ErrorLog errorLog{dir.file(QStringLiteral("Error.Log"))};
    ProofResolutions sizes;
};

TEST_F(ProofResolutionsTest, PathBeside_AddsResToTheCalibrationFilesName)
{
    EXPECT_EQ(ProofResolutions::pathBeside(QStringLiteral("/opt/t/Proof.dat")),
              QStringLiteral("/opt/t/Proof.dat.res"));
}

TEST_F(ProofResolutionsTest, MissingFile_LeavesEveryEntryUnknown_WithoutALogLine)
{
    sizes.set(3, {1280, 1024});
    read();
    expectAllUnknown();
    EXPECT_FALSE(dir.exists(QStringLiteral("Error.Log")));
}

TEST_F(ProofResolutionsTest, OneLinePerEntry_InIndexOrder_EmptyLinesUnknown)
{
    dir.write(QStringLiteral("Proof.dat.res"), "1280x1024\r\n\r\n2592x1944\r\n");
    read();
    EXPECT_EQ(sizes.at(0), QSize(1280, 1024));
    EXPECT_FALSE(sizes.at(1).isValid());
    EXPECT_EQ(sizes.at(2), QSize(2592, 1944));
    EXPECT_FALSE(dir.exists(QStringLiteral("Error.Log")));
}

TEST_F(ProofResolutionsTest, EntriesPastTheEndOfTheFile_AreUnknown)
{
    dir.write(QStringLiteral("Proof.dat.res"), "640x480\r\n");
    read();
    EXPECT_EQ(sizes.at(0), QSize(640, 480));
    for (int i = 1; i < ProofResolutions::Size; ++i)
        EXPECT_FALSE(sizes.at(i).isValid()) << i;
}

TEST_F(ProofResolutionsTest, LinesPastTheLastEntry_AreIgnored)
{
    QByteArray text;
    for (int i = 0; i < ProofResolutions::Size; ++i)
        text += "800x600\r\n";
    text += "1024x768\r\nnot a size\r\n";
    dir.write(QStringLiteral("Proof.dat.res"), text);
    read();
    EXPECT_EQ(sizes.at(19), QSize(800, 600));
    EXPECT_FALSE(dir.exists(QStringLiteral("Error.Log")));
}

TEST_F(ProofResolutionsTest, LfLineEnds_AndBlanksAroundTheNumbers_AreRead)
{
    dir.write(QStringLiteral("Proof.dat.res"), "\xEF\xBB\xBF 1280 x 1024 \n752X480\n");
    read();
    EXPECT_EQ(sizes.at(0), QSize(1280, 1024));
    EXPECT_EQ(sizes.at(1), QSize(752, 480));
}

TEST_F(ProofResolutionsTest, BrokenLine_LeavesEveryEntryUnknown_AndIsLoggedOnce)
{
    dir.write(QStringLiteral("Proof.dat.res"), "1280x1024\r\n1280 by 1024\r\nrubbish\r\n");
    read();
    expectAllUnknown();
    EXPECT_EQ(log().count(QStringLiteral("Proof Resolution File Read Error.(2)")), 1) << log().toStdString();
    EXPECT_EQ(log().count(QLatin1Char('\n')), 1) << log().toStdString();
}

TEST_F(ProofResolutionsTest, ZeroWidth_IsBroken)
{
    EXPECT_FALSE(sizes.parse(QStringLiteral("0x480\r\n")));
    EXPECT_EQ(sizes.badLine(), 1);
    expectAllUnknown();
}

TEST_F(ProofResolutionsTest, HugeSide_IsBroken)
{
    EXPECT_FALSE(sizes.parse(QStringLiteral("\r\n99999x480\r\n")));
    EXPECT_EQ(sizes.badLine(), 2);
}

TEST_F(ProofResolutionsTest, UnreadableFile_LeavesEveryEntryUnknown_AndIsLogged)
{
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("Proof.dat.res")));
    read();
    expectAllUnknown();
    EXPECT_TRUE(log().contains(QStringLiteral("Proof Resolution File Read Error.(0)")))
        << log().toStdString();
}

TEST_F(ProofResolutionsTest, Write_GivesTwentyCrLfLines_AndReadsBackTheSame)
{
    sizes.set(0, {1280, 1024});
    sizes.set(7, {2592, 1944});
    sizes.set(19, {640, 480});
    ASSERT_EQ(sizes.write(path()), 0);
    const QByteArray text = dir.read(QStringLiteral("Proof.dat.res"));
    EXPECT_EQ(text.count("\r\n"), 20);
    EXPECT_EQ(text.count('\n'), 20);
    EXPECT_TRUE(text.startsWith("1280x1024\r\n\r\n"));
    EXPECT_TRUE(text.endsWith("640x480\r\n"));

    ProofResolutions back;
    back.read(path(), errorLog);
    for (int i = 0; i < ProofResolutions::Size; ++i)
        EXPECT_EQ(back.at(i), sizes.at(i)) << i;
}

TEST_F(ProofResolutionsTest, WriteIntoAMissingFolder_Fails_AndWritesNothing)
{
    const QString missing = dir.file(QStringLiteral("gone/Proof.dat.res"));
    EXPECT_NE(sizes.write(missing), 0);
    EXPECT_FALSE(QFileInfo::exists(missing));
}

TEST_F(ProofResolutionsTest, IndexOutsideTheTable_IsUnknown_AndNotStored)
{
    sizes.set(20, {640, 480});
    sizes.set(-1, {640, 480});
    EXPECT_FALSE(sizes.at(20).isValid());
    EXPECT_FALSE(sizes.at(-1).isValid());
    expectAllUnknown();
}

TEST_F(ProofResolutionsTest, EmptySize_IsStoredAsUnknown)
{
    sizes.set(4, {1280, 1024});
    sizes.set(4, QSize(0, 0));
    EXPECT_FALSE(sizes.at(4).isValid());
}

}  // namespace

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

// --- the sensor geometry and camera after the resolution ---

const PictureGeometry kBinned{QSize(1024, 768), ModeGeometry{2, QRectF(0, 256, 2048, 1536)},
                              QStringLiteral("genicam/Aravis-Fake-GV01")};

TEST_F(ProofResolutionsTest, Geometry_IsWrittenAfterTheResolution_AndReadsBackTheSame)
{
    sizes.set(0, kBinned);
    const PictureGeometry sim{QSize(2592, 1944), ModeGeometry{3840.0 / 2592, QRectF(0, 96, 3840, 2880)},
                              QStringLiteral("sim/SimCam 1296")};
    sizes.set(1, sim);
    sizes.set(2, QSize(640, 480));
    ASSERT_EQ(sizes.write(path()), 0);
    const QByteArray text = dir.read(QStringLiteral("Proof.dat.res"));
    EXPECT_TRUE(
        text.startsWith("1024x768 px=2 field=0,256,2048,1536 cam=genicam/Aravis-Fake-GV01\r\n"
                        "2592x1944 px=1.4814814814814814 field=0,96,3840,2880 cam=sim/SimCam 1296\r\n"
                        "640x480\r\n"))
        << text.toStdString();
    ProofResolutions back;
    back.read(path(), errorLog);
    EXPECT_EQ(back.geometry(0), kBinned);
    EXPECT_EQ(back.geometry(1), sim);  // exactly: 17 digits
    EXPECT_EQ(back.geometry(2), PictureGeometry(QSize(640, 480)));
    EXPECT_EQ(back.at(0), QSize(1024, 768));
    EXPECT_FALSE(dir.exists(QStringLiteral("Error.Log")));
}

// Files written before the geometry was kept hold the resolution alone.
TEST_F(ProofResolutionsTest, OldLines_ReadAsResolutionsWithoutGeometry)
{
    dir.write(QStringLiteral("Proof.dat.res"), "1280x1024\r\n\r\n1024x768 px=2 cam=genicam/a b\r\n");
    read();
    EXPECT_EQ(sizes.geometry(0), PictureGeometry(QSize(1280, 1024)));
    EXPECT_FALSE(sizes.geometry(0).mode.has_value());
    EXPECT_EQ(sizes.geometry(2).mode, (ModeGeometry{2, QRectF()}));
    EXPECT_EQ(sizes.geometry(2).camera, QStringLiteral("genicam/a b"));
}

TEST_F(ProofResolutionsTest, UnknownKeys_ArePassedOver)
{
    ASSERT_TRUE(sizes.parse(QStringLiteral("1280x1024 tilt=3 px=1 field=0,0,1280,1024\n")));
    EXPECT_EQ(sizes.geometry(0).mode, (ModeGeometry{1, QRectF(0, 0, 1280, 1024)}));
    EXPECT_TRUE(sizes.geometry(0).camera.isEmpty());
}

TEST_F(ProofResolutionsTest, BadGeometry_IsABrokenLine)
{
    for (const char* line :
         {"1280x1024 px=0", "1280x1024 px=two", "1280x1024 px=1 field=0,0,1280",
          "1280x1024 px=1 field=0,0,0,1024", "1280x1024 px=1 junk", "1280x1024px=1", "1280x1024 px=nan"}) {
        EXPECT_FALSE(sizes.parse(QStringLiteral("640x480\n") + QLatin1String(line))) << line;
        EXPECT_EQ(sizes.badLine(), 2) << line;
        expectAllUnknown();
    }
}

TEST_F(ProofResolutionsTest, BrokenGeometry_LeavesEveryEntryUnknown_AndIsLogged)
{
    dir.write(QStringLiteral("Proof.dat.res"), "1024x768 px=2 cam=genicam/x\r\n1280x1024 px=-1\r\n");
    read();
    expectAllUnknown();
    EXPECT_TRUE(log().contains(QStringLiteral("Proof Resolution File Read Error.(2)")))
        << log().toStdString();
}

TEST_F(ProofResolutionsTest, CameraWithALineBreak_IsWrittenOnOneLine)
{
    sizes.set(0, PictureGeometry(QSize(640, 480), ModeGeometry{1, QRectF()}, QStringLiteral("graph/a\nb")));
    EXPECT_TRUE(sizes.toFileText().startsWith("640x480 px=1 cam=graph/a b\r\n"))
        << sizes.toFileText().toStdString();
}

TEST_F(ProofResolutionsTest, EmptySize_ForgetsTheGeometryToo)
{
    sizes.set(4, kBinned);
    sizes.set(4, PictureGeometry(QSize(), kBinned.mode, kBinned.camera));
    EXPECT_EQ(sizes.geometry(4), PictureGeometry());
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

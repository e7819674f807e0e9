#include "TempDir.h"
#include "camera/graph/GraphFile.h"

#include <gtest/gtest.h>

#undef signals
#include <gst/gst.h>

using namespace tavix;
using tavix::test::TempDir;

namespace {

class GraphFileTest : public ::testing::Test {
protected:
    // Loads `description` as the graph file with the camera named "Camera".
    bool load(const QByteArray& description)
    {
        file = std::make_unique<GraphFile>(dir.write(QStringLiteral("Camera.grf"), description),
                                           QStringLiteral("Camera"),
                                           [this](const QString& line) { logged.append(line); });
        return file->LoadGrfFile();
    }

    TempDir dir;
    QStringList logged;
    std::unique_ptr<GraphFile> file;
};

QString nameOf(GstObject* object)
{
    gchar* name = gst_object_get_name(object);
    const QString text = QString::fromUtf8(name);
    g_free(name);
    return text;
}

}  // namespace

TEST_F(GraphFileTest, FindsTheCameraElement_AndItsFirstSourcePad_WithoutStartingThePipeline)
{
    ASSERT_TRUE(
        load("videotestsrc name=Other ! fakesink\nvideotestsrc name=Camera ! videoconvert ! fakesink"));
    EXPECT_TRUE(logged.isEmpty());
    EXPECT_EQ(file->errorNumber(), 0);
    ASSERT_NE(file->cameraFilter(), nullptr);
    EXPECT_EQ(nameOf(GST_OBJECT(file->cameraFilter())), QStringLiteral("Camera"));
    ASSERT_NE(file->outputPin(), nullptr);
    EXPECT_EQ(GST_PAD_DIRECTION(file->outputPin()), GST_PAD_SRC);
    EXPECT_EQ(nameOf(GST_OBJECT(file->outputPin())), QStringLiteral("src"));
    EXPECT_EQ(GST_STATE(file->graph()), GST_STATE_NULL);
}

TEST_F(GraphFileTest, ASingleElement_IsPutInAPipeline_AndCommentLinesAreSkipped)
{
    ASSERT_TRUE(load("# the first camera\n  # indented comment\nvideotestsrc\n  name=Camera\n"));
    EXPECT_TRUE(GST_IS_PIPELINE(file->graph()));
    EXPECT_EQ(GST_ELEMENT_PARENT(file->cameraFilter()), file->graph());
}

TEST_F(GraphFileTest, AFileThatCannotBeParsed_LogsTheErrorLine_WithGStreamersText_AndKeepsNothing)
{
    EXPECT_FALSE(load("videotestsrc name=Camera ! ! fakesink"));
    ASSERT_EQ(logged.size(), 2);
    EXPECT_EQ(logged[0], QStringLiteral("LoadGrfFile Error.(5)"));
    EXPECT_TRUE(logged[1].startsWith(QStringLiteral("LoadGrfFile: "))) << logged[1].toStdString();
    EXPECT_EQ(file->errorNumber(), 5);
    EXPECT_EQ(file->graph(), nullptr);
    EXPECT_EQ(file->cameraFilter(), nullptr);
}

TEST_F(GraphFileTest, AnElementGStreamerDoesNotHave_IsAParseError)
{
    EXPECT_FALSE(load("nosuchcamerasource name=Camera"));
    EXPECT_EQ(logged.value(0), QStringLiteral("LoadGrfFile Error.(5)"));
    EXPECT_TRUE(logged.value(1).contains(QStringLiteral("nosuchcamerasource")))
        << logged.value(1).toStdString();
}

TEST_F(GraphFileTest, AnEmptyFile_IsAParseError)
{
    EXPECT_FALSE(load("# nothing but a comment\n"));
    EXPECT_EQ(logged.value(0), QStringLiteral("LoadGrfFile Error.(5)"));
}

TEST_F(GraphFileTest, AMissingFile_LogsFileNotFound)
{
    GraphFile missing(dir.file(QStringLiteral("None.grf")), QStringLiteral("Camera"),
                      [this](const QString& line) { logged.append(line); });
    EXPECT_FALSE(missing.LoadGrfFile());
    EXPECT_EQ(logged.value(0), QStringLiteral("LoadGrfFile Error.(53)"));
    EXPECT_EQ(missing.errorNumber(), 53);
}

TEST_F(GraphFileTest, ANameThatMatchesNothing_LogsFilerNotFound)
{
    EXPECT_FALSE(load("videotestsrc name=Webcam ! fakesink"));
    EXPECT_EQ(logged, QStringList{QStringLiteral("LoadGrfFile:Camera Filer Not Found.")});
    EXPECT_EQ(file->cameraFilter(), nullptr);
    EXPECT_EQ(file->graph(), nullptr);
}

TEST_F(GraphFileTest, ACameraElementWithNoSourcePad_LogsOutputPinNotFound_AndKeepsNoFilter)
{
    EXPECT_FALSE(load("videotestsrc ! fakesink name=Camera"));
    EXPECT_EQ(logged, QStringList{QStringLiteral("LoadGrfFile:Camera OutputPIN Not Found.")});
    EXPECT_EQ(file->cameraFilter(), nullptr);
    EXPECT_EQ(file->outputPin(), nullptr);
}

TEST_F(GraphFileTest, FindFilter_SearchesInsideBins_AndAnswersNullForAnUnknownName)
{
    ASSERT_TRUE(load("( videotestsrc name=Camera ! fakesink )"));
    GstElement* found = GraphFile::findFilter(file->graph(), QStringLiteral("Camera"));
    EXPECT_EQ(found, file->cameraFilter());
    gst_object_unref(found);
    EXPECT_EQ(GraphFile::findFilter(file->graph(), QStringLiteral("Nobody")), nullptr);
}

TEST_F(GraphFileTest, DevicePath_IsTheCameraElementsDeviceProperty)
{
    ASSERT_TRUE(load("v4l2src device=/dev/video7 name=Camera"));
    EXPECT_EQ(file->devicePath(), QStringLiteral("/dev/video7"));
    ASSERT_TRUE(load("videotestsrc name=Camera"));
    EXPECT_EQ(file->devicePath(), QString());
}

TEST_F(GraphFileTest, DeviceSource_IsTheV4l2SourceUpstreamOfTheCameraElement_WhereverItStands)
{
    ASSERT_TRUE(load("v4l2src device=/dev/video9 ! queue ! videoconvert ! identity name=Camera ! fakesink"));
    GstElement* source = file->deviceSource();
    ASSERT_NE(source, nullptr);
    EXPECT_STREQ(gst_plugin_feature_get_name(GST_PLUGIN_FEATURE(gst_element_get_factory(source))), "v4l2src");
    EXPECT_EQ(file->devicePath(), QStringLiteral("/dev/video9"));
    ASSERT_TRUE(load("v4l2src device=/dev/video3 name=Camera"));
    EXPECT_EQ(file->deviceSource(), file->cameraFilter());
    ASSERT_TRUE(load("videotestsrc ! identity name=Camera"));
    EXPECT_EQ(file->deviceSource(), nullptr);
}

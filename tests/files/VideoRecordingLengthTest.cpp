#include "files/VideoRecording.h"

#include <gtest/gtest.h>

namespace tavix {
namespace {

TEST(VideoRecordingLengthTest, Usable1Point9Gigabytes_AllowsNoRecording)
{
    EXPECT_EQ(VideoRecording::longestLength(1.9), 0);
}

TEST(VideoRecordingLengthTest, UsableExactly2Gigabytes_Allows60Seconds)
{
    EXPECT_EQ(VideoRecording::longestLength(2.0), 60);
}

TEST(VideoRecordingLengthTest, Usable5Point9Gigabytes_Allows120Seconds)
{
    // The integer part of 2.95 is 2.
    EXPECT_EQ(VideoRecording::longestLength(5.9), 120);
}

TEST(VideoRecordingLengthTest, Usable31Gigabytes_Allows900Seconds)
{
    EXPECT_EQ(VideoRecording::longestLength(31.0), 900);
}

TEST(VideoRecordingLengthTest, Usable30Gigabytes_Allows900Seconds_By15Minutes)
{
    EXPECT_EQ(VideoRecording::longestLength(30.0), 900);
}

TEST(VideoRecordingLengthTest, UsableSpace_Is70PercentOfTheFreeBytes_InBinaryGigabytes)
{
    EXPECT_DOUBLE_EQ(VideoRecording::usableGigabytes(10LL * 1073741824), 7.0);
    EXPECT_DOUBLE_EQ(VideoRecording::usableGigabytes(0), 0.0);
    EXPECT_DOUBLE_EQ(VideoRecording::usableGigabytes(-1), 0.0);  // an unknown drive
}

}  // namespace
}  // namespace tavix

TEST(VideoRecordingLengthTest, LengthText_IsDigitsOnly_AsInTheSeriesDialog)
{
    EXPECT_EQ(tavix::VideoRecording::parseLength(QStringLiteral(" 900 "), 900), 900);
    EXPECT_EQ(tavix::VideoRecording::parseLength(QStringLiteral("5"), 900), 5);
    for (const char* refused : {"+5", "-5", "5.0", "1e2", "5 0", "", "abc", "901", "0"})
        EXPECT_EQ(tavix::VideoRecording::parseLength(QString::fromLatin1(refused), 900), 0) << refused;
}

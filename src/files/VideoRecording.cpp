#include "files/VideoRecording.h"

#include "camera/CameraDriver.h"
#include "camera/CameraSession.h"
#include "common/ErrorLog.h"
#include "common/MessageLine.h"
#include "common/MessageTable.h"
#include "common/Prompter.h"
#include "common/Settings.h"
#include "files/PictureFiles.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>
#include <algorithm>
#include <cmath>

namespace tavix {

qint64 VideoRecording::systemFreeSpace(const QString& filePath)
{
    return QStorageInfo(QFileInfo(filePath).absolutePath()).bytesAvailable();
}

double VideoRecording::usableGigabytes(qint64 freeBytes)
{
    return static_cast<double>(std::max<qint64>(freeBytes, 0)) / 1073741824.0 * 0.7;
}

qint16 VideoRecording::longestLength(double usableGigabytes)
{
    if (usableGigabytes < 2)
        return 0;
    if (usableGigabytes > 30)
        return kLongest;
    return static_cast<qint16>(std::floor(usableGigabytes / 2) * 60);
}

qint16 VideoRecording::parseLength(const QString& text, qint16 longest)
{
    // Digits only, as the series dialog takes them: no sign, no point, no blanks inside.
    const QString t = text.trimmed();
    if (t.isEmpty() || t.size() > 5 || !std::all_of(t.begin(), t.end(), [](QChar c) {
            return c >= QLatin1Char('0') && c <= QLatin1Char('9');
        }))
        return 0;
    const int value = t.toInt();
    return value > 0 && value <= longest ? static_cast<qint16>(value) : 0;
}

VideoRecording::VideoRecording(const Settings& settings, const MessageTable& messages, const ErrorLog& log,
                               Prompter& prompter, CameraSession& camera, MessageLine& line,
                               const ResultTableState& results, Window window)
    : settings_(settings),
      messages_(messages),
      log_(log),
      prompter_(prompter),
      camera_(camera),
      line_(line),
      results_(results),
      window_(std::move(window))
{
}

void VideoRecording::begin(const QString& fileName)
{
    const qint16 longest = longestLength(usableGigabytes(freeSpace_(fileName)));
    if (longest == 0) {
        prompter_.message(
            {messages_.text(kMsgNoSpace), messages_.text(kMsgNoSpaceTitle), Prompter::Icon::Exclamation});
        return;
    }
    qint16 length = longest;
    window_.askLength(length);
    if (length == 0)
        return;
    if (PictureFiles::loadNeedsQuestion(results_, settings_.KEEPRESULT) &&
        !prompter_.askYesNo(messages_.text(kMsgLoseResults), messages_.text(kMsgLoseResultsTitle)))
        return;

    fileName_ = fileName;
    recordLength_ = length;
    // What is recorded is the live stream: the user watches it from the moment he arms.
    if (window_.showLive)
        window_.showLive();
    window_.setCommandAreasEnabled(false);
    window_.showButton(ButtonLook::Record);
    window_.setRunState(kArmed);
    line_.show(messages_.text(kMsgArmed, recordLength_), CommentBox::Tint::Recording);
}

void VideoRecording::playStopClicked(qint16 runState)
{
    if (runState == kArmed)
        start();
    else if (runState == kRecording)
        close();
}

void VideoRecording::start()
{
    window_.showButton(ButtonLook::Recording);
    window_.setButtonEnabled(false);
    line_.show(countdownText(), CommentBox::Tint::Recording);
    window_.setRunState(kRecording);
    window_.setTimerRunning(true);
    const int status = camera_.driver().SaveAvi(camera_.camera(), fileName_, 0, recordLength_);
    if (status != 0) {
        log_.write(QStringLiteral("Error: ICubeSDK_SaveAvi(%1)").arg(status));
        // No countdown behind the open report; the next tick after it ends the recording.
        window_.setTimerRunning(false);
        prompter_.message({messages_.text(kMsgCameraError, status), messages_.text(kMsgCameraErrorTitle),
                           Prompter::Icon::Critical});
        camera_.closeCamera();
        window_.setTimerRunning(true);
    }
}

void VideoRecording::tmrRec_Timer()
{
    --recordLength_;
    // Below zero the line stays the recording's, blank, until the camera reports the end.
    line_.show(recordLength_ >= 0 ? countdownText() : QString(), CommentBox::Tint::Recording);

    std::int32_t writing = 0;
    if (camera_.driver().GetCamParameter(camera_.camera(), kParamAviWriting, writing) != 0)
        writing = 0;
    if (writing != 0)
        return;
    ended();
}

void VideoRecording::ended()
{
    window_.setTimerRunning(false);
    window_.setButtonEnabled(true);
    // Drivers whose frames the program records report how it went.
    RecordingStats stats;
    if (camera_.driver().recordingStats(camera_.camera(), stats) && stats.finished) {
        const QString figures = QStringLiteral("%1 s, %2 frames written, %3 dropped")
                                    .arg(stats.seconds, 0, 'f', 1)
                                    .arg(stats.framesWritten)
                                    .arg(stats.framesDropped);
        const QString file = QDir::toNativeSeparators(stats.path);
        if (stats.failure.isEmpty())
            log_.write(QStringLiteral("Recorded %1: %2").arg(file, figures));
        else
            log_.write(
                QStringLiteral("Recording stopped early: %1: %2 (%3)").arg(file, stats.failure, figures));
        QStringList notes;
        if (!stats.failure.isEmpty())
            notes << messages_.text(kMsgStoppedEarly, stats.failure);
        if (stats.framesDropped > 0)
            notes << messages_.text(kMsgDropped, static_cast<qlonglong>(stats.framesDropped));
        if (!notes.isEmpty())
            line_.show(notes.join(QLatin1Char(' ')), CommentBox::Tint::Recording);
    }
    prompter_.message(
        {messages_.text(kMsgEnded), messages_.text(kMsgEndedTitle), Prompter::Icon::Information});
}

void VideoRecording::close()
{
    line_.clear();
    window_.setRunState(kIdle);
    window_.setCommandAreasEnabled(true);
    window_.setTimerRunning(false);
    window_.setButtonEnabled(true);
}

QString VideoRecording::countdownText() const
{
    QString text = messages_.text(kMsgCountdown, recordLength_);
    const qint64 dropped = framesDropped();
    if (dropped > 0)
        text += QLatin1Char(' ') + messages_.text(kMsgDropped, static_cast<qlonglong>(dropped));
    return text;
}

qint64 VideoRecording::framesDropped() const
{
    // A finished recording's figures belong to the one before.
    RecordingStats stats;
    return camera_.driver().recordingStats(camera_.camera(), stats) && !stats.finished ? stats.framesDropped
                                                                                       : 0;
}

}  // namespace tavix

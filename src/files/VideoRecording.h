#pragma once

#include <QString>
#include <functional>

namespace tavix {

class CameraSession;
class ErrorLog;
class MessageLine;
class MessageTable;
class Prompter;
class ResultTableState;
struct Settings;

// Recording the live stream to an AVI file: the length limit from the free
// disk space, arming cmdPlayStop as the record button, the start, the
// once-a-second countdown (tmrRec) until the camera reports the file written,
// and the closing click. What only a window can do (the length dialog, the
// button's look, the command areas, the timer) is asked through Window.
class VideoRecording {
public:
    static constexpr qint32 kMsgNoSpace = 20032, kMsgNoSpaceTitle = 11033;
    static constexpr qint32 kMsgLoseResults = 20030, kMsgLoseResultsTitle = 11032;
    static constexpr qint32 kMsgArmed = 20033;      // "@" = the length
    static constexpr qint32 kMsgCountdown = 29010;  // "@" = the seconds to go
    static constexpr qint32 kMsgDropped = 29011;    // "@" = frames dropped
    static constexpr qint32 kMsgStoppedEarly = 29012;
    static constexpr qint32 kMsgEnded = 20150, kMsgEndedTitle = 11150;
    static constexpr qint32 kMsgBadLength = 26004, kMsgBadLengthTitle = 26003;
    static constexpr qint32 kMsgCameraError = 26999, kMsgCameraErrorTitle = 26998;
    static constexpr qint32 kCaptionRecord = 11034, kCaptionRecording = 11051;
    // Camera parameter that stays non-zero while the AVI file is written.
    static constexpr int kParamAviWriting = 24;
    static constexpr qint16 kLongest = 900;  // seconds

    // The run states of cmdPlayStop this class moves through.
    static constexpr qint16 kIdle = 0, kArmed = 1, kRecording = 2;

    // Free bytes of the drive that holds a file; injectable for tests.
    using FreeSpace = std::function<qint64(const QString& filePath)>;
    static qint64 systemFreeSpace(const QString& filePath);

    // 70 % of the free bytes, in gigabytes of 2^30 bytes.
    static double usableGigabytes(qint64 freeBytes);
    // One minute per 2 GB usable, at most 900 s; 0 below 2 GB (no recording).
    static qint16 longestLength(double usableGigabytes);
    // The typed length, trimmed: a whole number 1..longest, else 0.
    static qint16 parseLength(const QString& text, qint16 longest);

    enum class ButtonLook { Record, Recording };

    struct Window {
        // frmiCubeSaveAvi: in the longest length, out the chosen one (0 on Cancel).
        std::function<void(qint16& length)> askLength;
        std::function<void(qint16)> setRunState;
        std::function<void(bool)> setCommandAreasEnabled;
        std::function<void(ButtonLook)> showButton;  // caption and picture of cmdPlayStop
        std::function<void(bool)> setButtonEnabled;
        std::function<void(bool)> setTimerRunning;  // tmrRec
        std::function<void()> showLive;             // back to the live picture from a still
    };

    VideoRecording(const Settings& settings, const MessageTable& messages, const ErrorLog& log,
                   Prompter& prompter, CameraSession& camera, MessageLine& line,
                   const ResultTableState& results, Window window);

    // The picture-save dialog chose a name ending in "AVI".
    void begin(const QString& fileName);
    // cmdPlayStop clicked while armed (start) or recording (close).
    void playStopClicked(qint16 runState);
    // One tmrRec tick.
    void tmrRec_Timer();

    void setFreeSpace(FreeSpace freeSpace) { freeSpace_ = std::move(freeSpace); }
    qint16 recordLength() const { return recordLength_; }
    const QString& fileName() const { return fileName_; }

private:
    void start();
    void close();
    void ended();
    QString countdownText() const;
    qint64 framesDropped() const;

    const Settings& settings_;
    const MessageTable& messages_;
    const ErrorLog& log_;
    Prompter& prompter_;
    CameraSession& camera_;
    MessageLine& line_;
    const ResultTableState& results_;
    Window window_;
    FreeSpace freeSpace_ = systemFreeSpace;
    QString fileName_;
    qint16 recordLength_ = 0;
};

}  // namespace tavix

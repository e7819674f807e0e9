#pragma once

#include <QString>
#include <QtGlobal>

namespace tavix {

struct Settings;

// The rules of cmdIS_Save that need neither camera nor window: the ranges of
// the series settings, the checks of the series dialog, the file names of a
// series and of quick saves, and the progress text.
class IntervalSave {
public:
    static constexpr qint32 kMinInterval = 3, kMaxInterval = 5940;  // seconds
    static constexpr qint16 kMinImages = 2, kMaxImages = 999;
    static constexpr int kMaxMinutes = 99, kMaxSeconds = 59;
    static constexpr int kMaxQuickNumber = 9999;

    // IS_MODE.
    static constexpr qint16 kModeSeries = 0, kModeQuick = 1;

    // Message ids.
    static constexpr qint32 kMsgFileTitle = 11031;
    static constexpr qint32 kMsgResultsQuestion = 20030, kMsgResultsTitle = 11032;
    static constexpr qint32 kMsgStop = 11040, kMsgFreeze = 11051;
    static constexpr qint32 kMsgIntervalText = 30006, kMsgIntervalTitle = 30007;
    static constexpr qint32 kMsgCountText = 30008, kMsgCountTitle = 30009;
    static constexpr qint32 kMsgCameraFailed = 30011, kMsgCameraFailedTitle = 30012;
    static constexpr qint32 kMsgDone = 30013, kMsgDoneTitle = 30014;
    static constexpr qint32 kMsgNoFolder = 30025, kMsgFolderFull = 30026;

    // INTERVALTIME into 3..5940 and NUMBEROFIMAGES into 2..999.
    static void forceRanges(Settings& settings);

    // The check of the series dialog's three boxes.
    struct ConfigCheck {
        enum class Box { None, Minutes, Seconds, Count };
        Box failed = Box::None;  // the box that takes the focus
        qint32 text = 0, title = 0;
        qint32 interval = 0;  // seconds, when every box passed
        qint16 count = 0;
    };
    static ConfigCheck checkConfig(const QString& minutes, const QString& seconds, const QString& count);

    // "003/010 saved. The next picture is saved in 1min05sec."
    static QString statusText(qint32 saved, qint32 total, qint32 remainingSeconds);

    // A series file name: its last four characters are the extension, the
    // rest the base, whatever the extension's real length.
    struct SeriesName {
        QString base;
        QString extension;
    };
    static SeriesName splitSeriesName(const QString& fileName);
    // base + "_" + the count in three digits + extension.
    static QString seriesFile(const QString& base, qint32 count, const QString& extension);

    // The quick-save folder, trimmed and ending in a separator.
    static QString quickFolder(const QString& path);
    // One above the highest four-digit "NNNN.jpg" in the folder, counted down
    // from 9999; 1 when there is none; kMaxQuickNumber + 1 when 9999 exists.
    static int nextQuickNumber(const QString& folder);
    static QString quickNumberText(int number);
};

}  // namespace tavix

#include "camera/StillCapture.h"

#include "camera/CameraDriver.h"
#include "common/Clock.h"
#include "common/ErrorLog.h"
#include "common/MessageTable.h"
#include "common/Prompter.h"

#include <QFile>
#include <QFileInfo>

namespace tavix {

StillCapture::StillCapture(CameraDriver& driver, const ErrorLog& log, const MessageTable& messages,
                           Prompter& prompter, Clock& clock, Reader reader)
    : driver_(driver),
      log_(log),
      messages_(messages),
      prompter_(prompter),
      clock_(clock),
      reader_(std::move(reader))
{
}

bool StillCapture::capture(int camera, const QString& tempBitmap, int waitMs, QImage& still)
{
    // The last still's file must go first: otherwise it would be read back as
    // the new one before the camera has written anything.
    if (QFileInfo::exists(tempBitmap))
        QFile::remove(tempBitmap);
    if (const int r = driver_.SaveToFile(camera, tempBitmap); r != 0) {
        log_.write(QStringLiteral("Error: ICubeSDK_SaveToFile(%1)").arg(r));
        prompter_.message({messages_.text(26999, r), messages_.text(26998), Prompter::Icon::Critical});
        return false;
    }
    return load(tempBitmap, driver_.savesInBackground() ? waitMs : 0, still);
}

bool StillCapture::reload(const QString& tempBitmap, QImage& still)
{
    return load(tempBitmap, 0, still);
}

bool StillCapture::load(const QString& path, int waitMs, QImage& still)
{
    // A camera that writes the file in the background may need a moment: the
    // file is read again until it is complete or the wait is over. A
    // synchronous one has finished already, so nothing waits for it.
    const qint64 deadline = clock_.tickMs() + (waitMs > 0 ? waitMs : 0);
    int number = 0;
    for (;;) {
        number = reader_(path, scratch_);
        if (number == 0) {
            std::swap(still, scratch_);
            return true;
        }
        if (clock_.tickMs() >= deadline)
            break;
        clock_.sleepMs(5);
    }
    ++displayErrors_;
    log_.write(QStringLiteral("Error:DispImage Error(Err=%1 / Num=%2)").arg(number).arg(displayErrors_));
    return false;
}

}  // namespace tavix

#include "app/QtPrompter.h"
#include "app/frmMain.h"
#include "camera/CameraFactory.h"
#include "common/CameraDrivers.h"
#include "common/Clock.h"
#include "common/ProgramFolder.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QScreen>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tavix"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Live view, still pictures and measurement for cameras."));
    parser.addHelpOption();
    QCommandLineOption home(QStringLiteral("home"), QStringLiteral("The program folder (holds Tavix.Ini)."),
                            QStringLiteral("DIR"));
    QCommandLineOption camera(
        QStringLiteral("camera"),
        QStringLiteral("Camera driver: %1.").arg(tavix::kCameraDrivers.join(QStringLiteral(", "))),
        QStringLiteral("NAME"));
    parser.addOption(home);
    parser.addOption(camera);
    parser.process(app);

    const QString folder =
        tavix::ProgramFolder::resolve(tavix::ProgramFolder::fromEnvironment(parser.value(home)));
    tavix::QtPrompter prompter;
    tavix::SystemClock clock;
    const QString cameraOption = parser.value(camera);
    auto driverFactory = [&cameraOption](tavix::AppData& data) {
        auto choice = tavix::CameraFactory::create(
            cameraOption.isEmpty() ? data.settings.DRIVER : cameraOption, data.folder,
            [log = data.log](const QString& line) { log.write(line); },
            {data.graphPath(), data.settings.CAMERAFILTERNAME});
        if (!choice.note.isEmpty())
            data.log.write(choice.note);
        return std::move(choice.driver);
    };
    tavix::frmMain window(folder, prompter, clock, driverFactory);
    prompter.setParent(&window);
    if (!window.Form_Load())
        return 1;
    // A comfortable first size on the screen, never below the window's minimum.
    if (const QScreen* screen = window.screen()) {
        const QSize room = screen->availableSize() * 0.9;
        window.resize(window.minimumSize().expandedTo(room.boundedTo(QSize(1600, 1000))));
    }
    window.show();
    return QApplication::exec();
}

#include "common/CommandLine.h"

#include "common/CameraDrivers.h"

#include <QCommandLineParser>

namespace tavix {

CommandLine CommandLine::parse(const QStringList& arguments, const QString& version)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Live view, still pictures and measurement for cameras."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this help and exit."));
    const QCommandLineOption versionOption({QStringLiteral("v"), QStringLiteral("version")},
                                           QStringLiteral("Show the program's version and exit."));
    const QCommandLineOption home(QStringLiteral("home"),
                                  QStringLiteral("Use DIR as the program folder (holds Tavix.Ini)."),
                                  QStringLiteral("DIR"));
    const QCommandLineOption camera(QStringLiteral("camera"),
                                    QStringLiteral("Camera driver: %1 (overrides DRIVER in Tavix.Ini).")
                                        .arg(kCameraDrivers.join(QStringLiteral(", "))),
                                    QStringLiteral("NAME"));
    const QCommandLineOption listCameras(
        QStringLiteral("list-cameras"),
        QStringLiteral("List the cameras found (driver, id, name, port) and exit."));
    parser.addOptions({help, versionOption, home, camera, listCameras});
    parser.addPositionalArgument(QStringLiteral("picture"),
                                 QStringLiteral("A bitmap or JPEG picture to open as the still."),
                                 QStringLiteral("[picture]"));

    CommandLine line;
    const QString program = QStringLiteral("tavix");
    if (!parser.parse(arguments)) {
        line.action = Action::Error;
        line.output =
            QStringLiteral("%1: %2\nTry '%1 --help' for the options.\n").arg(program, parser.errorText());
        return line;
    }
    if (parser.isSet(help)) {
        line.action = Action::Help;
        line.output = parser.helpText();
        return line;
    }
    if (parser.isSet(versionOption)) {
        line.action = Action::Version;
        line.output = QStringLiteral("Tavix %1\n").arg(version);
        return line;
    }
    if (parser.isSet(listCameras)) {
        line.action = Action::ListCameras;
        return line;
    }
    line.home = parser.value(home);
    line.camera = parser.value(camera);
    if (!line.camera.isEmpty() && !kCameraDrivers.contains(line.camera.trimmed(), Qt::CaseInsensitive)) {
        line.action = Action::Error;
        line.output = QStringLiteral("%1: unknown camera driver '%2'; choose one of %3.\n")
                          .arg(program, line.camera, kCameraDrivers.join(QStringLiteral(", ")));
        return line;
    }
    const QStringList pictures = parser.positionalArguments();
    if (pictures.size() > 1) {
        line.action = Action::Error;
        line.output = QStringLiteral("%1: one picture at a time, not %2.\nTry '%1 --help' for the options.\n")
                          .arg(program)
                          .arg(pictures.size());
        return line;
    }
    if (!pictures.isEmpty())
        line.picture = pictures.front();
    return line;
}

}  // namespace tavix

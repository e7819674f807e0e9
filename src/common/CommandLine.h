#pragma once

#include <QString>
#include <QStringList>

namespace tavix {

// What the command line asks for: run the program (with its options and an
// optional picture to open), or print help, the version or the cameras found
// and stop.
class CommandLine {
public:
    enum class Action { Run, Help, Version, ListCameras, Error };

    // Exit code of a command line the program does not understand.
    static constexpr int kUsageExitCode = 2;

    // arguments[0] is the program's own name, as in main's argv.
    static CommandLine parse(const QStringList& arguments, const QString& version);

    Action action = Action::Run;
    QString home;     // --home DIR
    QString camera;   // --camera NAME
    QString picture;  // a picture file to open as a still
    QString output;   // what Help, Version and Error print (with its line end)

    int exitCode() const { return action == Action::Error ? kUsageExitCode : 0; }
};

}  // namespace tavix

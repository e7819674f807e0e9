#pragma once

#include <QString>

namespace tavix {

// The folder that holds "Tavix.Ini" and every file the program keeps.
class ProgramFolder {
public:
    struct Sources {
        QString homeOption;         // --home DIR
        QString homeEnvironment;    // TAVIX_HOME
        QString executableFolder;   // used when it holds Tavix.Ini (build tree, portable install)
        QString xdgDataHome;        // $XDG_DATA_HOME, may be empty
        QString userHome;           // for the ~/.local/share default
        QString installedDefaults;  // the installed data files that seed a new user folder
    };

    static constexpr const char* kIniName = "Tavix.Ini";

    // Picks the folder by the sources' order of precedence; a user data folder
    // that does not hold Tavix.Ini yet is created and filled from the defaults.
    static QString resolve(const Sources& sources);

    // Sources from the command line, the environment and the executable.
    static Sources fromEnvironment(const QString& homeOption);

    // The installed data files: share/tavix beside the executable's bin folder
    // (wherever the package was unpacked), else the configured install folder.
    static QString installedDefaults(const QString& executableFolder, const QString& configured);

    // A settings value appended to the folder as it stands ("\Message_E.txt").
    static QString append(const QString& folder, const QString& value);
    // A settings value joined to the folder with a separator ("Camera.grf").
    static QString join(const QString& folder, const QString& value);
};

}  // namespace tavix

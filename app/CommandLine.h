#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// What the arguments of the window program ask for.
///
/// Options and files may be mixed; "--" makes files of all that follows. The options that Qt
/// itself understands are set apart, so that no file is taken for one of them or for its value.
struct CommandLine {
    enum Task { OpenWindow, ShowHelp, ShowVersion };

    Task task = OpenWindow;
    std::optional<QString> game; ///< the value of "--game"
    QStringList files;
    QStringList qtArguments; ///< each option, followed by its value where it has one
    bool choosesPlatform = false;

    /// Throws a QString for an unknown option and for a missing or superfluous value.
    static CommandLine parse(const QStringList &arguments);

    /// The text for "--help".
    static QString help();
};

#pragma once

#include "support/ProcessRun.h"

/// Runs the built quillmoor-cli as a script would, with the built-in sound engine.
class ProgramRun : public ProcessRun {
public:
    explicit ProgramRun(const QStringList &arguments)
        : ProcessRun(QStringLiteral(QUILLMOOR_CLI), arguments)
    {
        environment("QUILLMOOR_SOUND", QStringLiteral("builtin"));
    }
};

/// As ProgramRun(arguments).outcome().
inline ProgramRun::Outcome runProgram(const QStringList &arguments)
{
    return ProgramRun(arguments).outcome();
}

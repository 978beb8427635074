#include "DemoCommand.h"

#include "DemoSession.h"
#include "SessionCheck.h"

#include <platform/util/TerminalProgress.h>

#include <QDir>
#include <QTemporaryDir>

#include <cstdio>
#include <stdexcept>

namespace dataprep {

const char* DemoCommand::usage() const
{
    return "Usage: dataprep demo [--keep <dir>] [--json]\n"
           "\n"
           "Writes the embedded default session (three flight lines of four bands,\n"
           "one band .info file per band) into a temporary folder, reads it back,\n"
           "groups the bands into takes, validates every info file and prints a\n"
           "summary. The folder is removed afterwards unless --keep names one.\n"
           "\n"
           "Options:\n"
           "  --keep <dir>   write the session into <dir> and leave it there\n"
           "  --json         print the summary as JSON\n";
}

int DemoCommand::run(const QStringList& arguments)
{
    QString keep;
    bool json = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == QLatin1String("--keep")) {
            if (i + 1 >= arguments.size())
                throw UsageError{"--keep needs a directory"};
            keep = arguments[++i];
        } else if (arguments[i] == QLatin1String("--json")) {
            json = true;
        } else {
            throw UsageError{"unknown argument " + arguments[i].toStdString()};
        }
    }

    QTemporaryDir temporary(QDir::tempPath() + QStringLiteral("/dataprep-demo-XXXXXX"));
    const QString directory = keep.isEmpty() ? temporary.path() : QDir(keep).absolutePath();
    if (keep.isEmpty() && !temporary.isValid())
        throw std::runtime_error("Cannot create a temporary folder: " + temporary.errorString().toStdString());

    const int files = writeDemoSession(directory);
    if (!json)
        std::printf("Wrote the default session (%d band info files) to %s\n\n", files,
                    directory.toStdString().c_str());
    util::TerminalProgress progress;
    return checkSession(directory, json, &progress);
}

} // namespace dataprep

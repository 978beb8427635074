#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace robustness {

/// One run of dataprep on a mutated file, and what is wrong with its answer.
class CaseCheck {
public:
    /// What the run must show.
    struct Expectation {
        /// The mutated file (absolute) and the session folder (absolute).
        QString file;
        QString session;
        /// The band the file belongs to ("PANN00A"), empty for session files:
        /// a message about that band (subject "take L001, band PANN00A")
        /// names the file too.
        QString band;
        /// A message must name the file (an error, which makes the exit
        /// code 1, or a warning).
        bool mustNotice = false;
    };

    /// The longest message text taken for a sane one.
    static constexpr int sMaxMessageChars = 2000;
    /// Seconds a run may take before it counts as hanging.
    static constexpr int sTimeoutSec = 10;

    /// Runs `dataprep` with `arguments` (in an environment with KAVIX_ROOT
    /// set to `kavixRoot` when not empty) and returns what is wrong with the
    /// answer; empty when nothing is.
    static QStringList run(const QString& dataprep, const QStringList& arguments, const QString& kavixRoot,
                           const Expectation& expectation);

    /// What is wrong with an answer (exit code, stdout, stderr) that ended
    /// normally.
    static QStringList judge(int exitCode, const QByteArray& out, const QByteArray& err,
                             const Expectation& expectation);
};

} // namespace robustness

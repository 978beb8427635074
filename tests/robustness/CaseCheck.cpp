#include "CaseCheck.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>

namespace robustness {

namespace {

/// Texts of the implementation that must never reach a user.
const char* const sInternalTexts[] = {"invalid vector<T> subscript", "std::", "basic_string", "vector::_M_",
                                      "bad_alloc", "bad_array_new_length", "terminate called"};

/// Reports of the sanitizers on stderr.
const char* const sSanitizerReports[] = {"ERROR: AddressSanitizer", "ERROR: LeakSanitizer", "runtime error:"};

QString shortened(QString text)
{
    text.replace(QLatin1Char('\n'), QLatin1String("\\n"));
    return text.size() > 160 ? text.left(160) + QStringLiteral("...") : text;
}

} // namespace

QStringList CaseCheck::run(const QString& dataprep, const QStringList& arguments, const QString& kavixRoot,
                           const Expectation& expectation)
{
    QProcess process;
    if (!kavixRoot.isEmpty()) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("KAVIX_ROOT"), kavixRoot);
        process.setProcessEnvironment(environment);
    }
    process.start(dataprep, arguments);
    if (!process.waitForStarted())
        return {QStringLiteral("cannot start %1: %2").arg(dataprep, process.errorString())};
    process.closeWriteChannel();
    if (!process.waitForFinished(sTimeoutSec * 1000)) {
        process.kill();
        process.waitForFinished();
        return {QStringLiteral("hangs: no answer within %1 s").arg(sTimeoutSec)};
    }
    const QByteArray out = process.readAllStandardOutput();
    const QByteArray err = process.readAllStandardError();
    QStringList problems;
    for (const char* report : sSanitizerReports) {
        const qsizetype at = err.indexOf(report);
        if (at >= 0) {
            const qsizetype end = err.indexOf('\n', at);
            problems << QStringLiteral("sanitizer report: %1")
                            .arg(shortened(QString::fromUtf8(err.mid(at, end < 0 ? -1 : end - at))));
            break;
        }
    }
    if (process.exitStatus() == QProcess::CrashExit) {
        problems << QStringLiteral("crashed (signal; stderr: %1)").arg(shortened(QString::fromUtf8(err.right(300))));
        return problems;
    }
    problems << judge(process.exitCode(), out, err, expectation);
    return problems;
}

QStringList CaseCheck::judge(int exitCode, const QByteArray& out, const QByteArray& err,
                             const Expectation& expectation)
{
    QStringList problems;
    if (exitCode != 0 && exitCode != 1) {
        problems << QStringLiteral("exit code %1 (stderr: %2)").arg(exitCode).arg(shortened(QString::fromUtf8(err)));
        return problems;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(out, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject()) {
        problems << QStringLiteral("stdout is not a JSON document (%1 at byte %2 of %3)")
                        .arg(error.errorString())
                        .arg(error.offset)
                        .arg(out.size());
        return problems;
    }
    const QJsonValue list = document.object().value(QStringLiteral("messages"));
    if (!list.isArray()) {
        problems << QStringLiteral("the document has no messages array");
        return problems;
    }

    const QString fileName = QFileInfo(expectation.file).fileName();
    const QString folder = QFileInfo(expectation.file).path();
    static const QRegularExpression takeSubject(QStringLiteral("^take \\S+(, band \\S+)?$"));
    bool noticed = false;
    bool anyError = false;
    for (const QJsonValue& value : list.toArray()) {
        const QJsonObject message = value.toObject();
        const QString severity = message.value(QStringLiteral("severity")).toString();
        const QString subject = message.value(QStringLiteral("subject")).toString();
        const QString text = message.value(QStringLiteral("text")).toString();
        if (severity == QLatin1String("information"))
            continue;
        anyError = anyError || severity == QLatin1String("error");
        const QString both = subject + QLatin1Char(' ') + text;
        const bool namesTheFile = both.contains(fileName)
            || (!expectation.band.isEmpty() && subject.contains(QStringLiteral("band ") + expectation.band));
        noticed = noticed || namesTheFile;
        const QString quoted = QStringLiteral("%1 \"%2: %3\"").arg(severity, shortened(subject), shortened(text));
        // A message says where: a path in the session, the mutated file or
        // its folder, or a take or band.
        if (!namesTheFile && !both.contains(expectation.session) && !both.contains(folder)
            && !takeSubject.match(subject).hasMatch())
            problems << QStringLiteral("names no file, folder, take or band: %1").arg(quoted);
        if (text.size() > sMaxMessageChars || subject.size() > sMaxMessageChars)
            problems << QStringLiteral("message of %1 characters (more than %2): %3")
                            .arg(text.size() + subject.size())
                            .arg(sMaxMessageChars)
                            .arg(quoted);
        for (const char* internal : sInternalTexts)
            if (both.contains(QLatin1String(internal)))
                problems << QStringLiteral("internal text \"%1\" in %2").arg(QLatin1String(internal), quoted);
    }
    if (anyError != (exitCode == 1))
        problems << QStringLiteral("exit code %1 with%2 error messages").arg(exitCode).arg(anyError ? "" : "out");
    if (expectation.mustNotice && !noticed)
        problems << (exitCode == 0 ? QStringLiteral("accepted: exit 0 and no warning names %1").arg(fileName)
                                   : QStringLiteral("refused, but no message names %1").arg(fileName));
    return problems;
}

} // namespace robustness

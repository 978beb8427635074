// The malformed-input corpus: every file that dataprep reads in a tiny
// simulated flight, damaged in every way listed in Mutation, each case
// judged on what `dataprep prepare` and `dataprep inspect` answer (see
// CaseCheck and docs/benchmarks-and-fuzzing.md).
//
//   robustness_corpus list [--seed N]
//   robustness_corpus run --dataprep EXE --work DIR --schema XSD [--seed N] [--jobs N] [--every N] [--only TEXT]
//   robustness_corpus write CASE DIR --dataprep EXE --schema XSD [--seed N]

#include "CaseCheck.h"
#include "Mutation.h"
#include "SessionFiles.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <vector>

using namespace robustness;

namespace {

struct Case {
    const FileType* type = nullptr;
    const Mutation* mutation = nullptr;
    QString id() const { return type->key + QLatin1Char('/') + mutation->name(); }
};

struct Setup {
    QString dataprep;
    QString schema;
    quint64 seed = 1;
};

std::vector<Case> allCases(QStringList* skipped)
{
    std::vector<Case> cases;
    for (const FileType& type : SessionFiles::types()) {
        for (const Mutation& mutation : Mutation::all()) {
            if (!mutation.appliesTo(type))
                continue;
            QString reason;
            if (!mutation.possible(&reason)) {
                if (skipped)
                    *skipped << QStringLiteral("%1/%2: %3").arg(type.key, mutation.name(), reason);
                continue;
            }
            cases.push_back({&type, &mutation});
        }
    }
    return cases;
}

/// The random numbers of one case: the same for the same case and seed.
std::mt19937_64 randomFor(const Case& c, quint64 seed)
{
    std::uint64_t hash = 1469598103934665603ULL; // FNV-1a
    for (const char ch : c.id().toUtf8()) {
        hash ^= std::uint8_t(ch);
        hash *= 1099511628211ULL;
    }
    return std::mt19937_64(hash ^ (seed * 0x9E3779B97F4A7C15ULL));
}

[[noreturn]] void fail(const QString& message)
{
    throw std::runtime_error(message.toStdString());
}

/// Copies a flight, less what dataprep never reads (the simulator's truth
/// and terrain).
void copyTree(const QString& from, const QString& to)
{
    QDir().mkpath(to);
    QDirIterator it(from, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString source = it.next();
        const QString relative = QDir(from).relativeFilePath(source);
        if (relative == QLatin1String("truth.json") || relative.startsWith(QLatin1String("dem")))
            continue;
        const QString target = to + QLatin1Char('/') + relative;
        const QFileInfo info(source);
        if (info.isDir()) {
            if (!QDir().mkpath(target))
                fail(QStringLiteral("cannot make %1").arg(target));
        } else if (!QFile::copy(source, target)) {
            fail(QStringLiteral("cannot copy %1 to %2").arg(source, target));
        }
    }
}

/// The installation root that dataprep needs for the session data schema.
QString makeRoot(const QString& work, const Setup& setup)
{
    const QString root = work + QStringLiteral("/root");
    QDir().mkpath(root + QStringLiteral("/etc/schemas"));
    const QString schema = root + QStringLiteral("/etc/schemas/sessionData.xsd");
    QFile::remove(schema);
    if (!QFile::copy(setup.schema, schema))
        fail(QStringLiteral("cannot copy the schema %1 to %2").arg(setup.schema, schema));
    return root;
}

QByteArray runDataprep(const Setup& setup, const QString& root, const QStringList& arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("KAVIX_ROOT"), root);
    process.setProcessEnvironment(environment);
    process.start(setup.dataprep, arguments);
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        fail(QStringLiteral("dataprep %1 failed: %2%3")
                 .arg(arguments.join(QLatin1Char(' ')), QString::fromUtf8(process.readAllStandardError()),
                      QString::fromUtf8(process.readAllStandardOutput().right(2000))));
    return process.readAllStandardOutput();
}

/// The flight every case starts from: `flight` as simulated, and
/// `prepared`, the same flight prepared once (with its CTG files).
void makeFlights(const Setup& setup, const QString& root, const QString& flight, const QString& prepared)
{
    QDir(flight).removeRecursively();
    QDir(prepared).removeRecursively();
    runDataprep(setup, root, {QStringLiteral("simulate"), flight, QStringLiteral("--preset"), QStringLiteral("tiny"),
                              QStringLiteral("--dark-takes"), QStringLiteral("1"), QStringLiteral("--session-data"), QStringLiteral("--seed"), QStringLiteral("1"),
                              QStringLiteral("--json")});
    copyTree(flight, prepared);
    // The flight as it is must prepare without a warning or an error.
    const QByteArray out = runDataprep(setup, root, {QStringLiteral("prepare"), prepared, QStringLiteral("--json")});
    QJsonArray problems;
    for (const QJsonValue message : QJsonDocument::fromJson(out).object().value(QStringLiteral("messages")).toArray())
        if (message[QStringLiteral("severity")].toString() != QLatin1String("information"))
            problems.append(message);
    if (!problems.isEmpty())
        fail(QStringLiteral("the undamaged flight %1 does not prepare without warnings and errors:\n%2")
                 .arg(prepared, QString::fromUtf8(QJsonDocument(problems).toJson())));
}

/// Makes the case's session in `folder` from the flights; returns the
/// mutated file (absolute), or an empty string when the file offers
/// nothing to damage this way.
QString makeCase(const Case& c, quint64 seed, const QString& flight, const QString& prepared, const QString& folder)
{
    const QString from = c.type->needsUnpreparedFlight ? flight : prepared;
    const QString relative = SessionFiles::find(QDir(from), *c.type);
    if (relative.isEmpty())
        fail(QStringLiteral("the simulated flight %1 holds no %2 (%3)").arg(from, c.type->key, c.type->pattern));
    QDir(folder).removeRecursively();
    copyTree(from, folder);
    const QString file = QDir(folder).filePath(relative);
    std::mt19937_64 random = randomFor(c, seed);
    return c.mutation->apply(file, *c.type, random) ? file : QString();
}

struct Outcome {
    bool skipped = false;
    QStringList problems;
};

Outcome runCase(const Case& c, const Setup& setup, const QString& root, const QString& flight,
                const QString& prepared, const QString& folder)
{
    Outcome outcome;
    const QString file = makeCase(c, setup.seed, flight, prepared, folder);
    if (file.isEmpty()) {
        outcome.skipped = true;
        QDir(folder).removeRecursively();
        return outcome;
    }
    const QString session = QDir(folder).absolutePath();
    const QString band = SessionFiles::bandOf(QFileInfo(file).fileName());
    // Inspect first: prepare writes a damaged CTG file again.
    if (c.type->inspectable) {
        const Mutation::Verdict inspect = c.mutation->verdict(*c.type, false);
        for (const QString& problem : CaseCheck::run(setup.dataprep, {QStringLiteral("inspect"), file, QStringLiteral("--json")},
                                                     root, {file, session, band, inspect.mustNotice}))
            outcome.problems << QStringLiteral("inspect: ") + problem;
    }
    const Mutation::Verdict prepare = c.mutation->verdict(*c.type, true);
    for (const QString& problem : CaseCheck::run(setup.dataprep, {QStringLiteral("prepare"), session, QStringLiteral("--json")},
                                                 root, {file, session, band, prepare.mustNotice}))
        outcome.problems << QStringLiteral("prepare: ") + problem;
    QDir(folder).removeRecursively();
    return outcome;
}

int list(quint64 seed)
{
    QStringList skipped;
    for (const Case& c : allCases(&skipped)) {
        const Mutation::Verdict prepare = c.mutation->verdict(*c.type, true);
        std::printf("%-30s prepare %s (%s)", qPrintable(c.id()), prepare.mustNotice ? "must notice" : "may pass",
                    qPrintable(prepare.why));
        if (c.type->inspectable) {
            const Mutation::Verdict inspect = c.mutation->verdict(*c.type, false);
            std::printf("; inspect %s", inspect.mustNotice ? "must notice" : "may pass");
        }
        std::printf("\n");
    }
    for (const QString& s : skipped)
        std::printf("skipped %s\n", qPrintable(s));
    std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
    return 0;
}

int write(const Setup& setup, const QString& id, const QString& folder)
{
    const std::vector<Case> cases = allCases(nullptr);
    const auto it = std::find_if(cases.begin(), cases.end(), [&](const Case& c) { return c.id() == id; });
    if (it == cases.end())
        fail(QStringLiteral("no case %1 (see robustness_corpus list)").arg(id));
    const QString work = QDir(folder).absolutePath() + QStringLiteral(".flights");
    const QString root = makeRoot(work, setup);
    makeFlights(setup, root, work + QStringLiteral("/flight"), work + QStringLiteral("/prepared"));
    const QString file = makeCase(*it, setup.seed, work + QStringLiteral("/flight"), work + QStringLiteral("/prepared"),
                                  QDir(folder).absolutePath());
    if (file.isEmpty())
        fail(QStringLiteral("case %1 changes nothing in this flight").arg(id));
    std::printf("%s: %s\nKAVIX_ROOT=%s %s prepare %s --json\n", qPrintable(id), qPrintable(file), qPrintable(root),
                qPrintable(setup.dataprep), qPrintable(QDir(folder).absolutePath()));
    if (it->type->inspectable)
        std::printf("KAVIX_ROOT=%s %s inspect %s --json\n", qPrintable(root), qPrintable(setup.dataprep), qPrintable(file));
    return 0;
}

int run(const Setup& setup, const QString& work, int jobs, int every, const QString& only)
{
    QElapsedTimer timer;
    timer.start();
    QDir(work + QStringLiteral("/cases")).removeRecursively();
    const QString root = makeRoot(work, setup);
    const QString flight = work + QStringLiteral("/flight");
    const QString prepared = work + QStringLiteral("/prepared");
    makeFlights(setup, root, flight, prepared);

    QStringList skipped;
    std::vector<Case> cases;
    const std::vector<Case> all = allCases(&skipped);
    for (std::size_t i = 0; i < all.size(); ++i)
        if (i % std::size_t(every) == 0 && (only.isEmpty() || all[i].id().contains(only)))
            cases.push_back(all[i]);

    std::vector<Outcome> outcomes(cases.size());
    std::atomic<std::size_t> next{0};
    std::mutex printing;
    auto worker = [&](int number) {
        const QString folder = QStringLiteral("%1/cases/%2").arg(work).arg(number);
        for (std::size_t i = next++; i < cases.size(); i = next++) {
            try {
                outcomes[i] = runCase(cases[i], setup, root, flight, prepared, folder);
            } catch (const std::exception& e) {
                outcomes[i].problems << QStringLiteral("cannot make the case: %1").arg(QString::fromUtf8(e.what()));
            }
            if (!outcomes[i].problems.isEmpty()) {
                const std::lock_guard<std::mutex> lock(printing);
                std::printf("FAIL %s (seed %llu): %s\n", qPrintable(cases[i].id()),
                            static_cast<unsigned long long>(setup.seed), qPrintable(outcomes[i].problems.join(QStringLiteral("; "))));
                std::fflush(stdout);
            }
        }
    };
    std::vector<std::thread> threads;
    for (int j = 0; j < jobs; ++j)
        threads.emplace_back(worker, j);
    for (std::thread& thread : threads)
        thread.join();

    int failed = 0;
    int notApplicable = 0;
    for (const Outcome& outcome : outcomes) {
        failed += outcome.problems.isEmpty() ? 0 : 1;
        notApplicable += outcome.skipped ? 1 : 0;
    }
    for (const QString& s : skipped)
        std::printf("skipped %s\n", qPrintable(s));
    std::printf("%zu cases (seed %llu, every %d), %d failed, %d with nothing to change, %.1f s\n", cases.size(),
                static_cast<unsigned long long>(setup.seed), every, failed, notApplicable, double(timer.elapsed()) / 1000.0);
    if (failed > 0)
        std::printf("Reproduce a case: %s write <case> <folder> --dataprep %s --schema %s --seed %llu\n",
                    qPrintable(QCoreApplication::applicationFilePath()), qPrintable(setup.dataprep),
                    qPrintable(setup.schema), static_cast<unsigned long long>(setup.seed));
    QDir(work + QStringLiteral("/cases")).removeRecursively();
    return failed > 0 ? 1 : 0;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("The malformed-input corpus of dataprep."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("mode"), QStringLiteral("list, run or write"));
    const QCommandLineOption dataprepOption(QStringLiteral("dataprep"), QStringLiteral("The dataprep program."), QStringLiteral("EXE"));
    const QCommandLineOption schemaOption(QStringLiteral("schema"), QStringLiteral("etc/schemas/sessionData.xsd of the sources."), QStringLiteral("XSD"));
    const QCommandLineOption workOption(QStringLiteral("work"), QStringLiteral("Folder for the flights and cases."), QStringLiteral("DIR"));
    const QCommandLineOption seedOption(QStringLiteral("seed"), QStringLiteral("Seed of the mutations."), QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption jobsOption(QStringLiteral("jobs"), QStringLiteral("Cases run at once."), QStringLiteral("N"), QStringLiteral("2"));
    const QCommandLineOption everyOption(QStringLiteral("every"), QStringLiteral("Run every N-th case only."), QStringLiteral("N"), QStringLiteral("1"));
    const QCommandLineOption onlyOption(QStringLiteral("only"), QStringLiteral("Only cases whose name holds TEXT."), QStringLiteral("TEXT"));
    parser.addOptions({dataprepOption, schemaOption, workOption, seedOption, jobsOption, everyOption, onlyOption});
    parser.process(application);

    const QStringList arguments = parser.positionalArguments();
    const QString mode = arguments.value(0);
    Setup setup{QFileInfo(parser.value(dataprepOption)).absoluteFilePath(),
                QFileInfo(parser.value(schemaOption)).absoluteFilePath(), parser.value(seedOption).toULongLong()};
    try {
        if (mode == QLatin1String("list"))
            return list(setup.seed);
        if (!parser.isSet(dataprepOption) || !parser.isSet(schemaOption))
            fail(QStringLiteral("--dataprep and --schema are needed"));
        if (mode == QLatin1String("write") && arguments.size() == 3)
            return write(setup, arguments[1], arguments[2]);
        if (mode == QLatin1String("run") && parser.isSet(workOption))
            return run(setup, QDir(parser.value(workOption)).absolutePath(), std::max(1, parser.value(jobsOption).toInt()),
                       std::max(1, parser.value(everyOption).toInt()), parser.value(onlyOption));
        fail(QStringLiteral("usage: robustness_corpus list | run --work DIR ... | write CASE DIR ... (see --help)"));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "robustness_corpus: %s\n", e.what());
        return 2;
    }
}

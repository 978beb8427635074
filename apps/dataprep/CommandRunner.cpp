#include "CommandRunner.h"

#include "Output.h"

#include <platform/util/ErrorText.h>

#include <cstdio>
#include <exception>

namespace dataprep {

namespace {

const QString sHelpOption = QStringLiteral("help");
const QString sJsonOption = QStringLiteral("json");

QString usageLine(const Command& command)
{
    return QStringLiteral("Usage: dataprep %1 %2").arg(QLatin1String(command.name()), command.synopsis());
}

// Wrong usage: the message naming the command, its usage line and where
// the full help is.
int usageError(const Command& command, const QString& message)
{
    std::fprintf(stderr, "dataprep %s: %s\n%s\nSee 'dataprep help %s'.\n", command.name(), qPrintable(message),
                 qPrintable(usageLine(command)), command.name());
    return 2;
}

} // namespace

void CommandRunner::add(std::unique_ptr<Command> command)
{
    m_commands.push_back(std::move(command));
}

Command* CommandRunner::find(const QString& name) const
{
    for (const auto& command : m_commands)
        if (name == QLatin1String(command->name()))
            return command.get();
    return nullptr;
}

void CommandRunner::printProgramHelp() const
{
    std::printf("Usage: dataprep <command> [arguments] [--json]\n\n"
                "Prepares recorded push-broom camera flights for triangulation.\n\n"
                "Commands:\n");
    for (const auto& command : m_commands)
        std::printf("  %-11s %s\n", command->name(), command->summary());
    std::printf("  %-11s %s\n", "help", "show the help of a command: dataprep help <command>");
    std::printf("\nOptions:\n"
                "  -h, --help  show this help\n"
                "  --version   show the version\n"
                "\nEvery command takes --json: one JSON document on stdout, the same keys in\n"
                "every command (docs/json.md).\n"
                "\nExit codes: 0 success, 1 failure or errors in the flight (the reasons are\n"
                "printed on stderr), 2 wrong usage.\n");
}

QString CommandRunner::help(const Command& command, QCommandLineParser& parser) const
{
    // The parser's own usage line names the executable by its path; the
    // command's line is written here and the option and argument tables
    // come from the parser.
    QString tables = parser.helpText();
    tables = tables.mid(tables.indexOf(QLatin1Char('\n')) + 1);
    while (tables.startsWith(QLatin1Char('\n')))
        tables.remove(0, 1);
    return usageLine(command) + QStringLiteral("\n\n") + command.description().trimmed() + QStringLiteral("\n\n")
        + tables;
}

int CommandRunner::run(QStringList arguments) const
{
    if (arguments.isEmpty()) {
        printProgramHelp();
        return 2;
    }
    const QString first = arguments.takeFirst();
    if (first == QLatin1String("-h") || first == QLatin1String("--help")) {
        printProgramHelp();
        return 0;
    }
    if (first == QLatin1String("--version")) {
        std::printf("dataprep %s\n", datamodelVersion());
        return 0;
    }
    if (first == QLatin1String("help")) {
        if (arguments.isEmpty()) {
            printProgramHelp();
            return 0;
        }
        Command* command = find(arguments.first());
        if (!command) {
            std::fprintf(stderr, "dataprep help: unknown command '%s' (see dataprep --help)\n",
                         qPrintable(arguments.first()));
            return 2;
        }
        // The help of a command is that of its parser.
        return runCommand(*command, {QStringLiteral("--help")});
    }
    Command* command = find(first);
    if (!command) {
        std::fprintf(stderr, "dataprep: unknown command '%s' (see dataprep --help)\n", qPrintable(first));
        return 2;
    }
    return runCommand(*command, arguments);
}

int CommandRunner::runCommand(Command& command, const QStringList& arguments) const
{
    QCommandLineParser parser;
    const QCommandLineOption helpOption({QStringLiteral("h"), sHelpOption}, QStringLiteral("Show this help."));
    const QCommandLineOption jsonOption(sJsonOption,
                                        QStringLiteral("Print the report as one JSON document (docs/json.md)."));
    parser.addOption(helpOption);
    parser.addOption(jsonOption);
    for (const QCommandLineOption& option : command.options())
        parser.addOption(option);
    const std::vector<Argument> declared = command.arguments();
    qsizetype required = 0;
    bool unbounded = false;
    for (const Argument& argument : declared) {
        QString syntax = QLatin1Char('<') + argument.name + QLatin1Char('>');
        if (argument.repeatable)
            syntax += QStringLiteral("...");
        if (!argument.required)
            syntax = QLatin1Char('[') + syntax + QLatin1Char(']');
        parser.addPositionalArgument(argument.name, argument.description, syntax);
        required += argument.required;
        unbounded = unbounded || argument.repeatable;
    }

    if (!parser.parse(QStringList{QStringLiteral("dataprep")} + arguments))
        return usageError(command, parser.errorText());
    if (parser.isSet(helpOption)) {
        std::printf("%s", qPrintable(help(command, parser)));
        return 0;
    }
    const QStringList positional = parser.positionalArguments();
    if (positional.size() < required)
        return usageError(command, QStringLiteral("missing <%1>").arg(declared[std::size_t(positional.size())].name));
    if (!unbounded && positional.size() > qsizetype(declared.size()))
        return usageError(command, QStringLiteral("unexpected argument '%1'").arg(positional[qsizetype(declared.size())]));

    const bool json = parser.isSet(jsonOption);
    try {
        return command.run(Invocation{parser, positional, json});
    } catch (const UsageError& e) {
        return usageError(command, QString::fromStdString(e.message));
    } catch (const std::exception& e) {
        // A failure that leaves no report: the reason on stderr and, for
        // scripts, a document with only the common keys and the message.
        const std::string reason = util::fullMessage(e);
        std::fprintf(stderr, "dataprep %s: %s\n", command.name(), reason.c_str());
        if (json) {
            const QJsonValue input = positional.isEmpty() ? QJsonValue() : QJsonValue(positional.first());
            Messages messages;
            addError(messages, positional.isEmpty() ? std::string(command.name()) : positional.first().toStdString(),
                     reason);
            printJson(command.name(), input, Fields(), messages);
        }
        return 1;
    }
}

} // namespace dataprep

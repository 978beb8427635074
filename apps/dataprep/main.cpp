// dataprep: prepares recorded flights for triangulation and orthophoto
// production. Each job is a subcommand; `dataprep help <command>` explains it.

#include "CtgCommand.h"
#include "DemoCommand.h"
#include "InspectCommand.h"
#include "PrepareCommand.h"
#include "SimulateCommand.h"
#include "TrajectoryCommand.h"

#include <QCoreApplication>
#include <QStringList>

#include <cstdio>
#include <exception>
#include <memory>
#include <vector>

namespace {

constexpr const char* sVersion = "0.1.0";

void printHelp(const std::vector<std::unique_ptr<dataprep::Command>>& commands)
{
    std::printf("Usage: dataprep <command> [arguments]\n\n"
                "Prepares recorded push-broom camera flights for triangulation.\n\n"
                "Commands:\n");
    for (const auto& command : commands)
        std::printf("  %-10s %s\n", command->name(), command->summary());
    std::printf("  %-10s %s\n", "help", "show the help of a command");
    std::printf("\nOptions:\n  -h, --help     show this help\n  --version      show the version\n"
                "\nExit codes: 0 success, 1 failure (the reason is printed on stderr), 2 wrong usage.\n");
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();

    std::vector<std::unique_ptr<dataprep::Command>> commands;
    commands.push_back(std::make_unique<dataprep::CtgCommand>());
    commands.push_back(std::make_unique<dataprep::DemoCommand>());
    commands.push_back(std::make_unique<dataprep::InspectCommand>());
    commands.push_back(std::make_unique<dataprep::PrepareCommand>());
    commands.push_back(std::make_unique<dataprep::SimulateCommand>());
    commands.push_back(std::make_unique<dataprep::TrajectoryCommand>());

    auto find = [&](const QString& name) -> dataprep::Command* {
        for (const auto& command : commands)
            if (name == QLatin1String(command->name()))
                return command.get();
        return nullptr;
    };

    if (arguments.isEmpty() || arguments.first() == QLatin1String("-h") || arguments.first() == QLatin1String("--help")) {
        printHelp(commands);
        return arguments.isEmpty() ? 2 : 0;
    }
    if (arguments.first() == QLatin1String("--version")) {
        std::printf("dataprep %s\n", sVersion);
        return 0;
    }
    if (arguments.first() == QLatin1String("help")) {
        if (arguments.size() < 2) {
            printHelp(commands);
            return 0;
        }
        if (dataprep::Command* command = find(arguments[1])) {
            std::printf("%s", command->usage());
            return 0;
        }
        std::fprintf(stderr, "dataprep: unknown command '%s'\n", qPrintable(arguments[1]));
        return 2;
    }

    const QString name = arguments.takeFirst();
    dataprep::Command* command = find(name);
    if (!command) {
        std::fprintf(stderr, "dataprep: unknown command '%s' (see dataprep --help)\n", qPrintable(name));
        return 2;
    }
    if (arguments.contains(QLatin1String("--help")) || arguments.contains(QLatin1String("-h"))) {
        std::printf("%s", command->usage());
        return 0;
    }
    try {
        return command->run(arguments);
    } catch (const dataprep::UsageError& e) {
        std::fprintf(stderr, "dataprep %s: %s\n\n%s", command->name(), e.message.c_str(), command->usage());
        return 2;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "dataprep %s: %s\n", command->name(), e.what());
        return 1;
    }
}

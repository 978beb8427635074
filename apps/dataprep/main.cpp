// dataprep: prepares recorded flights for triangulation and orthophoto
// production. Each job is a command; `dataprep help <command>` explains it.

#include "CommandRunner.h"
#include "CtgCommand.h"
#include "DemoCommand.h"
#include "EopCommand.h"
#include "QualityCommand.h"
#include "InspectCommand.h"
#include "Output.h"
#include "PrepareCommand.h"
#include "SimulateCommand.h"
#include "TrajectoryCommand.h"
#include "ValidateCommand.h"

#include <QCoreApplication>
#include <QStringList>

#include <memory>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("dataprep"));
    QCoreApplication::setApplicationVersion(QString::fromLatin1(dataprep::datamodelVersion()));

    dataprep::CommandRunner runner;
    runner.add(std::make_unique<dataprep::CtgCommand>());
    runner.add(std::make_unique<dataprep::DemoCommand>());
    runner.add(std::make_unique<dataprep::EopCommand>());
    runner.add(std::make_unique<dataprep::QualityCommand>());
    runner.add(std::make_unique<dataprep::InspectCommand>());
    runner.add(std::make_unique<dataprep::PrepareCommand>());
    runner.add(std::make_unique<dataprep::SimulateCommand>());
    runner.add(std::make_unique<dataprep::TrajectoryCommand>());
    runner.add(std::make_unique<dataprep::ValidateCommand>());

    QStringList arguments = QCoreApplication::arguments();
    arguments.removeFirst();
    return runner.run(arguments);
}

#include <datamodel/session/QualityStage.h>

#include <datamodel/model/L0Image.h>
#include <datamodel/model/Sensor.h>
#include <datamodel/model/Take.h>
#include <datamodel/session/RecordingSession.h>
#include <datamodel/session/ReportSink_p.h>
#include <datamodel/trajectory/EopTrajectory.h>
#include <datamodel/validation/EoqValidationTraverser.h>

#include <platform/dsm/ProjectedElevationSourceFactory.h>
#include <platform/util/ErrorText.h>
#include <platform/util/ProgressInterface.h>

#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace datamodel {

QualityStage::QualityStage(Options options)
    : m_options(std::move(options))
{
}

void QualityStage::run(RecordingSession& session, const std::vector<Take*>& takes, PreparationReport& report,
                       util::ProgressInterface* progress)
{
    std::string dem = m_options.dem;
    if (dem.empty())
        dem = dsm::ProjectedElevationSourceFactory::findElevationModel(session.directory() + "/dem");
    dsm::ProjectedElevationSourceFactory factory;
    factory.setElevationModel(dem);
    factory.setFlatHeight(m_options.flatHeightM);
    dsm::ProjectedElevationSourceFactory* const previous = dsm::ProjectedElevationSourceFactory::instance;
    dsm::ProjectedElevationSourceFactory::instance = &factory;
    struct Restore {
        dsm::ProjectedElevationSourceFactory* previous;
        ~Restore() { dsm::ProjectedElevationSourceFactory::instance = previous; }
    } restore{previous};

    const Sensor& sensor = session.sensor();
    util::ProgressTask task(progress, name(), 0, static_cast<long long>(takes.size()));
    long long done = 0;
    for (Take* take : takes) {
        task.report(done++);
        const auto item = std::find_if(report.takes.begin(), report.takes.end(),
                                       [&take](const TakePreparation& t) { return t.name == take->name(); });
        if (item == report.takes.end())
            continue;
        if (!item->eop && !QFileInfo::exists(QString::fromStdString(take->eopFilename())))
            continue; // no EOPs: said already
        const std::string subject = "take " + take->name();
        const auto fail = [&](const std::string& why) {
            report.add(PreparationMessage{PreparationMessage::Severity::Error, subject,
                                          "No trajectory quality for take " + take->name() + ": " + why, take->name(),
                                          {}});
        };
        // The band nearest nadir, the first in the camera file on a tie.
        L0Image* nadir = nullptr;
        double nadirAngle = INFINITY;
        for (const Sensor::BandGeometry& geometry : sensor.bands()) {
            if (!(std::abs(geometry.lookAngleDeg) < nadirAngle))
                continue;
            for (L0Image* image : take->imagesL0()) {
                if (image && image->bandName() == geometry.name) {
                    nadir = image;
                    nadirAngle = std::abs(geometry.lookAngleDeg);
                    break;
                }
            }
        }
        if (!nadir) {
            fail("the camera file describes none of its bands");
            continue;
        }
        try {
            sensor::IdentitySensorModel model = sensor.sensorModel();
            EopTrajectory& eop = take->eopTrajectory();
            eop.computeQualities(*nadir, model, m_options.accuracyM, progress);
            eop.writeQualities();
            QualitySummary summary;
            summary.band = nadir->bandName();
            summary.dem = dem;
            summary.flatHeightM = m_options.flatHeightM;
            summary.file = eop.eoqFileName();
            summary.samples = eop.numQualitySets();
            summary.minNcs = eop.minNcs(), summary.maxNcs = eop.maxNcs(), summary.rmsNcs = eop.rmsNcs();
            summary.minRpe = eop.minRpe(), summary.maxRpe = eop.maxRpe(), summary.rmsRpe = eop.rmsRpe();
            summary.maxPsr = eop.maxPsr(), summary.rmsPsr = eop.rmsPsr();
            item->quality = summary;
            ReportSink messages(report);
            messages.at(take->name());
            EoqValidationTraverser judge(&messages, &messages, &messages);
            judge.validate(eop);
        } catch (const std::exception& e) {
            fail(util::fullMessage(e));
        }
    }
    task.report(done);
}

} // namespace datamodel

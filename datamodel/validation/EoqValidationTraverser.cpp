#include <datamodel/validation/EoqValidationTraverser.h>

#include <datamodel/model/Settings.h>
#include <datamodel/trajectory/EopTrajectory.h>

#include <QString>

#include <stdexcept>
#include <utility>

namespace datamodel {

namespace {

QString number(float value)
{
    return QString::number(double(value), 'g', 6);
}

} // namespace

EoqValidationTraverser::EoqValidationTraverser(Information* information, Warning* warning, Error* error)
    : ValidationTraverser(information, warning, error)
{
    const std::pair<double*, double (*)()> settings[] = {
        {&m_limits.psrError, &Settings::psrErrorLimit},
        {&m_limits.psrWarning, &Settings::psrWarningLimit},
        {&m_limits.rpeError, &Settings::rpeErrorLimit},
        {&m_limits.rpeWarning, &Settings::rpeWarningLimit},
        {&m_limits.ncsErrorLower, &Settings::ncsErrorLowerLimit},
        {&m_limits.ncsErrorUpper, &Settings::ncsErrorUpperLimit},
        {&m_limits.ncsWarningLower, &Settings::ncsWarningLowerLimit},
        {&m_limits.ncsWarningUpper, &Settings::ncsWarningUpperLimit},
    };
    for (const auto& [limit, read] : settings) {
        try {
            *limit = read();
        } catch (const std::exception& e) {
            this->error(e.what());
        }
    }
}

EoqValidationTraverser::~EoqValidationTraverser() = default;

void EoqValidationTraverser::validate(EopTrajectory& trajectory)
{
    if (!trajectory.hasQualityMeasures()) {
        information("No quality parameters.");
        return;
    }
    const Limits& limits = m_limits;

    const float minNcs = trajectory.minNcs();
    information(QStringLiteral("Normalized Coverage Speed (NCS) - RMS: %0, range: %1 - %2")
                    .arg(number(trajectory.rmsNcs()), number(minNcs), number(trajectory.maxNcs()))
                    .toStdString());
    // Both bounds are tested on the minimum: the rule as settled.
    if (minNcs < limits.ncsErrorLower || minNcs > limits.ncsErrorUpper)
        error("Heavy turbulence detected: Very fast forward and/or backward coverage.");
    else if (minNcs < limits.ncsWarningLower || minNcs > limits.ncsWarningUpper)
        warning("Turbulence detected: Fast forward and/or slight backward coverage.");

    const float minRpe = trajectory.minRpe();
    const float maxRpe = trajectory.maxRpe();
    information(QStringLiteral("Relative L1 Pixel Error (RPE) - RMS: %0, range: %1 - %2")
                    .arg(number(trajectory.rmsRpe()), number(minRpe), number(maxRpe))
                    .toStdString());
    if (maxRpe > limits.rpeError || minRpe < -limits.rpeError)
        error("Expect visible L1 artifacts due to heavy turbulence.");
    else if (maxRpe > limits.rpeWarning || minRpe < -limits.rpeWarning)
        warning("Expect slight L1 artifacts due to turbulence.");

    const float maxPsr = trajectory.maxPsr();
    information(QStringLiteral("Pixel Smearing Ratio (PSR) - RMS: %0, maximum: %1")
                    .arg(number(trajectory.rmsPsr()), number(maxPsr))
                    .toStdString());
    if (maxPsr > limits.psrError)
        error("Expect visible L1/L2 smearing due to heavy turbulence.");
    else if (maxPsr > limits.psrWarning)
        warning("Expect slight L1/L2 smearing due to turbulence.");
}

} // namespace datamodel

#include <platform/dsm/FlatElevationSource.h>

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace dsm {

FlatElevationSource::FlatElevationSource(double heightM)
    : m_heightM(heightM)
{
    if (!std::isfinite(heightM))
        throw std::runtime_error("The height of a flat surface must be a finite number of metres");
}

std::string FlatElevationSource::description() const
{
    char text[64];
    std::snprintf(text, sizeof text, "flat surface at %g m (ellipsoidal)", m_heightM);
    return text;
}

double FlatElevationSource::spacingM(const geo::XYZPoint&) const
{
    return 0.0;
}

bool FlatElevationSource::load(std::span<const geo::XYZPoint>)
{
    return true;
}

void FlatElevationSource::heights(std::span<geo::XYZPoint> pointsDeg) const
{
    for (geo::XYZPoint& point : pointsDeg)
        point.z = m_heightM;
}

} // namespace dsm

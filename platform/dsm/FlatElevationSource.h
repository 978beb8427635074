#pragma once

#include <platform/dsm/ElevationSource.h>

namespace dsm {

/// A surface at a constant ellipsoidal height everywhere: the terrain when no
/// elevation model is known.
class FlatElevationSource : public ElevationSource {
public:
    /// Throws std::runtime_error when `heightM` is not finite.
    explicit FlatElevationSource(double heightM = 0.0);

    double heightM() const { return m_heightM; }

    /// "flat surface at " + the height + " m (ellipsoidal)".
    std::string description() const override;
    double spacingM(const geo::XYZPoint& nearDeg) const override;
    bool load(std::span<const geo::XYZPoint> outlineDeg) override;
    void heights(std::span<geo::XYZPoint> pointsDeg) const override;

private:
    double m_heightM;
};

} // namespace dsm

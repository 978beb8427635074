#pragma once

#include <cstddef>
#include <vector>

namespace flightsim {

/// A stretch of a path over which the curvature changes linearly in time
/// from `startPerM` to `endPerM` (1/m, positive to the left).
struct CurvaturePiece {
    double durationSec = 0.0;
    double startPerM = 0.0;
    double endPerM = 0.0;
};

/// A path in the plane flown at constant speed whose curvature is piecewise
/// linear in time, starting at the origin along +x. The heading is exact
/// (piecewise quadratic in time); positions are integrated with Simpson's
/// rule on steps of at most 10 ms, fine enough that the error stays below a
/// micrometre over a turn.
class CurvePath {
public:
    struct State {
        double xM = 0.0;
        double yM = 0.0;
        double headingRad = 0.0;   ///< counter-clockwise from +x
        double curvaturePerM = 0.0;
    };

    CurvePath() = default;
    CurvePath(std::vector<CurvaturePiece> pieces, double speedMps);

    double durationSec() const { return m_durationSec; }
    /// The state `tSec` after the start (clamped to the path).
    State at(double tSec) const;
    State end() const { return at(m_durationSec); }
    const std::vector<CurvaturePiece>& pieces() const { return m_pieces; }
    /// The same path mirrored about the x axis (a right turn for a left one).
    CurvePath mirrored() const;

private:
    struct Table {
        double startSec = 0.0;
        double startHeadingRad = 0.0;
        double stepSec = 0.0;
        std::vector<double> xM;    // positions at the step boundaries
        std::vector<double> yM;
    };
    double heading(std::size_t piece, double localSec) const;

    std::vector<CurvaturePiece> m_pieces;
    std::vector<Table> m_tables;
    double m_speedMps = 0.0;
    double m_durationSec = 0.0;
};

/// The turn between two neighbouring flight lines: a reversal of heading
/// that ends `lateralOffsetM` to the left of the start, banking no steeper
/// than the largest bank angle and rolling in and out at a steady rate.
/// Lines farther apart than the tightest 180-degree turn are joined with
/// one gentler 180-degree turn; closer lines with a teardrop turn (away by
/// alpha, back by 180 degrees + 2 alpha, away by alpha).
class TurnManeuver {
public:
    TurnManeuver(double speedMps, double maxBankRad, double rollRateRadPerSec, double lateralOffsetM);

    /// The left turn (curvature positive); mirror it for a right turn.
    const CurvePath& path() const { return m_path; }
    /// How far the turn carries the aircraft along its initial heading.
    double forwardM() const { return m_path.end().xM; }
    double durationSec() const { return m_path.durationSec(); }
    bool teardrop() const { return m_teardrop; }
    double bankRad() const { return m_bankRad; }

    /// Pieces turning by `angleRad` (signed, positive left) at curvature
    /// `curvaturePerM`, reached over `rampSec`; a triangle of lower peak
    /// curvature when the angle is too small for the full ramp.
    static std::vector<CurvaturePiece> turn(double angleRad, double curvaturePerM, double rampSec, double speedMps);

private:
    CurvePath m_path;
    bool m_teardrop = false;
    double m_bankRad = 0.0;
};

} // namespace flightsim

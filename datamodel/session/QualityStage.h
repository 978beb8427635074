#pragma once

#include <datamodel/session/SessionPreparation.h>

#include <string>

namespace datamodel {

/// A preparation stage that computes, writes and judges the trajectory
/// quality (docs/quality-measures.md) of each take that has EOPs: from the
/// take's band nearest nadir (the first in the camera file on a tie), on
/// the terrain of the
/// DEM given, else of the session's `dem/` folder (its first *.tif or
/// *.tiff in name order), else of a flat surface at `flatHeightM`. Writes
/// the EOQ file beside the EOP file, puts what it computed on the report's
/// take (`quality`) and the judgement of EoqValidationTraverser among the
/// take's messages; a take whose quality cannot be computed gets an error
/// saying why.
class QualityStage final : public PreparationStage {
public:
    struct Options {
        std::string dem;          ///< a DEM file; empty to look in the session
        double flatHeightM = 0.0; ///< the flat terrain's ellipsoidal height without a DEM
        float accuracyM = 0.01f;  ///< of the ray intersections
    };
    explicit QualityStage(Options options);

    std::string name() const override { return "Computing trajectory quality"; }
    void run(RecordingSession& session, const std::vector<Take*>& takes, PreparationReport& report,
             util::ProgressInterface* progress) override;

private:
    Options m_options;
};

} // namespace datamodel

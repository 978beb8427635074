#pragma once

#include <datamodel/session/SessionPreparation.h>

#include <string>

namespace datamodel {

/// A preparation stage that generates the exterior orientation of each
/// take whose scan lines a trajectory covers, and writes its EOP file
/// (raw/<take>.eop). The trajectory is the one named, else of those that
/// cover every scan line of the take an SBET file before a SOL file, else
/// processed before real-time ones (the session's order). The report's take
/// gets what was made (`eop`), and a take that cannot get its EOPs an error
/// saying why.
class EopGenerationStage final : public PreparationStage {
public:
    /// `trajectory`: the file to generate from (its name as the session
    /// lists it, or its path); empty to choose per take.
    explicit EopGenerationStage(std::string trajectory = {});

    std::string name() const override { return "Generating EOPs"; }
    void run(RecordingSession& session, const std::vector<Take*>& takes, PreparationReport& report,
             util::ProgressInterface* progress) override;

private:
    std::string m_trajectory;
};

} // namespace datamodel

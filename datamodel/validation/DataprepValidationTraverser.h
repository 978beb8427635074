#pragma once

#include <datamodel/validation/BasicValidationTraverser.h>

#include <string>
#include <vector>

namespace datamodel {

class L0Image;
class Take;

/// The base of the data-preparation checks. It keeps the take and the
/// level-0 image being checked, and every error reported while one is set
/// lists that take and that image (each once, in the order first met), so
/// that the caller learns which takes and images failed. It also holds the
/// angular-velocity limit of the trajectory check.
class DataprepValidationTraverser : public BasicValidationTraverser {
public:
    /// Reads the angular-velocity limit ("Validation/angular_velocity_limit",
    /// default 2.0 degrees per second) and reports "Angular speed threshold
    /// used for validation: " + limit + " degrees/second." as information. A
    /// setting that is not a number is reported as an error and the default
    /// is used.
    DataprepValidationTraverser(Information* information = nullptr, Warning* warning = nullptr,
                                Error* error = nullptr);
    DataprepValidationTraverser(const DataprepValidationTraverser&) = default;
    DataprepValidationTraverser& operator=(const DataprepValidationTraverser&) = default;
    ~DataprepValidationTraverser() override;

    using BasicValidationTraverser::validate;

    /// The takes that had errors, each once, in the order first met.
    std::vector<Take*> takesWithErrors() const { return m_takesWithErrors; }
    /// The level-0 images that had errors, each once, in the order first met.
    std::vector<L0Image*> bandsWithErrors() const { return m_imagesWithErrors; }
    /// The angular-velocity limit of the trajectory check, degrees per second.
    double angularVelocityLimit() const { return m_angularVelocityLimitDegPerSec; }

protected:
    /// Marks which validator builds on this one quietly: it neither reads
    /// nor announces the angular-velocity limit (it does not use it).
    struct Quiet {};
    DataprepValidationTraverser(Quiet);

    /// Passes the message to the error sink, then lists the current take
    /// and image (when set) as having errors.
    void error(const std::string& message) override;

    /// The take and image that errors are charged to; either may be null.
    void setCurrent(Take* take, L0Image* image);
    void clearCurrent() { setCurrent(nullptr, nullptr); }
    Take* currentTake() const { return m_currentTake; }
    L0Image* currentImage() const { return m_currentImage; }

private:
    Take* m_currentTake = nullptr;
    L0Image* m_currentImage = nullptr;
    std::vector<Take*> m_takesWithErrors;
    std::vector<L0Image*> m_imagesWithErrors;
    double m_angularVelocityLimitDegPerSec = 2.0;
};

} // namespace datamodel

#pragma once

#include <datamodel/model/Seconds.h>

#include <vector>

namespace datamodel {

class CameraTime;

/// Detects and removes the saw-tooth effect: a camera that reports a correct
/// time only on every eighth scan line and stamps the seven lines between at
/// a slightly wrong, regular step, so that the steps between lines show an
/// eight-line saw-tooth. The repair spaces the lines evenly between the good
/// ones and rewrites the band's CTG file. Offered to client programs; the
/// library itself never applies it.
class SawToothFixer {
public:
    /// Relative difference between the ordinary step and the step into
    /// line 8 from which on a band is suspect, and the absolute tolerance
    /// (s) of every step against its kind.
    static constexpr double sTolerance = 0.05;

    /// Keeps the pointer; `times` must outlive the fixer.
    explicit SawToothFixer(CameraTime* times);
    SawToothFixer(const SawToothFixer&) = default;
    SawToothFixer& operator=(const SawToothFixer&) = default;

    /// Loads the times; when they show the saw-tooth, repairs them and has
    /// the timing model rewrite the CTG file under its name. A band without
    /// the pattern is left untouched. Failures to load or write propagate.
    void operator()() const;

    /// Whether the times show the eight-line saw-tooth: at least 16 lines,
    /// a multiple of 8; the step into line 8 differs from the first step by
    /// 5 % or more; every other step lies within 0.05 s of the first step
    /// and every step into a multiple of 8 within 0.05 s (scaled by 0.95)
    /// of the step into line 8.
    bool hasSawTooth(const std::vector<Seconds>& values) const;
    /// Re-spaces every block of eight lines evenly between its anchors
    /// (lines whose index is a multiple of 8 keep their time) and continues
    /// the last seven lines with the step of the last full block. Logs
    /// "SawToothEffect removed" at debug level on "datamodel.CtFile".
    void fixSawTooth(std::vector<Seconds>& values) const;

private:
    CameraTime* m_times;
};

} // namespace datamodel

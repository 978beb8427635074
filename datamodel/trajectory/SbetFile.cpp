#include <datamodel/trajectory/SbetFile.h>
#include <datamodel/trajectory/SbetFile_p.h>

#include <datamodel/log/VNLLog.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <numbers>
#include <stdexcept>

namespace datamodel {

namespace {

VNLLog& log()
{
    static VNLLog logger("datamodel.SbetFile");
    return logger;
}

const char* const sIndexOutOfBounds = "Index out of bounds.";
const char* const sSeekError = "Seek error.";
const char* const sReadError = "Failed to read from file.";

constexpr int sSbetRecordBytes = 136;
constexpr int sAccuracyRecordBytes = 80;

/// Offsets of the roll and pitch deviations in the accuracy record.
constexpr int sAccuracyRollOffset = 56;
constexpr int sAccuracyPitchOffset = 64;

/// The double at `index` (in doubles) of a record.
inline double field(const unsigned char* record, std::size_t index)
{
    double value;
    std::memcpy(&value, record + 8 * index, sizeof value);
    return value;
}

bool hasValidTime(const unsigned char*, double time)
{
    return PosFile::isValidGpsTime(seconds(time));
}

std::string sbetRecordProblem(const unsigned char* record)
{
    using S = SbetFile::SbetStruct;
    const double latitude = field(record, offsetof(S, latitude) / 8);
    const double longitude = field(record, offsetof(S, longitude) / 8);
    const double height = field(record, offsetof(S, height) / 8);
    // SBET records carry no mark of their own: zeros (a hole in a file
    // extended without being written) would pass every range.
    if (latitude == 0.0 && longitude == 0.0 && height == 0.0)
        return "position 0 rad, 0 rad, 0 m (a record never written)";
    std::string problem = PosFile::positionProblem(latitude, longitude, height);
    if (problem.empty())
        problem = PosFile::angleProblem("roll", field(record, offsetof(S, roll) / 8), PosFile::sTiltLimitRad);
    if (problem.empty())
        problem = PosFile::angleProblem("pitch", field(record, offsetof(S, pitch) / 8), PosFile::sTiltLimitRad);
    if (problem.empty())
        problem = PosFile::angleProblem("platform heading", field(record, offsetof(S, platformHeading) / 8),
                                         PosFile::sHeadingLimitRad);
    if (problem.empty())
        problem = PosFile::angleProblem("wander angle", field(record, offsetof(S, wanderAngle) / 8),
                                         PosFile::sHeadingLimitRad);
    return problem;
}

std::string accuracyRecordProblem(const unsigned char* record)
{
    bool written = false;
    for (std::size_t k = 0; k < 10; ++k)
        written = written || field(record, k) != 0.0;
    if (!written)
        return "every field is 0 (a record never written)";
    static const char* const names[] = {"north", "east", "down", "roll", "pitch", "heading"};
    for (std::size_t k = 0; k < 6; ++k) {
        const std::size_t index = k < 3 ? 1 + k : 7 + (k - 3);
        if (std::string problem = PosFile::stdDevProblem(names[k], field(record, index), k < 3 ? "m" : "arcmin");
            !problem.empty())
            return problem;
    }
    return {};
}

} // namespace

// ---------------------------------------------------------------------------
// The accuracy file

SbetFile::SmrmsFile::SmrmsFile(const std::string& fileName)
    : PosFile(fileName)
{
    setLayout({sAccuracyRecordBytes, 0, sAccuracyRollOffset, sAccuracyPitchOffset, sIndexOutOfBounds, sSeekError,
               sReadError});
    setHasStdDevs(true);
    // Unlike the SBET file's, the last record's time is not tested; lookups
    // clamp their times into the file's range.
    checkFile(&hasValidTime, false, &accuracyRecordProblem);
}

SbetFile::SmrmsFile::~SmrmsFile() = default;

void SbetFile::SmrmsFile::readRecord(int index, ImuRecord& record)
{
    seekForRead(index);
    readNextRecord(record);
}

void SbetFile::SmrmsFile::readNextRecord(ImuRecord& record)
{
    record = ImuRecord();
    readNextAccuracy(record.time, record.stdDev());
}

void SbetFile::SmrmsFile::readNextAccuracy(double& time, std::array<float, 6>& stdDev)
{
    const unsigned char* bytes = nextRecordBytes();
    if (!bytes)
        throw std::runtime_error(sReadError);
    time = field(bytes, 0);
    for (std::size_t k = 0; k < 3; ++k)
        stdDev[k] = float(field(bytes, 1 + k));
    // Attitude deviations: arc minutes to radians.
    for (std::size_t k = 0; k < 3; ++k)
        stdDev[3 + k] = float(field(bytes, 7 + k) * (1.0 / 60.0) * (std::numbers::pi / 180.0));
}

void SbetFile::SmrmsFile::accuracyAt(Seconds gpsTime, std::array<float, 6>& stdDev)
{
    accuracyAtInline(gpsTime, stdDev);
}

void SbetFile::SmrmsFile::lookUp(double t, std::array<float, 6>& stdDev)
{
    requireInsideRecording(t);
    const Bracket bracket = locateFrom(t, estimateIndex(seconds(t)));
    Span found;
    readBracket(bracket, found);
    if (bracket.exact) {
        stdDev = found.first;
        return;
    }
    // linear() of every deviation, its tests on the times made once.
    const double ta = adjusted(found.firstTime);
    const double tb = adjusted(found.secondTime);
    if (ta == tb || ta == t)
        stdDev = found.first;
    else if (tb == t)
        stdDev = found.second;
    else
        blendStdDevs(found.first, found.second, t - ta, tb - ta, stdDev);
    rememberSpan(bracket.first, found);
}

void SbetFile::SmrmsFile::readBracket(const Bracket& bracket, Span& records)
{
    seekForRead(bracket.first);
    readNextAccuracy(records.firstTime, records.first);
    if (!bracket.exact)
        readNextAccuracy(records.secondTime, records.second);
}

void SbetFile::SmrmsFile::rememberSpan(int first, Span& span)
{
    forgetSpan();
    const double ta = adjusted(span.firstTime);
    const double tb = adjusted(span.secondTime);
    if (!(ta < tb))
        return;
    // Times at least 2e-6 s from either record are not the same instant as
    // it, and neither are the times further in (a difference of doubles
    // never shrinks as one of them moves away). When the estimates of both
    // ends are one of the two records, so is the estimate of every time
    // between them, and the walk from either record stops at the other.
    const double from = std::max(ta + 2.0 * sSameTimeSec, startTime().value());
    const double to = std::min(tb - 2.0 * sSameTimeSec, adjusted(endTime().value()));
    if (!(from <= to) || std::abs(ta - from) < sSameTimeSec || std::abs(tb - to) < sSameTimeSec)
        return;
    if (!estimatesWithin(from, to, first, first + 1))
        return;
    span.from = from;
    span.to = to;
    span.firstTime = ta;
    span.secondTime = tb;
    m_span = span;
}

void SbetFile::SmrmsFile::anticipate(double adjustedTime) noexcept
{
    // Only the span is set here, and only when the time has records around
    // it; a time that cannot be looked up is left to accuracyAt() and its
    // messages.
    const double t = lookupTime(adjustedTime);
    if (inSpan(t) || !isTimeInsideFile(seconds(t)))
        return;
    try {
        const Bracket bracket = locateFrom(t, estimateIndex(seconds(t)));
        if (bracket.exact)
            return;
        Span found;
        readBracket(bracket, found);
        rememberSpan(bracket.first, found);
    } catch (const std::runtime_error&) {
        forgetSpan();
    }
}

// ---------------------------------------------------------------------------
// The SBET file

std::string SbetFile::accuracyFileName(const std::string& sbetFileName)
{
    const std::size_t separator = sbetFileName.find_last_of("/\\");
    const std::size_t nameStart = separator == std::string::npos ? 0 : separator;
    const std::size_t sbet = sbetFileName.find("sbet", nameStart);
    if (sbet == std::string::npos)
        return {};
    std::string name = sbetFileName;
    name.replace(sbet, 4, "smrmsg");
    return name;
}

SbetFile::SbetFile(const std::string& fileName)
    : PosFile(fileName)
{
    setLayout({sSbetRecordBytes, int(offsetof(SbetStruct, time)), int(offsetof(SbetStruct, roll)),
               int(offsetof(SbetStruct, pitch)), sIndexOutOfBounds, sSeekError, sReadError});
    const std::string accuracyName = accuracyFileName(fileName);
    if (accuracyName.empty())
        throw std::runtime_error(fileName + " is not a Sbet file.");

    setHasStdDevs(true);
    try {
        m_smrms = std::make_unique<SmrmsFile>(accuracyName);
    } catch (const std::runtime_error& e) {
        // Without its accuracy file an SBET is still a trajectory; the
        // session validation reports the missing standard deviations.
        VNL_LOG_DEBUG(log(), fileName << ": no standard deviations (" << accuracyName << ": " << e.what() << ")");
        m_smrms.reset();
        m_accuracyError = e.what();
        setHasStdDevs(false);
    }

    try {
        checkFile(&hasValidTime, true, &sbetRecordProblem);
    } catch (...) {
        close();
        throw;
    }
}

SbetFile::~SbetFile() = default;

void SbetFile::anticipate(double adjustedTime) noexcept
{
    if (m_smrms)
        m_smrms->anticipate(adjustedTime);
}

void SbetFile::readRecord(int index, ImuRecord& record)
{
    seekForRead(index);
    readNextRecord(record);
}

void SbetFile::readNextRecord(ImuRecord& record)
{
    const unsigned char* bytes = nextRecordBytes();
    if (!bytes)
        throw std::runtime_error(sReadError);
    // The fields are taken from the bytes one by one (the record's layout
    // is SbetStruct), which spares copying the whole record.
    record.time = field(bytes, offsetof(SbetStruct, time) / 8);
    record.latitude = field(bytes, offsetof(SbetStruct, latitude) / 8);
    record.longitude = field(bytes, offsetof(SbetStruct, longitude) / 8);
    record.height = field(bytes, offsetof(SbetStruct, height) / 8);
    record.roll = field(bytes, offsetof(SbetStruct, roll) / 8);
    record.pitch = field(bytes, offsetof(SbetStruct, pitch) / 8);
    record.heading = field(bytes, offsetof(SbetStruct, platformHeading) / 8)
        - field(bytes, offsetof(SbetStruct, wanderAngle) / 8);
    if (m_smrms)
        m_smrms->accuracyAtInline(gpstime(seconds(record.time)), record.stdDev());
    else
        record.stdDev().fill(0.0f);
}

} // namespace datamodel

#include <datamodel/trajectory/SbetFile.h>

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

bool hasValidTime(const unsigned char*, double time)
{
    return time >= 0.0;
}

/// The double at `index` (in doubles) of a record.
inline double field(const unsigned char* record, std::size_t index)
{
    double value;
    std::memcpy(&value, record + 8 * index, sizeof value);
    return value;
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
    checkFile(&hasValidTime, false);
}

SbetFile::SmrmsFile::~SmrmsFile() = default;

void SbetFile::SmrmsFile::readRecord(int index, ImuRecord& record)
{
    seekForRead(index);
    readNextRecord(record);
}

void SbetFile::SmrmsFile::readNextRecord(ImuRecord& record)
{
    const unsigned char* bytes = nextRecordBytes();
    if (!bytes)
        throw std::runtime_error(sReadError);
    record = ImuRecord();
    record.time = field(bytes, 0);
    for (std::size_t k = 0; k < 3; ++k)
        record.stdDev()[k] = float(field(bytes, 1 + int(k)));
    // Attitude deviations: arc minutes to radians.
    for (std::size_t k = 0; k < 3; ++k)
        record.stdDev()[3 + k] = float(field(bytes, 7 + int(k)) * (1.0 / 60.0) * (std::numbers::pi / 180.0));
}

bool SbetFile::SmrmsFile::LastLookup::covers(double t, int estimate) const
{
    // Whether locate(t) would walk from the same estimate over the same
    // records to the same bracket.
    if (!valid || estimate != bracket.estimate)
        return false;
    const bool nearEstimate = std::abs(bracket.estimateTime - t) < 1e-6;
    if (bracket.exact)
        return nearEstimate;
    if (nearEstimate)
        return false;
    if (bracket.forward)
        return bracket.estimateTime < t && bracket.passedTime < t && secondTime >= t;
    return !(bracket.estimateTime < t) && bracket.passedTime > t && firstTime <= t;
}

void SbetFile::SmrmsFile::accuracyAt(Seconds gpsTime, std::array<float, 6>& stdDev)
{
    double t = gpsTime.value();
    const double first = startTime().value();
    const double last = gpstime(endTime()).value();
    if (t < first)
        t = first;
    if (t > last)
        t = last;
    t = adjusted(t);
    // Consecutive lookups of a trajectory ask for the same record times again.
    for (const Answer& answer : m_answers) {
        if (answer.valid && answer.time == t) {
            stdDev = answer.stdDev;
            return;
        }
    }
    requireInsideRecording(t);
    // The deviations of the record at t or interpolated between the records
    // around it, as getRecord(t) gives them, without interpolating the rest
    // of the record. Consecutive SBET records mostly lie between the same two
    // accuracy records, which are then not read again.
    const int estimate = estimateIndex(seconds(t));
    if (!m_last.covers(t, estimate)) {
        m_last.valid = false;
        const Bracket bracket = locateFrom(t, estimate);
        ImuRecord a;
        readRecord(bracket.first, a);
        ImuRecord b = a;
        if (!bracket.exact)
            readRecord(bracket.first + 1, b);
        m_last.bracket = bracket;
        m_last.firstTime = adjusted(a.time);
        m_last.secondTime = adjusted(b.time);
        m_last.first = a.stdDev();
        m_last.second = b.stdDev();
        m_last.valid = true;
    }
    const double ta = m_last.firstTime;
    const double tb = m_last.secondTime;
    if (m_last.bracket.exact || ta == tb || ta == t)
        stdDev = m_last.first;
    else if (tb == t)
        stdDev = m_last.second;
    else
        blendStdDevs(m_last.first, m_last.second, t - ta, tb - ta, stdDev);
    Answer& answer = m_answers[m_nextAnswer];
    m_nextAnswer = (m_nextAnswer + 1) % m_answers.size();
    answer.time = t;
    answer.stdDev = stdDev;
    answer.valid = true;
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
        setCompanion(m_smrms.get());
    } catch (const std::runtime_error& e) {
        // Without its accuracy file an SBET is still a trajectory; the
        // session validation reports the missing standard deviations.
        VNL_LOG_DEBUG(log(), fileName << ": no standard deviations (" << accuracyName << ": " << e.what() << ")");
        m_smrms.reset();
        setHasStdDevs(false);
    }

    try {
        checkFile(&hasValidTime, true);
    } catch (...) {
        close();
        throw;
    }
}

SbetFile::~SbetFile() = default;

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
        m_smrms->accuracyAt(gpstime(seconds(record.time)), record.stdDev());
    else
        record.stdDev().fill(0.0f);
}

} // namespace datamodel

#include <datamodel/trajectory/SolFile.h>

#include <datamodel/trajectory/PosFile_p.h>

#include <cstddef>
#include <cstring>
#include <numbers>
#include <stdexcept>
#include <string>

namespace datamodel {

namespace {

const char* const sIndexOutOfRange = "Index out of range";
const char* const sSeekError = "Seek error";
const char* const sReadError = "Failed to read from file";

static_assert(offsetof(SolFile::SolRecord, time) == 18);
static_assert(offsetof(SolFile::SolRecord, latitude) == 42);
static_assert(offsetof(SolFile::SolRecord, positionStdDev) == 66);
static_assert(offsetof(SolFile::SolRecord, roll) == 78);
static_assert(offsetof(SolFile::SolRecord, attitudeStdDev) == 102);
static_assert(offsetof(SolFile::SolRecord, reserved2) == 114);

bool isValidRecord(const unsigned char* record, double time)
{
    return record[0] == 0xBB && record[1] == 0x55 && PosFile::isValidGpsTime(seconds(time));
}

float floatAt(const unsigned char* record, std::size_t offset)
{
    float value;
    std::memcpy(&value, record + offset, sizeof value);
    return value;
}

double doubleAt(const unsigned char* record, std::size_t offset)
{
    double value;
    std::memcpy(&value, record + offset, sizeof value);
    return value;
}

std::string solRecordProblem(const unsigned char* record)
{
    using R = SolFile::SolRecord;
    if (record[0] != 0xBB || record[1] != 0x55)
        return "it does not start with the sync bytes BB 55";
    std::string problem = PosFile::positionProblem(doubleAt(record, offsetof(R, latitude)),
                                                   doubleAt(record, offsetof(R, longitude)),
                                                   doubleAt(record, offsetof(R, height)));
    if (problem.empty())
        problem = PosFile::angleProblem("roll", doubleAt(record, offsetof(R, roll)), PosFile::sTiltLimitRad);
    if (problem.empty())
        problem = PosFile::angleProblem("pitch", doubleAt(record, offsetof(R, pitch)), PosFile::sTiltLimitRad);
    if (problem.empty())
        problem = PosFile::angleProblem("heading", doubleAt(record, offsetof(R, heading)), PosFile::sHeadingLimitRad);
    static const char* const names[] = {"north", "east", "down", "roll", "pitch", "heading"};
    for (std::size_t k = 0; k < 6 && problem.empty(); ++k) {
        const std::size_t offset = k < 3 ? offsetof(R, positionStdDev) + 4 * k : offsetof(R, attitudeStdDev) + 4 * (k - 3);
        problem = PosFile::stdDevProblem(names[k], floatAt(record, offset), k < 3 ? "m" : "arcsec");
    }
    return problem;
}

} // namespace

SolFile::SolFile(const std::string& fileName)
    : PosFile(fileName)
{
    setLayout({int(sizeof(SolRecord)), int(offsetof(SolRecord, time)), int(offsetof(SolRecord, roll)),
               int(offsetof(SolRecord, pitch)), sIndexOutOfRange, sSeekError, sReadError});
    checkFile(&isValidRecord, true, &solRecordProblem);
    setHasStdDevs(true);
}

SolFile::~SolFile() = default;

void SolFile::readRecord(int index, ImuRecord& record)
{
    seekForRead(index);
    readNextRecord(record);
}

void SolFile::readNextRecord(ImuRecord& record)
{
    const unsigned char* bytes = nextRecordBytes();
    if (!bytes)
        throw std::runtime_error(sReadError);
    SolRecord sol;
    std::memcpy(static_cast<void*>(&sol), bytes, sizeof sol);
    record.time = sol.time;
    record.latitude = sol.latitude;
    record.longitude = sol.longitude;
    record.height = sol.height;
    record.roll = sol.roll;
    record.pitch = sol.pitch;
    record.heading = sol.heading;
    for (std::size_t k = 0; k < 3; ++k)
        record.stdDev()[k] = sol.positionStdDev[k];
    // Arc seconds to radians, in single precision as the files were always read.
    for (std::size_t k = 0; k < 3; ++k)
        record.stdDev()[3 + k] = sol.attitudeStdDev[k] * (1.0f / 3600.0f) * (float(std::numbers::pi) / 180.0f);
}

} // namespace datamodel

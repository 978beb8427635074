#pragma once

#include <datamodel/trajectory/PosFile.h>

#include <string>

namespace datamodel {

/// Reader of a SOL trajectory file: 184-byte packed little-endian records,
/// each with its position and attitude accuracy. A record starts with the
/// sync bytes 0xBB 0x55; its time must be a GPS time of the week. The SOL
/// file always carries standard deviations.
class SolFile final : public PosFile {
public:
    /// Source identifiers of the record header.
    static constexpr unsigned char ID_TESK = 0x23;
    static constexpr unsigned char ID_BROADCAST = 0xFF;

#pragma pack(push, 1)
    /// The record on disk. A default record carries the default header.
    struct SolRecord {
        unsigned char sync1 = 0xBB;
        unsigned char sync2 = 0x55;
        /// Record length 184, identifiers; not interpreted by the reader.
        unsigned char header[16] = {0xB8, 0x00, 0x01, 0x00, ID_TESK, ID_BROADCAST, 0x00, 0x00,
                                    0x00, 0x00, 0xC5, 0x09, 0x00, 0x00, 0x00, 0x00};
        double time = 0.0;                ///< GPS seconds of the week
        unsigned char reserved1[16] = {};
        double latitude = 0.0;            ///< rad
        double longitude = 0.0;           ///< rad
        double height = 0.0;              ///< m
        float positionStdDev[3] = {};     ///< m, stored as found (north, east, down)
        double roll = 0.0;                ///< rad
        double pitch = 0.0;               ///< rad
        double heading = 0.0;             ///< true heading, rad
        float attitudeStdDev[3] = {};     ///< roll, pitch, heading, arc seconds
        unsigned char reserved2[70] = {};
    };
#pragma pack(pop)
    static_assert(sizeof(SolRecord) == 184);

    /// Opens and checks the file: the first and the last record must start
    /// with the sync bytes and hold a time in [0, 604800). Throws
    /// "Could not open " + path and the messages of the opening checks
    /// (PosFile), such as "First record is not valid.".
    explicit SolFile(const std::string& fileName);
    ~SolFile() override;

    /// Throws "Index out of range", "Seek error" or "Failed to read from file".
    void readRecord(int index, ImuRecord& record) override;
    /// Throws "Failed to read from file".
    void readNextRecord(ImuRecord& record) override;
};

} // namespace datamodel

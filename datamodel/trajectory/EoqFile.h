#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace datamodel {

/// The EOQ file: the trajectory quality measures of the samples of an EOP
/// trajectory and their summary, beside the EOP file
/// (docs/formats/eoq-file.md). EopTrajectory holds what the file holds and
/// reads and writes it through this class; `dataprep inspect` reads it by
/// its own path.
///
/// All failures are std::runtime_error; a file that exists but is refused
/// throws its subclass util::InvalidFileError.
class EoqFile {
public:
    /// The version written and the only one read (`EOQ_VERSION`).
    static constexpr std::int32_t sVersion = 3;
    /// Bytes of a record on disk.
    static constexpr std::size_t sRecordBytes = 24;
    /// Bytes of the fixed header before the parameter block.
    static constexpr std::size_t sFixedHeaderBytes = 16;
    /// The longest parameter block read: a written one takes some 220 bytes.
    static constexpr std::uint32_t sMaxParameterBlockBytes = 1u << 20;

    /// The measures at one EOP sample. 24 bytes in memory as on disk (the
    /// last 4 are padding, written as zero).
    struct Record {
        double time = 0.0; ///< GPS time, s of the week
        float ncs = 0.0f;  ///< Normalized Coverage Speed: coverage advance over the nominal one (1 nominal)
        float rpe = 0.0f;  ///< Relative L1 Pixel Error: signed, in pixels
        float psr = 0.0f;  ///< Pixel Smearing Ratio: smearing within a line, in pixels, not negative
    };

    /// The summary over all records, in single precision, in the order the
    /// trajectory keeps them. The defaults are those of a trajectory without
    /// quality measures.
    struct Statistics {
        float minRpe = 0.0f;
        float maxRpe = 0.0f;
        float minNcs = 1.0f;
        float maxNcs = 1.0f;
        float maxPsr = 0.0f;
        float rmsRpe = 0.0f; ///< sqrt(sum RPE^2 / n)
        float rmsNcs = 0.0f; ///< sqrt(sum (NCS - 1)^2 / n): against the nominal 1
        float rmsPsr = 0.0f; ///< sqrt(sum PSR^2 / n)

        /// Minima, maxima and RMS values of `records`, accumulated in float
        /// in record order; the defaults when there are none.
        static Statistics of(const std::vector<Record>& records);
    };

    /// What the header holds.
    struct Header {
        std::int32_t reserved = 0; ///< the reserved field as read (written 0)
        std::int32_t numSets = 0;  ///< the records announced
        Statistics statistics;
    };

    /// Reads the header of the EOQ file `path`. Throws "Failed to open EOQ
    /// file: " + path (the reason nested) when it cannot be opened; "No EOQ
    /// file!" without the signature "EOQ_"; "EOQ versions 1 and 2 are
    /// unsupported." and "Unknown EOQ file version." for other versions than
    /// 3; "Error reading EOQ parameter block: " + the parser's message (with
    /// line and column) for a block that is not well-formed XML or whose
    /// root is not EOQ; "EOQ version mismatch!" when the root's version is
    /// not 3; and "Invalid EOQ file: " + path + " (" + what + ")" for a
    /// header that ends early, a parameter block longer than the file or
    /// than sMaxParameterBlockBytes, a numSets that is not a count from 0,
    /// or a statistic that is not a number. Missing values read as the
    /// defaults; "Source" and unknown elements are skipped. Statistics may
    /// be NaN or infinite ("nan", "inf"); values beyond the float range read
    /// as infinite.
    static Header readHeader(const std::string& path);

    /// Reads the header and the records it announces, which it checks
    /// against the file's size before it reads them: "Header/data mismatch
    /// in EOQ file: " + path when the file holds fewer. Bytes after the
    /// records are ignored. Throws what readHeader() throws.
    static std::vector<Record> read(const std::string& path, Header& header);

    /// The parameter block's XML text (without its terminating zero byte):
    /// one-space indentation, numbers with six significant digits.
    static QByteArray parameterBlock(const Statistics& statistics, std::int32_t numSets);

    /// Writes the header (`statistics`, the count of `records`) and the
    /// records to `path`, whole or not at all. Throws "Failed to write EOQ
    /// file: " + path, and "Error writing EOQ header" when the header cannot
    /// be written, each with the reason nested (util::fullMessage).
    static void write(const std::string& path, const Statistics& statistics, const std::vector<Record>& records);

    /// Writes `records` as text to `path`, whole or not at all: one line per
    /// record, "time ncs rpe psr", each with six decimals, single blanks.
    /// Throws "Failed to write EOQ ASCII file: " + path, the reason nested.
    static void writeAscii(const std::string& path, const std::vector<Record>& records);
};

static_assert(sizeof(EoqFile::Record) == EoqFile::sRecordBytes);

} // namespace datamodel

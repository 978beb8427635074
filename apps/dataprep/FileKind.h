#pragma once

#include <QString>

#include <string>

namespace dataprep {

/// The kinds of file `inspect` reads, told from a file's name and checked
/// against its content, so that a renamed file is not read as what its name
/// claims.
class FileKind {
public:
    enum Kind {
        Unknown,
        BandInfo,
        Strip,
        IntegrationTime,
        Tdi,
        TimeMarks,
        Ct,
        Ctg,
        Sbet,
        Smrmsg,
        Sol,
        /// An EOP file (exterior orientation of a take).
        Eop,
        /// An EOQ file (trajectory quality of a take).
        Eoq,
        /// XML that is neither a strip nor a band info file.
        Xml,
    };

    /// The kind the name says: *.info, *.stp, *.it, *.tdi, *.tm or tm*.dat,
    /// *.ct, *.ctg, names holding "smrmsg", *.sol, *.sbet or *.out holding
    /// "sbet", *.eop or *.eop.adj, *.eoq; Unknown otherwise.
    static Kind fromName(const QString& path);

    /// The kind the content proves, where it carries a mark: a CT file (the
    /// signature "CT01"), an EOP file (the signature "EOPDATA"), an EOQ file
    /// (the signature "EOQ_"), a SOL file (the sync bytes 0xBB 0x55 at the start
    /// of its first two records), a strip file (XML whose root is Strip), a
    /// band info file (other XML with a ccd_id element), other XML. Unknown
    /// for the headerless binary kinds and for a file that cannot be read.
    static Kind fromContent(const QString& path);

    /// Why the content of a file named as `named` cannot be of that kind, for
    /// the headerless kinds whose readers take any bytes: a time-mark file
    /// whose first record holds no GPS time of the week, a CTG file whose
    /// size is not a whole number of lines or whose first line holds no GPS
    /// time. Empty when nothing speaks against it.
    static std::string implausibility(const QString& path, Kind named);

    /// "a CT file", "a time-mark file", ...
    static const char* description(Kind kind);
    /// Whether the kind is one of the trajectory readers' (SBET, smrmsg, SOL).
    static bool isTrajectory(Kind kind);
};

} // namespace dataprep
